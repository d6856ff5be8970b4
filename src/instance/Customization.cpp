#include "hotfix/base/Path.h"
#include "hotfix/formats/JavaProperties.h"
#include "hotfix/instance/InstanceService.h"
#include "hotfix/util/InstallUtil.h"
#include "instance/InstanceLayout.h"
#include "platform/Exists.h"
#include "platform/FileManager.h"
#include "platform/Log.h"
#include "platform/UserContext.h"
#include "util/HandedOver.h"

namespace installer {

namespace {

// None when it is no folder or cannot be listed.
std::vector<std::string> entriesOf(const std::string& folder) {
  return Platform::current().files->list(folder).value_or(std::vector<std::string>());
}

std::vector<std::string> keyStoresIn(const std::string& folder) {
  std::vector<std::string> names = entriesOf(folder);
  std::erase_if(names, [](const std::string& name) {
    return !InstallUtil::hasPrefixCaseInsensitive(name, ".keystore");
  });
  return names;
}

void removeKeyStores(const std::string& folder) {
  for (const std::string& name : keyStoresIn(folder)) {
    const std::string file = path::appendingComponent(folder, name);
    (void)Platform::current().files->remove(file);  // one that stays stops nothing, silently
    log(LogLevel::info, "Delete existing keystore files '{}' from {}.", name, file);
  }
}

}  // namespace

bool InstanceService::mergePluginCustomizationWithBase(const std::optional<std::string>& path) {
  if (!_pathToRcphome || !path || !exists(*path) || !hasContent(*path)) return false;
  const std::optional<std::string> version = getBaseVersion();
  if (!version) return false;
  const std::string baseFile = InstanceLayout::baseCustomization(*_pathToRcphome, *version);
  if (!exists(baseFile)) return true;
  JavaProperties settings(baseFile, FailedSave::isPassedOver);
  if (settings.readError()) return true;  // without its settings the instance's would be lost
  (void)settings.mergeWithJavaProperties(*path);  // whatever comes of it is saved for the instance
  const std::string file = InstanceLayout::customization(*_pathToRcphome);
  (void)settings.savePropertiesToFile(file);  // a refusing disk does not change the answer
  return true;
}

bool InstanceService::mergePluginCustomizationWithRcphome(const std::optional<std::string>& path) {
  if (!path || !hasRcphomeFolder()) return false;
  const std::string file = InstanceLayout::customization(*_pathToRcphome);
  if (!exists(file)) {
    (void)copyContent(*path, file);  // what can not be copied does not change the answer
    return true;
  }
  JavaProperties settings(file, FailedSave::isPassedOver);
  if (hasContent(*path)) (void)settings.mergeWithJavaProperties(*path);  // saves already
  // Without a merge the file is put into our form alone.
  (void)settings.savePropertiesToFile(std::nullopt);  // a refusing disk changes no answer
  return true;
}

void InstanceService::copyKeyStores(const std::string& path) {
  if (!_pathToRcphome) return;
  log(LogLevel::info, ".keystore source files are in {}.", path);
  const std::string folder = InstanceLayout::deploy(*_pathToRcphome);
  removeKeyStores(folder);
  for (const std::string& name : keyStoresIn(path)) {
    const std::string from = path::appendingComponent(path, name);
    const std::string to = path::appendingComponent(folder, name);
    (void)copyAsGiven(from, to);  // failures are passed over, silently
    log(LogLevel::info, "Copy keystore file '{}' from {} to {}.", name, from, to);
  }
}

void InstanceService::copyExtras(const std::optional<std::string>& path) {
  if (!path || !_pathToRcphome || entriesOf(*path).empty()) return;
  const std::string target = InstanceLayout::extras(*_pathToRcphome);
  log(LogLevel::info, "Begin to copy files from {} to {} ", *path, target);
  (void)InstallUtil::copyFolderFrom(*path, target);  // a merge answers false, whatever it did
}

void InstanceService::updatePermissions(bool rcphome, const std::optional<std::string>& workspace) {
  if (!_pathToRcphome) return;
  std::vector<std::string> folders;
  if (rcphome) folders = {*_pathToRcphome, InstanceLayout::shared(*_pathToRcphome)};
  if (workspace) folders.push_back(*workspace);
  // Together, because a link in the home can lead to the workspace.
  const Platform& platform = Platform::current();
  const FileAttributes attributes = handedTo(platform.users->consoleUserName(), kSharedMode);
  (void)platform.files->changeAttributesBelowAll(folders, attributes);  // passed over, silently
}

void InstanceService::updatePermissions(bool rcphome, bool updateWorkspace) {
  updatePermissions(rcphome, updateWorkspace ? getWorkspace() : std::nullopt);
}

}  // namespace installer
