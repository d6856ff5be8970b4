#include "workflow/HotfixRemoval.h"

#include <cstdio>

#include "hotfix/util/InstallUtil.h"
#include "instance/InstanceLayout.h"
#include "instance/ProvisioningCommand.h"
#include "instance/ProvisioningRun.h"
#include "platform/Exists.h"
#include "platform/Log.h"
#include "platform/Reported.h"

namespace installer {

namespace {

// The graphical installer reads these lines.
template <class... Arguments>
void print(fmt::format_string<Arguments...> format, Arguments&&... arguments) {
  const std::string line = fmt::format(format, std::forward<Arguments>(arguments)...) + "\n";
  (void)std::fwrite(line.data(), 1, line.size(), stdout);  // a closed output loses the line alone
  (void)std::fflush(stdout);                               // here too
}

constexpr const char* kMissing =
    "File {} was not found. Provisioning process failed to launch or was terminated before status "
    "could be determined.";

}  // namespace

HotfixRemoval::HotfixRemoval(const std::string& pathToRcphome, const std::string& pathToRcpData,
                             HandOver handOver)
    : _pathToRcpHome(pathToRcphome),
      _pathToRcpData(pathToRcpData),
      _instance(pathToRcphome, pathToRcpData),
      _handOver(handOver) {}

bool HotfixRemoval::copyUninstallManifest() {
  const std::string manifest = InstanceLayout::uninstallManifest(_pathToRcpHome);
  if (!exists(manifest)) {
    log(LogLevel::error, kMissing, manifest);
    print(kMissing, manifest);
    return false;
  }
  if (!_instance.copyUpdateManifest(manifest, std::nullopt)) {
    const std::string target(InstanceLayout::kUpdateManifest);
    log(LogLevel::error,
        "File {} not found. Provisioning process failed to launch or was terminated before status "
        "could be determined.",
        target);
    print(kMissing, target);
    return false;
  }
  (void)reported::remove(manifest);  // one that stays stops nothing
  return true;
}

void HotfixRemoval::startProvisioning() {
  _instance.removeProvisionRCFile();
  log(LogLevel::info, "Launch platform to uninstall provisioned features...");
  const std::string launcher = InstanceLayout::launcher(_pathToRcpHome);
  const std::vector<std::string> arguments = ProvisioningCommand::arguments(
      ProvisioningCommand::kUpdate, InstallUtil::getCurrentLocale(), _pathToRcpData);
  // Twice on purpose, over the same result file.
  runProvisioning(launcher, arguments);
  runProvisioning(launcher, arguments);
}

void HotfixRemoval::removeHotfixReceipt() {
  InstallUtil::removeReceipt(_instance.getInstalledHotfixBundleID());
}

void HotfixRemoval::clearRecords() {
  _instance.removeProvisionRCFile();
  print("The provisioning operations have completed successfully.");
  removeHotfixReceipt();
  _instance.updatePermissions(_handOver == HandOver::everything, _pathToRcpData);
  _instance.removeHotfixSkipRunningCheckProperty();
  _instance.deleteInstalledHotfixBundleID();
}

bool HotfixRemoval::uninstallOldHotfix() {
  if (!copyUninstallManifest()) return false;
  _instance.backupInstallManifest();
  _instance.updateProvisionManifestVersion(InstallUtil::generateNewManifestVersion());
  startProvisioning();
  // At a power cut the features must not outlive the record of them.
  (void)reported::flush(_pathToRcpHome);  // without it the removal counts all the same
  _instance.updateHotfixVersion(std::nullopt);
  if (!provisioningSucceeded(_instance, _pathToRcpHome, _pathToRcpData)) {
    constexpr const char* kUnexpected =
        "Unexpected results have occurred during the provisioning operation. For additional "
        "information, please refer to the logs.";
    log(LogLevel::error, "{}", kUnexpected);
    print("{}", kUnexpected);
    return false;
  }
  clearRecords();
  return true;
}

}  // namespace installer
