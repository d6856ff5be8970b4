#include "driver/PackageLoader.h"

#include <utility>

#include "driver/RunState.h"
#include "hotfix/base/Path.h"
#include "hotfix/formats/RegisterFile.h"
#include "hotfix/platform/PropertyListFile.h"
#include "platform/Exists.h"
#include "platform/Log.h"
#include "platform/Reported.h"

namespace installer {

namespace {

// Adds the entries of hotfix.plist; false, with one line, when there are none to add.
bool readProperties() {
  RunState& state = runState();
  if (!exists(state._pathToInstallPackage)) {
    log(LogLevel::error, "There is no install package at {}.", state._pathToInstallPackage);
    return false;
  }
  const std::string file = HotfixPackage::propertiesFile(state._pathToInstallPackage);
  if (!exists(file)) {
    log(LogLevel::error, "There is no hotfix description at {}.", file);
    return false;
  }
  auto properties = PropertyList::readDictionary(file);
  if (!properties) {
    log(LogLevel::error, "The hotfix description {} can not be read as a property list.", file);
    return false;
  }
  state._package = HotfixPackage::describedBy(*properties);
  state._properties = std::move(*properties);
  state._properties.remove("rcpHome");  // ours to derive, not the package's to tell
  return true;
}

}  // namespace

std::optional<std::string> resolveBundle() {
  const RunState& state = runState();
  const HotfixPackage& package = state._package;
  if (package.bundleName && !package.allowMultiInstance) {
    const RegisterFile registration(*package.bundleName);
    // The package's own name for the bundle stands in, but nobody shall think that none was there.
    reported::tellUnreadable(registration.readError());
    const std::optional<std::string> registered = registration.getProductPath();
    if (exists(registered)) return registered;
  }
  return package.bundleIn(state._pathToInstallDestination);
}

void loadPackage() {
  if (!readProperties()) return;
  RunState& state = runState();
  const std::optional<std::string> bundle = resolveBundle();
  if (!bundle) {
    log(LogLevel::error, "The hotfix description names no bundleName.");
    return;
  }
  if (!state._package.allowMultiInstance)
    state._pathToInstallDestination = path::deletingLastComponent(*bundle);
  if (const auto rcpHome = state._package.rcpHomeIn(*bundle))
    state._properties.set("rcpHome", *rcpHome);
  else
    log(LogLevel::error, "The hotfix description names no frameworkPath.");
}

}  // namespace installer
