#include "driver/InstallPaths.h"

#include "driver/ErrorStatus.h"
#include "driver/RunState.h"
#include "driver/VersionGate.h"
#include "hotfix/instance/InstanceService.h"
#include "hotfix/util/InstallUtil.h"
#include "hotfix/workflow/Hotfix.h"
#include "hotfix/workflow/HotfixUninstall.h"
#include "instance/InstanceLayout.h"
#include "platform/Log.h"
#include "platform/Reported.h"

namespace installer {

namespace {

std::optional<std::string> launcherOf(const std::optional<std::string>& rcpHome) {
  if (!rcpHome) return std::nullopt;
  return InstanceLayout::launcher(*rcpHome);
}

bool clientHasStartedOn(const std::optional<std::string>& rcpData) {
  return rcpData && reported::exists(InstanceLayout::workspaceFlag(*rcpData));
}

void removeOldHotfix(const std::string& rcpHome, const std::optional<std::string>& rcpData) {
  if (!isOtherHotfixVersionInstalled()) return;
  log(LogLevel::info, "Found another hot fix, uninstall it before installing the new hot fix");
  HotfixUninstall removal(rcpHome, rcpData);
  (void)removal.uninstallOldHotfix();  // the new hotfix is installed all the same
}

void updateUntouchedInstance(const std::string& rcpHome,
                             const std::optional<std::string>& rcpData) {
  InstanceService service(rcpHome, rcpData);
  service.startProvisioningWithUpdate(InstanceLayout::launcher(rcpHome));
  service.updateInstallIDWithProvManVer();
}

}  // namespace

bool runSuccessPath(const std::string& rcpHome, const std::optional<std::string>& rcpData) {
  log(LogLevel::info, "Success");
  removeOldHotfix(rcpHome, rcpData);
  updateUntouchedInstance(rcpHome, rcpData);
  const RunState& state = runState();
  Hotfix hotfix(state._pathToInstallPackage, state._pathToInstallDestination, rcpData);
  if (!clientHasStartedOn(rcpData)) {
    log(LogLevel::info,
        "Hot fix workspace flag file is missing, launching install new hotfix twice");
    (void)hotfix.installNewHotfix();  // only the answer of the second run counts
  }
  return hotfix.installNewHotfix();
}

void runFailurePath(const std::optional<std::string>& rcpHome,
                    const std::optional<std::string>& rcpData) {
  log(LogLevel::info, "Not success");
  InstanceService service(rcpHome, rcpData);
  const std::optional<std::string> launcher = launcherOf(rcpHome);
  service.startProvisioningWithCleanUp(launcher);
  service.updateInstallID(InstallUtil::generateNewManifestVersion());
  service.startProvisioningWithUpdate(launcher);
  service.updatePermissions(true, true);
  setHotfixErrorStatus(false);
}

void runLogCollection(const std::optional<std::string>& rcpHome,
                      const std::optional<std::string>& rcpData) {
  InstanceService(rcpHome, rcpData)
      .collectLogFiles(runState()._package.bundleName, "HOTFIX_INSTALL",
                       Platform::current().paths.traceFile);
}

}  // namespace installer
