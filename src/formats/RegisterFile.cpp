#include "hotfix/formats/RegisterFile.h"

#include "hotfix/base/Path.h"
#include "platform/Log.h"
#include "platform/Platform.h"

namespace installer {

namespace {

constexpr const char* kFileName = "framework.plist";
constexpr const char* kOldInstallLocation = "oldInstallLocation";
constexpr const char* kHotfixVersion = "hotfixVersion";
constexpr const char* kPathToProduct = "pathToProduct";
constexpr const char* kRcpFolder = "rcp";

}  // namespace

RegisterFile::RegisterFile(const std::string& productName)
    : _registerDirectoryLocation(
          path::appendingComponent(Platform::current().paths.registrations, productName)),
      _properties(path::appendingComponent(_registerDirectoryLocation, kFileName)) {}

std::optional<std::string> RegisterFile::getOldInstallLocation() const {
  return _properties.getPropertyForKey(kOldInstallLocation);
}

std::optional<std::string> RegisterFile::getHotfixVersion() const {
  return _properties.getPropertyForKey(kHotfixVersion);
}

std::optional<std::string> RegisterFile::getPathToRcpHome() const {
  const std::optional<std::string> location = getOldInstallLocation();
  if (!location) return std::nullopt;
  return path::appendingComponent(*location, kRcpFolder);
}

std::optional<std::string> RegisterFile::getProductPath() const {
  return _properties.getPropertyForKey(kPathToProduct);
}

void RegisterFile::updateHotfixVersion(const std::optional<std::string>& version) {
  if (_properties.setProperty(version, kHotfixVersion))
    log(LogLevel::info, "Update CURRENT_HOTFIX_VERSION to {}.", orNull(version));
  else
    log(LogLevel::warning, "Fail to update CURRENT_HOTFIX_VERSION.");
  if (!_properties.savePropertiesToFile(std::nullopt))
    log(LogLevel::warning, "Fail to save CURRENT_HOTFIX_VERSION.");
}

}  // namespace installer
