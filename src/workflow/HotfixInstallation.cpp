#include "workflow/HotfixInstallation.h"

#include "hotfix/formats/Configuration.h"
#include "hotfix/util/InstallUtil.h"
#include "hotfix/workflow/HotfixPolicy.h"
#include "instance/InstanceLayout.h"
#include "instance/ProvisioningCommand.h"
#include "instance/ProvisioningRun.h"
#include "platform/Log.h"
#include "platform/Reported.h"

namespace installer {

HotfixInstallation::HotfixInstallation(const std::string& pathToInstallPackage,
                                       const ResolvedPackage& preference,
                                       const std::string& pathToRcpHome,
                                       const std::string& pathToRcpData)
    : _pathToInstallPackage(pathToInstallPackage),
      _pathToRcpHome(pathToRcpHome),
      _pathToRcpData(pathToRcpData),
      _preference(preference),
      _service(pathToRcpHome) {
  _service.setInstallPackage(pathToInstallPackage);
}

bool HotfixInstallation::copyHotfixInstallManifest() {
  return _service.copyUpdateManifest(_preference.locations.installManifest, _pathToInstallPackage);
}

void HotfixInstallation::copyHotfixUninstallManifest() {
  const std::string& manifest = _preference.locations.uninstallManifest;
  if (reported::exists(manifest) && !_service.copyHotfixUninstallManifest(manifest))
    log(LogLevel::warning, "Not able to copy hotfix uninstall manifest.");
}

void HotfixInstallation::backupInstallManifest() {
  log(LogLevel::info, "Begin to backup install manifest.");
  _service.backupInstallManifest();
}

void HotfixInstallation::updateProvisionManifestVersion() {
  _service.updateProvisionManifestVersion(InstallUtil::generateNewManifestVersion());
}

void HotfixInstallation::mergePluginCustomization() {
  const std::string& customization = _preference.locations.customization;
  if (reported::exists(customization))
    (void)_service.mergePluginCustomizationWithRcphome(customization);  // does not stop the run
}

void HotfixInstallation::copyKeyStores() {
  _service.copyKeyStores(_preference.locations.keyStores);
}

void HotfixInstallation::copyExtras() {
  _service.copyExtras(_preference.locations.extras);
}

void HotfixInstallation::prepareInstance() {
  log(LogLevel::info, "Copy install manifest.");
  copyHotfixUninstallManifest();
  backupInstallManifest();
  updateProvisionManifestVersion();
  log(LogLevel::info, "Process plugin_customization.ini. ");
  mergePluginCustomization();
  log(LogLevel::info, "Copy .keystore file.");
  copyKeyStores();
  log(LogLevel::info, "Copy extras file.");
  copyExtras();
}

void HotfixInstallation::startProvisioning() {
  _service.removeProvisionRCFile();
  log(LogLevel::info, "Begin to start provisoning sytem to install features.");
  runProvisioning(
      InstanceLayout::launcher(_pathToRcpHome),
      ProvisioningCommand::hotfixArguments(InstallUtil::getCurrentLocale(),
                                           _preference.locations.updateSites, _pathToRcpData));
}

void HotfixInstallation::updateHotfixVersion() {
  log(LogLevel::info, "Begin to update new hotfix version.");
  if (_preference.version) _service.updateHotfixVersion(_preference.version);
}

bool HotfixInstallation::provision() {
  log(LogLevel::info, "Start provisioning system. ");
  startProvisioning();
  const bool succeeded = provisioningSucceeded(_service, _pathToRcpHome, _pathToRcpData);
  if (!succeeded) return false;
  // The record must not outlive, at a power cut, what the launcher has installed.
  (void)reported::flush(_pathToRcpHome);  // without it the hotfix is installed all the same
  updateHotfixVersion();
  return true;
}

void HotfixInstallation::storePackageIdentity() {
  const HotfixPolicy policy(_pathToInstallPackage);
  _service.updatePermissions(true, _pathToRcpData);
  _service.saveHotfixSkipRunningCheckProperty(policy.isSkipRunningCheck());
  _service.saveHotfixBundleID(InstallUtil::getBundleID(_pathToInstallPackage));
}

void HotfixInstallation::setupConfiguratioForResultPanel() const {
  (void)reported::remove(Platform::current().paths.staleResultPanel);  // mostly there is none
  Configuration configuration;
  (void)configuration.setProperty(_pathToRcpData, "P_RCPDATA");  // both texts are there
  log(LogLevel::info, "workspace is {}\n", _pathToRcpData);
  (void)configuration.setProperty(_pathToRcpHome, "pathToRcpHome");  // both texts are there
  (void)configuration.saveConfiguration();                           // for the panel's eyes only
}

bool HotfixInstallation::installWithManifest() {
  prepareInstance();
  const bool succeeded = provision();
  storePackageIdentity();
  setupConfiguratioForResultPanel();
  return succeeded;
}

}  // namespace installer
