#include "driver/VersionGate.h"

#include "driver/RunState.h"
#include "hotfix/base/Path.h"
#include "hotfix/instance/InstanceService.h"
#include "hotfix/util/InstallUtil.h"
#include "platform/Log.h"
#include "workflow/HotfixPackage.h"

namespace installer {

bool isHigherHotfixVersionInstalled() {
  const RunState& state = runState();
  const std::optional<std::string> current = state.property("version");
  const std::optional<std::string> installed =
      InstanceService(state.property("rcpHome")).getCurrentHotfixVersion();
  log(LogLevel::info, "Current hotfix version: {}.", orNull(current));
  log(LogLevel::info, "Installed hotfix version: {}.", orNull(installed));
  if (!current || !installed || *current >= *installed) return false;
  log(LogLevel::error, "Higher version hotfix has been installed.");
  constexpr int kHigherInstalled = 7;
  // A version was found, so the package names the instance.
  InstallUtil::sendErrorMessage(
      kHigherInstalled,
      {path::appendingComponent(state._pathToInstallDestination,
                                *HotfixPackage::applicationName(state._properties))});
  return true;
}

bool isOtherHotfixVersionInstalled() {
  return InstanceService(runState().property("rcpHome")).getCurrentHotfixVersion().has_value();
}

}  // namespace installer
