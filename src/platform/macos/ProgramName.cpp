#include "platform/ProgramName.h"

#include <libproc.h>

#include <array>

#include "platform/posix/ExecutablePath.h"

namespace installer {

std::optional<std::string> programOf(long process) {
  const auto number = static_cast<pid_t>(process);
  if (number != process) return std::nullopt;
  std::array<char, PROC_PIDPATHINFO_MAXSIZE> path;
  const int length = proc_pidpath(number, path.data(), static_cast<uint32_t>(path.size()));
  if (length <= 0) return std::nullopt;
  return fileNameOf(std::string(path.data(), static_cast<std::size_t>(length)));
}

}  // namespace installer
