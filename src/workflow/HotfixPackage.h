#pragma once

#include <optional>
#include <string>

#include "hotfix/base/PropertyList.h"

// What lies where in a hotfix package.
namespace installer::HotfixPackage {

// The package's description of itself.
std::string propertiesFile(const std::string& package);

// Its entries; nullopt when the package, the file or a dictionary in it is missing.
std::optional<PropertyList::Dictionary> properties(const std::optional<std::string>& package);

// <bundle>/<frameworkPath>/rcp with the package's frameworkPath; nullopt when it names none.
std::optional<std::string> rcpHomeIn(const std::string& bundle,
                                     const PropertyList::Dictionary& properties);

// The file name of the application bundle, <bundleName>.app; nullopt when the package names none.
std::optional<std::string> applicationName(const PropertyList::Dictionary& properties);

}  // namespace installer::HotfixPackage
