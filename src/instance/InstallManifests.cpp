#include "hotfix/base/Path.h"
#include "hotfix/formats/InstallManifest.h"
#include "hotfix/formats/JavaProperties.h"
#include "hotfix/instance/InstanceService.h"
#include "instance/InstanceLayout.h"
#include "platform/Exists.h"
#include "platform/FileManager.h"
#include "platform/Log.h"
#include "platform/Reported.h"

namespace installer {

namespace {

constexpr const char* kManifestVersion = "provisioning.manifest.version";
constexpr const char* kInstallID = "rcp.install.id";

void setAndSave(JavaProperties& properties, const char* key,
                const std::optional<std::string>& value) {
  (void)properties.setProperty(value, key);             // an absent value is refused with a line
  (void)properties.savePropertiesToFile(std::nullopt);  // the file layer tells a failure
}

bool resolveInstallerRoot(const std::string& manifest, const std::string& root) {
  log(LogLevel::info, "Update ${{installer.root}}.");
  InstallManifest document(manifest);
  reported::tellUnreadable(document.readError());
  const std::string replacement = "file:" + root;
  log(LogLevel::info, "Get ${{installer.root}} : {}.", replacement);
  (void)document.replaceInstallerRootWith(replacement);  // the save is what counts
  log(LogLevel::info, "Save install manifest.");
  return document.saveInstallManifestAs(std::nullopt);
}

}  // namespace

void InstanceService::setLauncherProperty(const std::string& key, const std::string& value) {
  if (!_pathToRcphome) return;
  const std::string file = InstanceLayout::launcherProperties(*_pathToRcphome);
  if (!reported::exists(file)) return;
  JavaProperties properties(file);
  setAndSave(properties, key.c_str(), value);
}

void InstanceService::updateProvisionManifestVersion(const std::string& version) {
  setLauncherProperty(kManifestVersion, version);
}

void InstanceService::updateInstallID(const std::string& installID) {
  setLauncherProperty(kInstallID, installID);
}

void InstanceService::updateInstallIDWithProvManVer() {
  if (!_pathToRcphome || !_pathToRcpData) return;
  const std::string dataFile = InstanceLayout::dataSettings(*_pathToRcpData);
  const std::string launcherFile = InstanceLayout::launcherProperties(*_pathToRcphome);
  if (!reported::exists(dataFile) || !reported::exists(launcherFile)) return;
  JavaProperties launcher(launcherFile);
  if (launcher.readError()) return reported::tell(*launcher.readError());
  const std::optional<std::string> version = launcher.getPropertyForKey(kManifestVersion);
  setAndSave(launcher, kInstallID, version);
  JavaProperties data(dataFile);
  setAndSave(data, kInstallID, version);
}

void InstanceService::backupInstallManifest() {
  if (!_pathToRcphome) return;
  const std::string launcherFile = InstanceLayout::launcherProperties(*_pathToRcphome);
  if (!reported::exists(launcherFile)) return;
  const JavaProperties launcher(launcherFile);
  reported::tellUnreadable(launcher.readError());
  const std::string version = launcher.getPropertyForKey(kManifestVersion).value_or("old");
  if (version.find('/') != std::string::npos) {
    // Whoever can write the settings would choose where a copy made by root appears.
    log(LogLevel::warning, "Not able to back up install manifest of version {}.", version);
    return;
  }
  const std::string manifest = InstanceLayout::installManifest(*_pathToRcphome);
  const std::string backup =
      InstanceLayout::deployed(*_pathToRcphome, "install." + version + ".xml");
  if (!reported::exists(manifest)) return;
  const CopySource source{manifest, contentFolders()};
  (void)reported::copy(source, backup, ExistingItem::keep);  // a missing backup stops nothing
}

bool InstanceService::copyUpdateManifest(
    const std::string& manifest, const std::optional<std::string>& replaceInstallerRootWith) {
  return _pathToRcphome &&
         copyInstallManifest(manifest, std::string(InstanceLayout::kUpdateManifest),
                             replaceInstallerRootWith);
}

bool InstanceService::copyInstallManifest(
    const std::string& manifest, const std::optional<std::string>& replaceInstallerRootWith) {
  return _pathToRcphome &&
         copyInstallManifest(manifest, std::string(InstanceLayout::kInstallManifest),
                             replaceInstallerRootWith);
}

bool InstanceService::copyInstallManifest(
    const std::string& manifest, const std::string& toFile,
    const std::optional<std::string>& replaceInstallerRootWith) {
  if (!_pathToRcphome) {
    log(LogLevel::error, "The _pathToRcphome is nil, manually setting rcpHome!");
    takeFallbackRcphome();
  }
  const std::string target = InstanceLayout::deployed(*_pathToRcphome, toFile);
  log(LogLevel::info, "Copy install manifest to {}.", target);
  if (!reported::copy({manifest, contentFolders()}, target, ExistingItem::replace)) return false;
  if (!replaceInstallerRootWith) return true;
  FileError error;
  if (Platform::current().files->exists(*replaceInstallerRootWith, &error))
    return resolveInstallerRoot(target, *replaceInstallerRootWith);
  // A root that may well be there would leave features without a place to come from.
  reported::tellUnreadable(error);
  return error.code == FileError::kMissing;
}

bool InstanceService::copyManifest(const std::optional<std::string>& manifest) {
  if (!_pathToRcphome || !manifest || !exists(*manifest) || !exists(*_pathToRcphome)) return false;
  return copyInstallManifest(*manifest, path::lastComponent(*manifest), std::nullopt);
}

bool InstanceService::copyHotfixUninstallManifest(const std::optional<std::string>& manifest) {
  if (!_pathToRcphome || !manifest || !exists(*manifest)) return false;
  return Platform::current().files->copy({*manifest, contentFolders()},
                                         InstanceLayout::uninstallManifest(*_pathToRcphome),
                                         ExistingItem::replace);
}

}  // namespace installer
