#include "driver/PackageLoader.h"

#include "driver/RunState.h"
#include "hotfix/base/Path.h"
#include "hotfix/formats/RegisterFile.h"
#include "hotfix/platform/PropertyListFile.h"
#include "platform/Exists.h"
#include "platform/Log.h"
#include "workflow/HotfixPackage.h"

namespace installer {

namespace {

bool allowsSeveralInstances() {
  return PropertyList::booleanForKey(runState()._properties, "allowMultiInstance");
}

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
  const auto properties = PropertyList::readDictionary(file);
  if (!properties) {
    log(LogLevel::error, "The hotfix description {} can not be read as a property list.", file);
    return false;
  }
  for (const auto& [key, value] : *properties) state._properties.set(key, value);
  state._properties.remove("rcpHome");  // ours to derive, not the package's to tell
  return true;
}

}  // namespace

std::string resolveBundle() {
  const RunState& state = runState();
  if (!allowsSeveralInstances()) {
    const std::optional<std::string> registered =
        RegisterFile(*state.property("bundleName")).getProductPath();
    if (registered && exists(*registered)) return *registered;
  }
  return path::appendingComponent(state._pathToInstallDestination,
                                  *HotfixPackage::applicationName(state._properties));
}

void loadPackage() {
  if (!readProperties()) return;
  RunState& state = runState();
  if (!state.property("bundleName")) {
    log(LogLevel::error, "The hotfix description names no bundleName.");
    return;
  }
  const std::string bundle = resolveBundle();
  if (!allowsSeveralInstances())
    state._pathToInstallDestination = path::deletingLastComponent(bundle);
  if (const auto rcpHome = HotfixPackage::rcpHomeIn(bundle, state._properties))
    state._properties.set("rcpHome", *rcpHome);
  else
    log(LogLevel::error, "The hotfix description names no frameworkPath.");
}

}  // namespace installer
