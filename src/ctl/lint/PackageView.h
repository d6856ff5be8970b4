#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "ctl/lint/Finding.h"
#include "ctl/lint/RootKeys.h"
#include "hotfix/base/PropertyList.h"
#include "workflow/HotfixPackage.h"

namespace installer::ctl::lint {

// A package as the installer takes it.
struct PackageView {
  std::string path;            // as it was given
  std::string listFile;        // its hotfix.plist
  std::string listBytes = {};  // for places in it
  RootKeys listKeys = {};
  PropertyList::Dictionary entries = {};
  HotfixPackage described = {};   // what the checks go by
  ResolvedPackage resolved = {};  // what the installation goes by

  // The folder beside the package that holds its files by default.
  std::string deploy() const;
  // Whether the key has a text with a character in it, so that no default takes its place.
  bool names(std::string_view key) const;
  // The key in the description, with its line.
  Place at(std::string_view key) const;
  // The description as a whole.
  Place list() const { return {listFile, std::nullopt, std::nullopt}; }
};

// The file or folder itself.
Place placeOf(std::string file);

}  // namespace installer::ctl::lint
