#include "platform/JavaRuntime.h"

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <string_view>

#include "hotfix/base/Path.h"
#include "platform/FileManager.h"
#include "platform/Platform.h"
#include "platform/UserContext.h"

namespace installer {

namespace {

bool isExecutable(const std::string& file) {
  return !Platform::current().files->isDirectory(file) && ::access(file.c_str(), X_OK) == 0;
}

std::optional<std::string> homeOf(const std::string& java) {
  const std::unique_ptr<char, decltype(&std::free)> resolved(::realpath(java.c_str(), nullptr),
                                                             &std::free);
  if (!resolved) return std::nullopt;
  const std::string path(resolved.get());
  if (!path.ends_with("/bin/java")) return std::nullopt;
  return path::deletingLastComponent(path::deletingLastComponent(path));
}

// Relative entries are passed over: the working folder is anybody's.
std::optional<std::string> homeOnSearchPath(std::string_view searchPath) {
  while (!searchPath.empty()) {
    const std::string folder(searchPath.substr(0, searchPath.find(':')));
    searchPath.remove_prefix(std::min(folder.size() + 1, searchPath.size()));
    const std::string java = path::appendingComponent(folder, "java");
    if (folder.starts_with('/') && isExecutable(java)) return homeOf(java);
  }
  return std::nullopt;
}

}  // namespace

std::optional<std::string> hostJavaHome() {
  UserContext& users = *Platform::current().users;
  const std::optional<std::string> home = users.environment("JAVA_HOME");
  if (home && !home->empty()) return home;
  return homeOnSearchPath(users.environment("PATH").value_or(""));
}

}  // namespace installer
