#pragma once

#include <optional>
#include <string>

#include "ctl/new/Wanted.h"

// The files that tell what a package is. The same wishes give the same bytes.
namespace installer::ctl::package {

// hotfix.plist and Info.plist; nullopt when a text holds a character that a property list cannot
// hold.
[[nodiscard]] std::optional<std::string> description(const Wanted& wanted);
[[nodiscard]] std::optional<std::string> information(const Wanted& wanted);

// The manifests that bring the features, and take them away again.
std::string installManifest(const Wanted& wanted);
std::string uninstallManifest(const Wanted& wanted);

}  // namespace installer::ctl::package
