#pragma once

#include <string>

#include "hotfix/instance/InstanceService.h"
#include "workflow/HotfixPackage.h"

namespace installer {

// One hotfix package at work on one instance, which is there. The steps of Hotfix; each stands a
// second run over its own results.
class HotfixInstallation {
 public:
  // `preference` is the package's description, resolved for the package. Makes the instance's
  // service, with its lines.
  HotfixInstallation(const std::string& pathToInstallPackage, const ResolvedPackage& preference,
                     const std::string& pathToRcpHome, const std::string& pathToRcpData);

  // Brings the package's install manifest into the instance; false when it could not be copied.
  [[nodiscard]] bool copyHotfixInstallManifest();
  // All steps behind that one. Whether provisioning succeeded: whatever else goes wrong, every step
  // is made.
  [[nodiscard]] bool installWithManifest();

 private:
  void copyHotfixUninstallManifest();
  void backupInstallManifest();
  void updateProvisionManifestVersion();
  void mergePluginCustomization();
  void copyKeyStores();
  void copyExtras();
  void prepareInstance();
  void startProvisioning();
  void updateHotfixVersion();
  [[nodiscard]] bool provision();
  void storePackageIdentity();
  void setupConfiguratioForResultPanel() const;

  std::string _pathToInstallPackage;
  std::string _pathToRcpHome;
  std::string _pathToRcpData;
  ResolvedPackage _preference;
  InstanceService _service;
};

}  // namespace installer
