#include "driver/PackageLoader.h"

#include "driver/RunState.h"
#include "hotfix/base/Path.h"
#include "hotfix/formats/RegisterFile.h"
#include "hotfix/platform/PropertyListFile.h"
#include "platform/Exists.h"
#include "platform/Log.h"
#include "platform/Reported.h"

namespace installer {

namespace {

// The entries of hotfix.plist; nullopt, with one line, when there are none.
std::optional<PropertyList::Dictionary> readProperties() {
  const RunState& state = runState();
  if (!exists(state._pathToInstallPackage)) {
    log(LogLevel::error, "There is no install package at {}.", state._pathToInstallPackage);
    return std::nullopt;
  }
  const std::string file = HotfixPackage::propertiesFile(state._pathToInstallPackage);
  if (!exists(file)) {
    log(LogLevel::error, "There is no hotfix description at {}.", file);
    return std::nullopt;
  }
  std::optional<PropertyList::Dictionary> properties = PropertyList::readDictionary(file);
  if (!properties)
    log(LogLevel::error, "The hotfix description {} can not be read as a property list.", file);
  return properties;
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
  const std::optional<PropertyList::Dictionary> properties = readProperties();
  if (!properties) return;
  RunState& state = runState();
  state._package = HotfixPackage::describedBy(*properties);
  const std::optional<std::string> bundle = resolveBundle();
  if (!bundle) {
    log(LogLevel::error, "The hotfix description names no bundleName.");
    return;
  }
  if (!state._package.allowMultiInstance)
    state._pathToInstallDestination = path::deletingLastComponent(*bundle);
  state._rcpHome = state._package.rcpHomeIn(*bundle);
  if (!state._rcpHome) log(LogLevel::error, "The hotfix description names no frameworkPath.");
  state._rcpHomeOfWorkflow = HotfixPackage::resolvedFor(state._pathToInstallPackage, *properties)
                                 .rcpHomeBelow(state._pathToInstallDestination);
}

}  // namespace installer
