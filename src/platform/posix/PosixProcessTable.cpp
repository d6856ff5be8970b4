#include "platform/posix/PosixProcessTable.h"

#include <algorithm>

#include "hotfix/platform/ProcessKeys.h"
#include "platform/files/FileSystemCalls.h"
#include "platform/posix/ExecutablePath.h"

namespace installer {

std::vector<std::string> PosixProcessTable::valuesForKey(std::string_view key) {
  if (key == processKey::kExecutable) return executables();
  if (key != processKey::kName) return {};
  std::vector<std::string> names = executables();
  std::transform(names.begin(), names.end(), names.begin(), fileNameOf);
  return names;
}

// "/B.app/" must not become the beginning of "/B.app2".
std::string PosixProcessTable::asReported(const std::string& path) {
  std::string answer = syscalls::reportedPath(path).value_or(path);
  if (path.ends_with('/') && !answer.ends_with('/')) answer += '/';
  return answer;
}

}  // namespace installer
