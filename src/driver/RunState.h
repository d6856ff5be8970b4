#pragma once

#include <optional>
#include <string>

#include "hotfix/base/PropertyList.h"
#include "workflow/HotfixPackage.h"

namespace installer {

// The process-wide values of a run: set once at its start, then only read.
struct RunState {
  std::string _pathToInstallPackage;      // the package folder, first argument
  std::string _pathToInstallDestination;  // second argument, or the registered bundle's folder
  PropertyList::Dictionary _properties;   // the package's hotfix.plist and the derived rcpHome
  HotfixPackage _package;                 // what the same entries say, as they stand

  // The home of the instance that the checks look at; nullopt when the package does not tell.
  std::optional<std::string> rcpHome() const {
    return PropertyList::textForKey(_properties, "rcpHome");
  }
};

RunState& runState();

}  // namespace installer
