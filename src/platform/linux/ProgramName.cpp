#include "platform/ProgramName.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <array>
#include <string_view>

#include "platform/files/Opening.h"
#include "platform/posix/Uninterrupted.h"

namespace installer {

// The link to the executable is for the process's own user, its name for everybody.
std::optional<std::string> programOf(long process) {
  const std::string path = fmt::format("/proc/{}/comm", process);
  const Descriptor file = openEntry(AT_FDCWD, path, O_RDONLY);
  std::array<char, 64> bytes;
  const auto readAll = [&] { return read(file.get(), bytes.data(), bytes.size()); };
  const ssize_t count = file.valid() ? uninterrupted(readAll) : -1;
  if (count <= 0) return std::nullopt;
  const std::string_view line(bytes.data(), static_cast<std::size_t>(count));
  return std::string(line.substr(0, line.find('\n')));
}

}  // namespace installer
