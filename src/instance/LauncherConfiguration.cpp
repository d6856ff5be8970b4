#include "hotfix/formats/JavaProperties.h"
#include "hotfix/instance/InstanceService.h"
#include "hotfix/util/InstallUtil.h"
#include "hotfix/util/StringUtil.h"
#include "instance/InstanceLayout.h"
#include "platform/Exists.h"
#include "platform/FileManager.h"
#include "platform/Log.h"
#include "platform/UserContext.h"
#include "util/HandedOver.h"

namespace installer {

namespace {

void writeLink(const std::string& file, const std::string& target) {
  JavaProperties link(file, FailedSave::isPassedOver);
  (void)link.setProperty(target, "path");         // both texts are there
  (void)link.savePropertiesToFile(std::nullopt);  // the saves are not looked at
}

bool makeFolderUnlessThere(const std::string& folder, const FileAttributes& attributes) {
  return exists(folder) ||
         Platform::current().files->createDirectory(folder, Intermediates::refuse, attributes);
}

// The home is made when it is missing.
bool copyLauncherTemplate(const CopySource& source, const std::string& rcpHome) {
  FileManager& files = *Platform::current().files;
  const bool hasHome = files.createDirectory(rcpHome, Intermediates::create);
  if (!hasHome) log(LogLevel::error, "Failed to create directory {}", rcpHome);
  const std::string target = InstanceLayout::launcherProperties(rcpHome);
  if (files.copy(source, target, ExistingItem::fail)) return true;
  log(LogLevel::error, "Fail to copy rcplauncher.properties to {}, try again...", target);
  // On purpose, a folder that could not be made fails the second attempt even when it copies.
  if (files.copy(source, target, ExistingItem::fail) && hasHome) return true;
  log(LogLevel::error, "Fail to copy rcplauncher.properties to {} again!", target);
  return false;
}

}  // namespace

bool InstanceService::generateLinks() {
  Platform& platform = Platform::current();
  if (!_pathToRcphome || !platform.files->isDirectory(InstanceLayout::eclipse(*_pathToRcphome)))
    return false;
  const std::string owner = platform.users->consoleUserName().value_or("root");
  if (!makeFolderUnlessThere(InstanceLayout::links(*_pathToRcphome),
                             handedTo(owner, kSharedMode))) {
    log(LogLevel::warning, "Not able to create links directory.");
    return false;
  }
  writeLink(InstanceLayout::rcpLink(*_pathToRcphome), *_pathToRcphome);
  writeLink(InstanceLayout::sharedLink(*_pathToRcphome), InstanceLayout::shared(*_pathToRcphome));
  return true;
}

void InstanceService::setIdentity(JavaProperties& launcherProperties) const {
  const std::string version = InstallUtil::generateNewManifestVersion();
  (void)launcherProperties.setProperty(version, "rcp.install.id");  // both texts are there
  (void)launcherProperties.setProperty(version, "provisioning.manifest.version");  // here too
}

void InstanceService::setBaseLocation(JavaProperties& launcherProperties) const {
  const std::optional<std::string> version = getBaseVersion();
  if (!version) return;
  const std::string location =
      "${rcp.home}/rcp/eclipse/plugins/" + std::string(InstanceLayout::kBasePlugin) + *version;
  (void)launcherProperties.setProperty(location, "rcp.base.location");  // both texts are there
}

bool InstanceService::generateRcplauncherPropertiesWithTemplate(
    const std::string& path, const std::optional<std::string>& workspace) {
  if (!_pathToRcphome) {
    log(LogLevel::error, "The rcpHome is nil, manually setting rcpHome");
    takeFallbackRcphome();
  }
  if (!exists(path)) {
    log(LogLevel::error, "Fail to locate the template for rcplauncher.properties.");
    return false;
  }
  if (!copyLauncherTemplate({path, contentFolders()}, *_pathToRcphome)) return false;
  log(LogLevel::info, "Update rcplauncher.properties. ");
  JavaProperties properties(InstanceLayout::launcherProperties(*_pathToRcphome),
                            FailedSave::isPassedOver);
  setIdentity(properties);
  constexpr const char* kManifest = "file:/${rcp.home}/rcp/deploy/install.xml";
  (void)properties.setProperty(kManifest, "provisioning.manifest");  // both texts are there
  setBaseLocation(properties);
  if (workspace) (void)properties.setProperty(workspace, "rcp.data");  // both texts are there
  log(LogLevel::info, "Save rcplauncher.properties.");
  (void)properties.savePropertiesToFile(std::nullopt);  // the save is not looked at
  return true;
}

bool InstanceService::updateRcpLauncherProperties() {
  if (!_pathToRcphome) return false;
  const std::string file = InstanceLayout::launcherProperties(*_pathToRcphome);
  if (!exists(file)) return false;
  JavaProperties properties(file, FailedSave::isPassedOver);
  setIdentity(properties);
  setBaseLocation(properties);
  return properties.savePropertiesToFile(std::nullopt);
}

bool InstanceService::copyOgsiAgentProperties(const std::string& path) {
  if (!_pathToRcphome) return false;
  if (!exists(path)) {
    log(LogLevel::error, "Not able to find template for osgiagent.properties.");
    return false;
  }
  return Platform::current().files->copy({path, contentFolders()},
                                         InstanceLayout::agentProperties(*_pathToRcphome),
                                         ExistingItem::fail);
}

bool InstanceService::generateJVMPropertiesWithTemplate(const std::optional<std::string>& path) {
  if (!hasRcphomeFolder()) return false;
  Platform& platform = Platform::current();
  // Unlike the links, these files are the current user's, whoever sits in front of the machine.
  const FileAttributes attributes = handedTo(platform.users->currentUserName(), kSharedMode);
  const std::string deploy = InstanceLayout::deploy(*_pathToRcphome);
  if (!makeFolderUnlessThere(deploy, attributes)) {
    log(LogLevel::error, "Not able to create the {} directory.", deploy);
    return false;
  }
  const std::string target = InstanceLayout::jvmProperties(*_pathToRcphome);
  FileError error;
  if (path && platform.files->exists(*path, &error)) {
    if (!hasContent(*path)) return false;
    (void)platform.files->remove(target);  // the copy tells what comes of it
    return copyContent(*path, target);
  }
  // A template that may be there is no reason to empty what is there.
  if (path && error.code != FileError::kMissing) return false;
  return platform.files->createFile(target, "", attributes);
}

std::optional<std::string> InstanceService::getWorkspace() const {
  if (!_pathToRcphome) return std::nullopt;
  if (_pathToRcpData) return _pathToRcpData;
  const JavaProperties properties(InstanceLayout::launcherProperties(*_pathToRcphome));
  const std::optional<std::string> data = properties.getPropertyForKey("rcp.data");
  const std::optional<std::string> home = Platform::current().users->environment("HOME");
  if (!data || !home) return data;
  return StringUtil::stringByReplacingOccurrencesOfString(*data, "${env.HOME}", *home);
}

}  // namespace installer
