#include <algorithm>

#include "hotfix/formats/Properties.h"
#include "hotfix/instance/InstanceService.h"
#include "hotfix/util/InstallUtil.h"
#include "hotfix/util/StringUtil.h"
#include "instance/InstanceLayout.h"
#include "platform/FileManager.h"
#include "platform/Log.h"
#include "platform/Reported.h"

namespace installer {

namespace {

constexpr const char* kVersion = "version";
constexpr const char* kHotfixVersion = "hotfixVersion";
constexpr const char* kSkipRunningCheck = "SKIPRUNNINGCHECK";
constexpr const char* kBundleID = "installedHotfixBundleID";

// The record of the instance. That one is there but cannot be read is told, so that nobody takes
// the instance for a fresh one.
Properties recordIn(const std::string& rcpHome) {
  Properties record(InstanceLayout::installInfo(rcpHome));
  reported::tellUnreadable(record.readError());
  return record;
}

bool isMissing(const Properties& record) {
  return record.readError() && record.readError()->code == FileError::kMissing;
}

// What stands between the first and the second "_" of a base plug-in folder's name.
std::string versionInName(const std::string& name) {
  const std::size_t begin = name.find('_') + 1;
  return name.substr(begin, name.find('_', begin) - begin);
}

}  // namespace

bool InstanceService::hasInstanceInstalled() const {
  return _pathToRcphome && reported::exists(InstanceLayout::installManifest(*_pathToRcphome));
}

std::optional<std::string> InstanceService::getBaseVersion() const {
  if (!_pathToRcphome) return std::nullopt;
  const auto names = Platform::current().files->list(InstanceLayout::plugins(*_pathToRcphome),
                                                     InstanceLayout::kBasePlugin);
  if (!names) return std::nullopt;
  std::optional<std::string> best;
  for (const std::string& name : *names) best = std::max(best, std::optional(versionInName(name)));
  return best;
}

std::optional<std::string> InstanceService::getInstalledTargetVersion() const {
  if (!_pathToRcphome) return std::nullopt;
  const std::optional<std::string> bundle = InstallUtil::getBundlePath(*_pathToRcphome);
  if (!bundle) return std::nullopt;
  return Properties(InstanceLayout::bundleInfo(*bundle))
      .getPropertyForKey("CFBundleShortVersionString");
}

std::optional<std::string> InstanceService::installInfoValue(const std::string& key) const {
  if (!_pathToRcphome) return std::nullopt;
  return recordIn(*_pathToRcphome).getPropertyForKey(key);
}

void InstanceService::storeInstallInfo(const std::string& key,
                                       const std::optional<std::string>& value) {
  if (!_pathToRcphome) return;
  Properties record = recordIn(*_pathToRcphome);
  if (isMissing(record)) record = Properties();
  (void)record.setProperty(value, key);  // refused by a record that can not be read
  const std::string file = InstanceLayout::installInfo(*_pathToRcphome);
  (void)record.savePropertiesToFile(file);  // goes unnoticed but for the line of the file layer
}

void InstanceService::changeInstallInfo(const std::string& key,
                                        const std::optional<std::string>& value) {
  if (!_pathToRcphome) return;
  Properties record(InstanceLayout::installInfo(*_pathToRcphome));
  if (!record.setProperty(value, key)) return;
  (void)record.savePropertiesToFile(std::nullopt);  // as above
}

std::optional<std::string> InstanceService::getInstalledVersion() const {
  if (!_pathToRcphome) return std::nullopt;
  log(LogLevel::info, "Get installInfo: {}", InstanceLayout::installInfo(*_pathToRcphome));
  return installInfoValue(kVersion);
}

void InstanceService::setInstalledVersion(const std::optional<std::string>& version) {
  if (version) storeInstallInfo(kVersion, version);
}

void InstanceService::updateHotfixVersion(const std::optional<std::string>& version) {
  storeInstallInfo(kHotfixVersion, version);
}

std::optional<std::string> InstanceService::getCurrentHotfixVersion() const {
  return installInfoValue(kHotfixVersion);
}

bool InstanceService::isHotfixApplied() const {
  return getCurrentHotfixVersion().has_value();
}

void InstanceService::saveHotfixSkipRunningCheckProperty(bool skip) {
  storeInstallInfo(kSkipRunningCheck, StringUtil::boolToString(skip));
}

bool InstanceService::isHotfixInstallWithSkipRunningCheck() const {
  if (!_pathToRcphome) return false;
  const Properties record = recordIn(*_pathToRcphome);
  if (record.readError()) return false;
  // A file without the flag counts as one that says true, on purpose.
  return !record.hasPropertyForKey(kSkipRunningCheck) ||
         record.getPropertyForKey(kSkipRunningCheck) == "true";
}

void InstanceService::removeHotfixSkipRunningCheckProperty() {
  changeInstallInfo(kSkipRunningCheck, std::nullopt);
}

void InstanceService::saveHotfixBundleID(const std::optional<std::string>& bundleID) {
  changeInstallInfo(kBundleID, bundleID);
}

std::optional<std::string> InstanceService::getInstalledHotfixBundleID() const {
  return installInfoValue(kBundleID);
}

void InstanceService::deleteInstalledHotfixBundleID() {
  saveHotfixBundleID(std::nullopt);
}

}  // namespace installer
