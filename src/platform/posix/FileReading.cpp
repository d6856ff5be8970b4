#include "platform/posix/FileReading.h"

#include <unistd.h>

#include <cstdio>

#include "platform/posix/Opening.h"
#include "platform/posix/Uninterrupted.h"

namespace installer {

namespace {

// What the system says; files that are made when they are read say nothing.
std::size_t expectedLength(const Descriptor& file) {
  const auto status = statusOf(file);
  return status ? static_cast<std::size_t>(status->st_size) : 0;
}

}  // namespace

std::optional<std::string> readWhole(const Descriptor& file, std::size_t maximum) {
  const std::size_t expected = expectedLength(file);
  if (expected > maximum) return std::nullopt;
  std::string bytes(expected + 1, '\0');  // one more than there is, to meet the end
  std::size_t length = 0;
  while (length <= maximum) {
    const ssize_t count = uninterrupted(
        [&] { return ::read(file.get(), bytes.data() + length, bytes.size() - length); });
    if (count == -1) return std::nullopt;
    length += static_cast<std::size_t>(count);
    if (count == 0) {
      bytes.resize(length);
      return bytes;
    }
    if (length == bytes.size()) bytes.resize(length + BUFSIZ);  // longer than expected
  }
  return std::nullopt;
}

}  // namespace installer
