#pragma once

#include <optional>
#include <string>

namespace installer {

// Reads the package's hotfix.plist into runState(), finds the application bundle, and derives the
// rcp homes. Where a registered bundle is found, the destination becomes the folder that holds it.
// A package that does not tell enough leaves them unset, with one error line that says why.
void loadPackage();

// The application bundle that the package in runState() is for: <destination>/<bundleName>.app, or,
// unless the package allows several instances, the existing bundle that the product's registration
// names. nullopt when the package does not name its bundle.
[[nodiscard]] std::optional<std::string> resolveBundle();

}  // namespace installer
