#include "platform/files/TemporaryNames.h"

#include <sys/random.h>

#include <charconv>
#include <system_error>

#include "platform/files/Opening.h"
#include "platform/posix/OwnProcess.h"

namespace installer {

namespace {

constexpr std::string_view kPrefix = ".hotfix-";

std::string nameWith(std::uint64_t number) {
  return std::string(kPrefix) + std::to_string(number);
}

// The process's own number keeps two processes apart; counted, so that another try is another name.
std::string guessableName() {
  static std::uint32_t count = 0;
  return nameWith(static_cast<std::uint64_t>(ownProcess()) << 32 | ++count);
}

}  // namespace

bool TemporaryNames::canBeOne(std::string_view name) {
  if (!name.starts_with(kPrefix)) return false;
  name.remove_prefix(kPrefix.size());
  std::uint64_t number = 0;
  const auto read = std::from_chars(name.data(), name.data() + name.size(), number);
  return read.ec == std::errc() && name == std::to_string(number);
}

std::string TemporaryNames::next(int folder) {
  if ((_left > 0 && _drawnBy == ownProcess()) || draw()) return nameWith(_numbers[--_left]);
  std::string name = guessableName();
  while (statusOf(folder, name)) name = guessableName();
  return name;
}

// One for whoever needs one, and a block at a time for whoever needs more.
bool TemporaryNames::draw() {
  const std::size_t count = _mayBeMany ? _numbers.size() : 1;
  _mayBeMany = true;
  if (::getentropy(_numbers.data(), count * sizeof _numbers[0]) != 0) return false;
  _left = count;
  _drawnBy = ownProcess();
  return true;
}

}  // namespace installer
