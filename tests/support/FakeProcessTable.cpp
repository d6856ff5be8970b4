#include "support/FakeProcessTable.h"

#include "hotfix/platform/ProcessKeys.h"

namespace installer::test {

std::vector<std::string> FakeProcessTable::valuesForKey(std::string_view key) {
  if (key == processKey::kExecutable) return _executables;
  std::vector<std::string> names;
  if (key != processKey::kName) return names;
  for (const std::string& path : _executables) names.push_back(path.substr(path.rfind('/') + 1));
  return names;
}

std::vector<std::vector<std::string>> FakeProcessTable::commandLines(uid_t user) {
  std::vector<std::vector<std::string>> lines;
  for (const auto& [owner, line] : _commandLines)
    if (owner == user) lines.push_back(line);
  return lines;
}

std::string FakeProcessTable::asReported(const std::string& path) {
  const auto found = _reported.find(path);
  return found != _reported.end() ? found->second : path;
}

}  // namespace installer::test
