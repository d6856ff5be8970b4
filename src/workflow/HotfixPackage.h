#pragma once

#include <optional>
#include <string>

#include "hotfix/base/PropertyList.h"

namespace installer {

struct ResolvedPackage;

// What a hotfix package says of itself in its hotfix.plist: every entry that is of use here, read
// in this one place. A key that is missing or holds another type is absent.
struct HotfixPackage {
  // Why a package has no entries.
  enum class Lack { package, description, propertyList };

  std::optional<std::string> bundleName;     // the application bundle's name without ".app"
  std::optional<std::string> frameworkPath;  // from the bundle to the folder that holds "rcp"
  std::optional<std::string> version;
  bool allowMultiInstance = false;  // the bundle lies in the destination, registered or not
  bool skipRunningCheck = false;    // the text "true", to the letter

  // <bundleName>.app; nullopt without a name.
  [[nodiscard]] std::optional<std::string> applicationName() const;
  // The application in the folder; nullopt without a name.
  [[nodiscard]] std::optional<std::string> bundleIn(const std::string& folder) const;
  // <bundle>/<frameworkPath>/rcp; nullopt without a framework path.
  [[nodiscard]] std::optional<std::string> rcpHomeIn(const std::string& bundle) const;
  // The home in the application in the folder; nullopt without one of the two.
  [[nodiscard]] std::optional<std::string> rcpHomeBelow(const std::string& folder) const;

  // The entries as they stand in the description: what the driver goes by.
  static HotfixPackage describedBy(const PropertyList::Dictionary& properties);
  // The same with "${package}" in every text replaced by the package's path: what the workflow goes
  // by.
  static ResolvedPackage resolvedFor(const std::string& package,
                                     const PropertyList::Dictionary& properties);

  // The package's hotfix.plist.
  static std::string propertiesFile(const std::string& package);
  // Its entries; nullopt when the package, the file or a dictionary in it is missing: `lack`, if
  // any, receives which.
  [[nodiscard]] static std::optional<PropertyList::Dictionary> properties(
      const std::optional<std::string>& package, Lack* lack = nullptr);
};

// With the places of the package's files, and the update sites. Missing and empty ones have their
// default.
struct ResolvedPackage : HotfixPackage {
  struct Locations {
    std::string installManifest;
    std::string uninstallManifest;
    std::string customization;
    std::string updateSites;
    std::string keyStores;  // a folder; without one of its own that of the install manifest
    std::string extras;     // a folder; without one of its own "extras" beside the install manifest
  };

  Locations locations;
};

}  // namespace installer
