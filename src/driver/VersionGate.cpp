#include "driver/VersionGate.h"

#include "driver/RunState.h"
#include "hotfix/instance/InstanceService.h"
#include "hotfix/util/InstallUtil.h"
#include "platform/Log.h"

namespace installer {

bool isHigherHotfixVersionInstalled() {
  const RunState& state = runState();
  const std::optional<std::string>& current = state._package.version;
  const std::optional<std::string> installed =
      InstanceService(state._rcpHome).getCurrentHotfixVersion();
  log(LogLevel::info, "Current hotfix version: {}.", orNull(current));
  log(LogLevel::info, "Installed hotfix version: {}.", orNull(installed));
  if (!current || !installed || *current >= *installed) return false;
  log(LogLevel::error, "Higher version hotfix has been installed.");
  std::vector<std::string> details;
  if (const auto bundle = state._package.bundleIn(state._pathToInstallDestination))
    details.push_back(*bundle);
  InstallUtil::sendErrorMessage(ErrorCode::higherHotfixInstalled, details);
  return true;
}

bool isOtherHotfixVersionInstalled() {
  return InstanceService(runState()._rcpHome).getCurrentHotfixVersion().has_value();
}

}  // namespace installer
