#include "hotfix/base/KeyedHash.h"

#include <random>
#include <stdexcept>

#include "base/SipHash.h"

namespace installer {

namespace {

std::uint64_t randomNumber() {
  std::random_device device;
  return static_cast<std::uint64_t>(device()) << 32 | device();
}

// Where the machine has no random numbers to give, the key can be foreseen, and nothing worse.
HashKey drawKey() {
  try {
    return {randomNumber(), randomNumber()};
  } catch (const std::runtime_error&) {
    return {};
  }
}

}  // namespace

std::size_t KeyedHash::operator()(std::string_view text) const {
  static const HashKey key = drawKey();
  return static_cast<std::size_t>(sipHash(text, key, 1, 3));
}

}  // namespace installer
