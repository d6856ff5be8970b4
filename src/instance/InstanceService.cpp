#include "hotfix/instance/InstanceService.h"

#include "hotfix/base/Path.h"
#include "hotfix/formats/Configuration.h"
#include "hotfix/util/InstallUtil.h"
#include "platform/Exists.h"
#include "platform/FileManager.h"
#include "platform/Log.h"
#include "platform/UserContext.h"

namespace installer {

namespace {

std::optional<std::string> newInstallLocation() {
  std::optional<std::string> location =
      Configuration().getPropertyValueForKey("newInstallLocation");
  log(LogLevel::info, "newInstallLocation : {}.", orNull(location));
  return location;
}

}  // namespace

InstanceService::InstanceService(const std::optional<std::string>& pathToRcphome)
    : InstanceService(pathToRcphome, std::nullopt) {}

InstanceService::InstanceService(const std::optional<std::string>& pathToRcphome,
                                 const std::optional<std::string>& pathToRcpData) {
  log(LogLevel::info, "The pathToRcphome is: {}.", orNull(pathToRcphome));
  const std::optional<std::string> location = newInstallLocation();
  const bool isThere = pathToRcphome && Platform::current().files->createDirectory(
                                            *pathToRcphome, Intermediates::create);
  copyStagingFolder(location);
  if (!isThere && !exists(pathToRcphome)) {  // it can be something else than a folder
    log(LogLevel::error, "No file at: {}!", orNull(pathToRcphome));
    return;
  }
  _pathToRcphome = pathToRcphome;
  _pathToRcpData = pathToRcpData;
}

std::optional<InstanceService> InstanceService::existing(
    const std::optional<std::string>& pathToRcphome) {
  return existing(pathToRcphome, std::nullopt);
}

std::optional<InstanceService> InstanceService::existing(
    const std::optional<std::string>& pathToRcphome,
    const std::optional<std::string>& pathToRcpData) {
  InstanceService service;
  service._pathToRcphome = pathToRcphome;
  service._pathToRcpData = pathToRcpData;
  if (!service.hasRcphomeFolder()) return std::nullopt;
  return service;
}

void InstanceService::copyStagingFolder(const std::optional<std::string>& location) const {
  if (!location) {
    log(LogLevel::warning, "Can not copy to newInstallLocation because its nil!");
    return;
  }
  const Platform& platform = Platform::current();
  CopySource staging = platform.paths.stagingFolder;
  staging.mayOwn = [&platform](uid_t owner) { return platform.users->trusts(owner); };
  FileError error;
  if (!platform.files->copy(staging, *location, ExistingItem::fail, &error) &&
      !shouldProceedAfterError(error, staging.path, *location))
    log(LogLevel::error, "Error copying files: {}.", error.description);
}

bool InstanceService::shouldProceedAfterError(const FileError& error,
                                              const std::string& /*copyingItemAtPath*/,
                                              const std::string& /*toPath*/) const {
  return error.code == FileError::kExists;
}

bool InstanceService::copyItem(const std::string& from, const std::string& to,
                               FileError* error) const {
  FileError reason;
  if (Platform::current().files->copy(from, to, ExistingItem::fail, &reason)) return true;
  if (shouldProceedAfterError(reason, from, to)) return true;
  if (error != nullptr) *error = reason;
  return false;
}

bool InstanceService::copyContent(const std::string& from, const std::string& to) const {
  FileError error;
  return Platform::current().files->copy({from, contentFolders()}, to, ExistingItem::fail,
                                         &error) ||
         shouldProceedAfterError(error, from, to);
}

// A link that leads elsewhere is nobody's content and may come along as the link that it is.
bool InstanceService::copyAsGiven(const std::string& from, const std::string& to) const {
  return copyContent(from, to) || (!hasContent(from) && copyItem(from, to));
}

bool InstanceService::hasContent(const std::string& path) const {
  return Platform::current().files->hasContent({path, contentFolders()});
}

void InstanceService::setInstallPackage(const std::string& package) {
  _pathToInstallPackage = package;
}

std::vector<std::string> InstanceService::contentFolders() const {
  std::vector<std::string> folders;
  if (_pathToRcphome)
    folders.push_back(InstallUtil::getBundlePath(*_pathToRcphome).value_or(*_pathToRcphome));
  if (_pathToInstallPackage) {
    folders.push_back(*_pathToInstallPackage);
    folders.push_back(path::appendingComponent(*_pathToInstallPackage, "../deploy"));
  }
  return folders;
}

bool InstanceService::hasRcphomeFolder() const {
  return _pathToRcphome && Platform::current().files->isDirectory(*_pathToRcphome);
}

void InstanceService::takeFallbackRcphome() {
  const std::optional<std::string> product = Configuration().getPropertyValueForKey("productName");
  // The name is told for support only: the fixed home belongs to the one product that other
  // installers share.
  if (product)
    log(LogLevel::info, "The product name is: {}.", *product);
  else
    log(LogLevel::error, "The productName is nil!");
  _pathToRcphome = Platform::current().paths.fallbackRcpHome;
}

}  // namespace installer
