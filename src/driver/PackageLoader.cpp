#include "driver/PackageLoader.h"

#include "driver/RunState.h"
#include "hotfix/base/Path.h"
#include "hotfix/formats/RegisterFile.h"
#include "platform/Exists.h"
#include "platform/Log.h"
#include "platform/Reported.h"

namespace installer {

namespace {

void tellLack(HotfixPackage::Lack lack, const std::string& package) {
  const std::string file = HotfixPackage::propertiesFile(package);
  switch (lack) {
    case HotfixPackage::Lack::package:
      return log(LogLevel::error, "There is no install package at {}.", package);
    case HotfixPackage::Lack::description:
      return log(LogLevel::error, "There is no hotfix description at {}.", file);
    case HotfixPackage::Lack::propertyList:
      return log(LogLevel::error, "The hotfix description {} can not be read as a property list.",
                 file);
  }
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
  RunState& state = runState();
  HotfixPackage::Lack lack{};
  const auto properties = HotfixPackage::properties(state._pathToInstallPackage, &lack);
  if (!properties) return tellLack(lack, state._pathToInstallPackage);
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
