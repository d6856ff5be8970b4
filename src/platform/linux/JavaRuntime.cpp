#include "platform/JavaRuntime.h"

#include <unistd.h>

#include <algorithm>
#include <string_view>

#include "hotfix/base/Path.h"
#include "platform/FileManager.h"
#include "platform/Log.h"
#include "platform/TrustedPath.h"
#include "platform/UserContext.h"
#include "platform/posix/ExecutablePath.h"

namespace installer {

namespace {

bool isExecutable(const std::string& file) {
  return !Platform::current().files->isDirectory(file) && ::access(file.c_str(), X_OK) == 0;
}

std::optional<std::string> homeOf(const std::string& java) {
  const std::optional<std::string> path = resolved(java);
  if (!path || !path->ends_with("/bin/java")) return std::nullopt;
  return path::deletingLastComponent(path::deletingLastComponent(*path));
}

// Whoever can exchange a file that root starts has all of root's rights. One line for a refusal.
bool mayStart(const std::string& java) {
  const auto reason = reasonToDistrust(java, Platform::current().users->effectiveUserId());
  if (reason) log(LogLevel::warning, "The Java at {} is passed over: {}.", java, *reason);
  return !reason;
}

std::optional<std::string> homeOfEnvironment() {
  const auto home = Platform::current().users->environment("JAVA_HOME");
  if (!home || home->empty() || !mayStart(path::appendingComponent(*home, "bin/java")))
    return std::nullopt;
  return home;
}

std::optional<std::string> homeOnSearchPath(std::string_view searchPath) {
  while (!searchPath.empty()) {
    const std::string folder(searchPath.substr(0, searchPath.find(':')));
    searchPath.remove_prefix(std::min(folder.size() + 1, searchPath.size()));
    const std::string java = path::appendingComponent(folder, "java");
    if (isExecutable(java) && mayStart(java)) return homeOf(java);
  }
  return std::nullopt;
}

}  // namespace

std::optional<std::string> hostJavaHome() {
  if (auto home = homeOfEnvironment()) return home;
  return homeOnSearchPath(Platform::current().users->environment("PATH").value_or(""));
}

}  // namespace installer
