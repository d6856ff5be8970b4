#pragma once

#include <optional>
#include <string>

#include "hotfix/base/DeletedForNull.h"
#include "hotfix/base/PropertyList.h"
#include "hotfix/instance/InstanceService.h"

namespace installer {

/// Installs one hotfix package into one instance. May run twice in a row: every step stands a
/// second run over its own results. The package's hotfix.plist is read once, when the object is
/// made; its missing locations get their defaults and "${package}" becomes the package's path.
class Hotfix {
 public:
  /// `pathToInstallLocation` is the folder that holds the application bundle <bundleName>.app. An
  /// absent rcp data folder is <rcp home>/systemdata. A missing package, or a plist that lacks a
  /// name, leaves a workflow that answers false at its gate.
  Hotfix(const std::optional<std::string>& pathToInstallPackage,
         const std::string& pathToInstallLocation, const std::optional<std::string>& pathToRcpData);

  /// The whole workflow. Only a manifest that cannot be brought into the instance stops it (error
  /// record 4); whatever else goes wrong, all steps are made, and the answer is whether the
  /// provisioning run succeeded. Only then is the hotfix's version recorded.
  bool installNewHotfix();

  /// @cond
  // No text is nullptr; an absent one is std::nullopt.
  HOTFIX_DELETED_FOR_NULL(explicit Hotfix);
  /// @endcond

 private:
  bool loadPreference();
  void initializeDefaultValues();
  void resolvePackageVariable(const std::string& package);

  bool copyHotfixInstallManifest();
  void copyHotfixUninstallManifest();
  void backupInstallManifest();
  void updateProvisionManifestVersion();
  void mergePluginCustomization();
  void copyKeyStores();
  void copyExtras();
  void startProvisioning();
  void updateHotfixVersion();
  void storePackageIdentity();
  void setupConfiguratioForResultPanel() const;

  void prepareInstance();
  bool provision();

  std::optional<std::string> preferenceForKey(std::string_view key) const;
  /// The value of a key that has a default.
  std::string location(const char* key) const;
  void setDefault(const char* key, const std::string& value);

  std::optional<std::string> _pathToInstallPackage;  // nullopt when it does not exist
  std::string _pathToInstallLocation;
  std::optional<std::string> _pathToRcpHome;  // nullopt when the package tells too little
  std::optional<std::string> _pathToRcpData;
  std::optional<PropertyList::Dictionary> _preference;  // nullopt without package or plist
  std::optional<InstanceService> _service;              // nullopt when the rcp home is missing
};

}  // namespace installer
