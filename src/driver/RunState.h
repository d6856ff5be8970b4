#pragma once

#include <optional>
#include <string>

#include "hotfix/base/PropertyList.h"

namespace installer {

// The process-wide values of a run: set once at its start, then only read.
struct RunState {
  std::string _pathToInstallPackage;      // the package folder, first argument
  std::string _pathToInstallDestination;  // second argument, or the registered bundle's folder
  PropertyList::Dictionary _properties;   // the package's hotfix.plist and the derived rcpHome

  // The text under the key; nullopt when the package does not tell.
  std::optional<std::string> property(std::string_view key) const {
    return PropertyList::textForKey(_properties, key);
  }
};

RunState& runState();

}  // namespace installer
