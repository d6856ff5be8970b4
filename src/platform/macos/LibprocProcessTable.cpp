#include "platform/macos/LibprocProcessTable.h"

#include <libproc.h>

#include <algorithm>
#include <array>

#include "hotfix/platform/ProcessKeys.h"
#include "platform/posix/ExecutablePath.h"

namespace installer {
namespace {

// Processes that may start between counting them and listing them.
constexpr std::size_t kSpare = 64;

std::vector<pid_t> allProcesses() {
  const int expected = proc_listallpids(nullptr, 0);
  if (expected <= 0) return {};
  std::vector<pid_t> processes(static_cast<std::size_t>(expected) + kSpare);
  const int count =
      proc_listallpids(processes.data(), static_cast<int>(processes.size() * sizeof(pid_t)));
  processes.resize(static_cast<std::size_t>(std::max(count, 0)));
  return processes;
}

std::vector<std::string> executables() {
  std::vector<std::string> paths;
  std::array<char, PROC_PIDPATHINFO_MAXSIZE> path;
  for (const pid_t process : allProcesses()) {
    const int length = proc_pidpath(process, path.data(), static_cast<uint32_t>(path.size()));
    if (length > 0) paths.emplace_back(path.data(), static_cast<std::size_t>(length));
  }
  return paths;
}

}  // namespace

std::vector<std::string> LibprocProcessTable::valuesForKey(std::string_view key) {
  if (key == processKey::kExecutable) return executables();
  if (key != processKey::kName) return {};
  std::vector<std::string> names = executables();
  std::transform(names.begin(), names.end(), names.begin(), fileNameOf);
  return names;
}

std::string LibprocProcessTable::asReported(const std::string& path) {
  return resolvedOrSame(path);
}

}  // namespace installer
