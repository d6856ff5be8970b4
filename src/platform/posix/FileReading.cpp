#include "platform/posix/FileReading.h"

#include <unistd.h>

#include <cerrno>

#include "platform/posix/Opening.h"

namespace installer {

namespace {

constexpr std::size_t kBlock = std::size_t{64} << 10;  // bytes

ssize_t readInterruptibly(int file, char* to, std::size_t length) {
  ssize_t count = 0;
  do {
    count = ::read(file, to, length);
  } while (count < 0 && errno == EINTR);
  return count;
}

// What the system says; files that are made when they are read say nothing.
std::size_t expectedLength(const Descriptor& file) {
  const auto status = statusOf(file);
  return status && status->st_size > 0 ? static_cast<std::size_t>(status->st_size) : 0;
}

}  // namespace

std::optional<std::string> readWhole(const Descriptor& file, std::size_t maximum) {
  const std::size_t expected = expectedLength(file);
  if (!file.valid() || expected > maximum) return std::nullopt;
  std::string bytes(expected + 1, '\0');  // one more than there is, to meet the end
  std::size_t length = 0;
  while (length <= maximum) {
    const ssize_t count =
        readInterruptibly(file.get(), bytes.data() + length, bytes.size() - length);
    if (count < 0) return std::nullopt;
    length += static_cast<std::size_t>(count);
    if (count == 0) {
      bytes.resize(length);
      return bytes;
    }
    if (length == bytes.size()) bytes.resize(length + kBlock);  // longer than expected
  }
  return std::nullopt;
}

}  // namespace installer
