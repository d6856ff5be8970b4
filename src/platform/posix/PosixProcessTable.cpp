#include "platform/posix/PosixProcessTable.h"

#include <algorithm>

#include "hotfix/platform/ProcessKeys.h"
#include "platform/posix/ExecutablePath.h"

namespace installer {

std::vector<std::string> PosixProcessTable::valuesForKey(std::string_view key) {
  if (key == processKey::kExecutable) return executables();
  if (key != processKey::kName) return {};
  std::vector<std::string> names = executables();
  std::transform(names.begin(), names.end(), names.begin(), fileNameOf);
  return names;
}

std::string PosixProcessTable::asReported(const std::string& path) {
  return resolvedOrSame(path);
}

}  // namespace installer
