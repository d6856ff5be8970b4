#include "platform/posix/FileReading.h"

#include <unistd.h>

#include <algorithm>
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

// The room for the first read: the whole file and one byte more, to meet its end.
std::size_t firstRoom(const Descriptor& file, std::size_t maximum) {
  const auto status = statusOf(file);
  if (!status || status->st_size <= 0) return kBlock;
  return std::min(static_cast<std::size_t>(status->st_size), maximum) + 1;
}

}  // namespace

std::optional<std::string> readWhole(const Descriptor& file, std::size_t maximum) {
  if (!file.valid()) return std::nullopt;
  std::string bytes;
  std::size_t length = 0;
  bytes.resize(firstRoom(file, maximum));
  for (;;) {
    if (length > maximum) return std::nullopt;
    if (length == bytes.size()) bytes.resize(length + kBlock);
    const ssize_t count =
        readInterruptibly(file.get(), bytes.data() + length, bytes.size() - length);
    if (count < 0) return std::nullopt;
    if (count == 0) break;
    length += static_cast<std::size_t>(count);
  }
  bytes.resize(length);
  return bytes;
}

}  // namespace installer
