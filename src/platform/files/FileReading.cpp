#include "platform/files/FileReading.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include "platform/posix/Uninterrupted.h"

namespace installer {

namespace {

std::nullopt_t tooLong() {
  errno = EFBIG;
  return std::nullopt;
}

}  // namespace

// The system's word on the length is where it begins, and where it ends when there is no more then:
// files that are made when they are read have none.
std::optional<std::string> readWhole(const RegularFile& file, std::size_t maximum) {
  const auto expected = static_cast<std::size_t>(file.status.st_size);
  if (expected > maximum) return tooLong();
  std::string bytes;
  bytes.resize(expected == 0 ? BUFSIZ : expected + 1);
  std::size_t length = 0;
  while (length <= maximum) {
    const ssize_t count = uninterrupted(
        [&] { return ::read(file.file.get(), bytes.data() + length, bytes.size() - length); });
    if (count == -1) return std::nullopt;
    length += static_cast<std::size_t>(count);
    if (count == 0 || length == expected) {
      bytes.resize(length);
      return bytes;
    }
    if (length == bytes.size()) bytes.resize(length + BUFSIZ);  // more than expected
  }
  return tooLong();
}

}  // namespace installer
