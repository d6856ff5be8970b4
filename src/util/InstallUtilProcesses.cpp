#include "base/LetterCase.h"
#include "hotfix/base/Path.h"
#include "hotfix/platform/HomeFolders.h"
#include "hotfix/platform/PropertyListFile.h"
#include "hotfix/util/InstallUtil.h"
#include "platform/ChildProcesses.h"
#include "platform/Log.h"
#include "platform/ProcessTable.h"

namespace installer {

int InstallUtil::startProvisionWithArgs(const std::string& args) {
  return Platform::current().children->shell(args);
}

std::vector<std::string> InstallUtil::getAllProcess(std::string_view key) {
  return Platform::current().processes->valuesForKey(key);
}

bool InstallUtil::checkBundleIsRunning(const std::string& path) {
  return checkBundleIsRunning(path, processKey::kExecutable);
}

bool InstallUtil::checkBundleIsRunning(const std::string& path, std::string_view kCFBundleKey) {
  const std::string asGiven = letterCase::lowered(path);
  const std::string asReported =
      kCFBundleKey == processKey::kExecutable
          ? letterCase::lowered(Platform::current().processes->asReported(path))
          : asGiven;
  for (const std::string& value : getAllProcess(kCFBundleKey)) {
    log(LogLevel::info, ">>>> current is {}.", value);
    const std::string running = letterCase::lowered(value);
    if (running.starts_with(asGiven) || running.starts_with(asReported)) return true;
  }
  return false;
}

std::optional<std::string> InstallUtil::getBundlePath(std::string_view path) {
  constexpr std::string_view kExtension = ".app";
  const std::size_t place = path.rfind(".app/Contents/MacOS");
  if (place == std::string_view::npos) return std::nullopt;
  return std::string(path.substr(0, place + kExtension.size()));
}

std::optional<std::string> InstallUtil::getBundleID(const std::string& path) {
  const auto info = PropertyList::readDictionary(
      path::expandingTilde(path::appendingComponent(path, "Contents/Info.plist")));
  if (!info) return std::nullopt;
  return PropertyList::textForKey(*info, "CFBundleIdentifier");
}

std::string InstallUtil::getTargetNameBy(const std::string& pathToRcphome) {
  log(LogLevel::info, "pathToRCPHome is {}.", pathToRcphome);
  std::string path = pathToRcphome;
  std::string component = path::lastComponent(path);
  while (!component.empty() && component != "/" && !component.ends_with("app")) {
    path = path::deletingLastComponent(path);
    component = path::lastComponent(path);
  }
  if (!component.ends_with("app")) {
    log(LogLevel::error, "Error path value, please provide a valid path value for rcp home.");
    return component;
  }
  const std::string name = component.substr(0, component.find('.'));
  log(LogLevel::info, "targetName is {}.", name);
  return name;
}

}  // namespace installer
