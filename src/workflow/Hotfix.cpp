#include "hotfix/workflow/Hotfix.h"

#include "hotfix/base/Path.h"
#include "hotfix/formats/Configuration.h"
#include "hotfix/util/InstallUtil.h"
#include "hotfix/workflow/HotfixPolicy.h"
#include "instance/InstanceLayout.h"
#include "instance/ProvisioningCommand.h"
#include "instance/ProvisioningRun.h"
#include "platform/Exists.h"
#include "platform/FileManager.h"
#include "platform/Log.h"
#include "workflow/HotfixPackage.h"

namespace installer {

namespace {

constexpr const char* kInstallManifest = "pathToHotfixManifest";
constexpr const char* kUninstallManifest = "pathToHotfixUninstallManifest";
constexpr const char* kCustomization = "pathToPluginCustomization";
constexpr const char* kUpdateSites = "updateSiteList";
constexpr const char* kKeyStore = "keystore";
constexpr const char* kExtras = "extras";

constexpr int kManifestMissing = 4;

}  // namespace

Hotfix::Hotfix(const std::optional<std::string>& pathToInstallPackage,
               const std::string& pathToInstallLocation,
               const std::optional<std::string>& pathToRcpData)
    : _pathToInstallLocation(pathToInstallLocation) {
  if (!exists(pathToInstallPackage)) return;
  _pathToInstallPackage = pathToInstallPackage;
  if (!loadPreference()) return;
  const std::optional<std::string> application = HotfixPackage::applicationName(*_preference);
  if (!application) return;
  _pathToRcpHome = HotfixPackage::rcpHomeIn(
      path::appendingComponent(_pathToInstallLocation, *application), *_preference);
  if (!_pathToRcpHome) return;
  if (exists(_pathToRcpHome)) _service.emplace(*_pathToRcpHome);
  _pathToRcpData = pathToRcpData ? *pathToRcpData : InstanceLayout::defaultRcpData(*_pathToRcpHome);
}

bool Hotfix::loadPreference() {
  _preference = HotfixPackage::properties(_pathToInstallPackage);
  if (!_preference) return false;
  initializeDefaultValues();
  resolvePackageVariable(*_pathToInstallPackage);
  return true;
}

std::optional<std::string> Hotfix::preferenceForKey(std::string_view key) const {
  return PropertyList::textForKey(*_preference, key);
}

std::string Hotfix::location(const char* key) const {
  return *preferenceForKey(key);
}

void Hotfix::setDefault(const char* key, const std::string& value) {
  if (preferenceForKey(key).value_or("").empty()) _preference->set(key, value);
}

void Hotfix::initializeDefaultValues() {
  setDefault(kInstallManifest, "${package}/../deploy/install.hotfix.xml");
  setDefault(kUninstallManifest, "${package}/../deploy/uninstall.hotfix.xml");
  setDefault(kCustomization, "${package}/../deploy/plugin_customization.ini");
  setDefault(kUpdateSites, "${package}/../../updates/platform");
  // A package that names its own manifest moves the folders beside it along.
  const std::string folder = path::deletingLastComponent(location(kInstallManifest));
  setDefault(kKeyStore, folder);
  setDefault(kExtras, path::appendingComponent(folder, "extras"));
}

void Hotfix::resolvePackageVariable(const std::string& package) {
  InstallUtil::replacePackageVariableWith(package, *_preference);
}

bool Hotfix::copyHotfixInstallManifest() {
  const std::string manifest = location(kInstallManifest);
  if (!exists(manifest)) {
    InstallUtil::sendErrorMessage(kManifestMissing, {manifest});
    return false;
  }
  const bool copied = _service && _service->copyUpdateManifest(manifest, _pathToInstallPackage);
  if (!copied) InstallUtil::sendErrorMessage(kManifestMissing, {"install.hotfix.xml"});
  return copied;
}

void Hotfix::copyHotfixUninstallManifest() {
  const std::string manifest = location(kUninstallManifest);
  if (exists(manifest) && !_service->copyHotfixUninstallManifest(manifest))
    log(LogLevel::warning, "Not able to copy hotfix uninstall manifest.");
}

void Hotfix::backupInstallManifest() {
  log(LogLevel::info, "Begin to backup install manifest.");
  _service->backupInstallManifest();
}

void Hotfix::updateProvisionManifestVersion() {
  _service->updateProvisionManifestVersion(InstallUtil::generateNewManifestVersion());
}

void Hotfix::mergePluginCustomization() {
  const std::string customization = location(kCustomization);
  if (exists(customization)) (void)_service->mergePluginCustomizationWithRcphome(customization);
}

void Hotfix::copyKeyStores() {
  _service->copyKeyStores(location(kKeyStore));
}

void Hotfix::copyExtras() {
  _service->copyExtras(location(kExtras));
}

void Hotfix::startProvisioning() {
  _service->removeProvisionRCFile();
  log(LogLevel::info, "Begin to start provisoning sytem to install features.");
  runProvisioning(InstanceLayout::launcher(*_pathToRcpHome),
                  ProvisioningCommand::hotfixArguments(InstallUtil::getCurrentLocale(),
                                                       location(kUpdateSites), *_pathToRcpData));
}

void Hotfix::updateHotfixVersion() {
  log(LogLevel::info, "Begin to update new hotfix version.");
  if (const std::optional<std::string> version = preferenceForKey("version"))
    _service->updateHotfixVersion(version);
}

void Hotfix::storePackageIdentity() {
  const HotfixPolicy policy(_pathToInstallPackage);
  _service->updatePermissions(true, _pathToRcpData);
  _service->saveHotfixSkipRunningCheckProperty(policy.isSkipRunningCheck());
  _service->saveHotfixBundleID(InstallUtil::getBundleID(*_pathToInstallPackage));
}

void Hotfix::setupConfiguratioForResultPanel() const {
  Platform& platform = Platform::current();
  (void)platform.files->remove(platform.paths.staleResultPanel);
  Configuration configuration;
  (void)configuration.setProperty(_pathToRcpData, "P_RCPDATA");
  log(LogLevel::info, "workspace is {}\n", orNull(_pathToRcpData));
  (void)configuration.setProperty(_pathToRcpHome, "pathToRcpHome");
  (void)configuration.saveConfiguration();
}

void Hotfix::prepareInstance() {
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

bool Hotfix::provision() {
  log(LogLevel::info, "Start provisioning system. ");
  startProvisioning();
  const bool succeeded = _service->getProvisioningResult() != -1;
  if (succeeded) updateHotfixVersion();
  return succeeded;
}

bool Hotfix::installNewHotfix() {
  // The home is known only of a package that is there and describes itself.
  if (!_pathToRcpHome || !copyHotfixInstallManifest()) return false;
  prepareInstance();
  const bool succeeded = provision();
  storePackageIdentity();
  setupConfiguratioForResultPanel();
  return succeeded;
}

}  // namespace installer
