#pragma once

#include <optional>
#include <string>

#include "workflow/HotfixPackage.h"

namespace installer {

// The process-wide values of a run: set once at its start, then only read.
struct RunState {
  std::string _pathToInstallPackage;      // the package folder, first argument
  std::string _pathToInstallDestination;  // second argument, or the registered bundle's folder
  HotfixPackage _package;                 // the package's hotfix.plist, its texts as they stand

  // The home of the instance that the checks look at; nullopt when the package does not tell.
  std::optional<std::string> _rcpHome;
  // The home that the workflow changes, mostly the same: it takes the bundle by the package's name
  // for it, whatever the registration calls it. nullopt as above.
  std::optional<std::string> _rcpHomeOfWorkflow;
};

RunState& runState();

}  // namespace installer
