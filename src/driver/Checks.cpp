#include "driver/Checks.h"

#include "driver/PackageLoader.h"
#include "driver/RunState.h"
#include "driver/VersionGate.h"
#include "hotfix/instance/InstanceService.h"
#include "hotfix/util/InstallUtil.h"
#include "hotfix/workflow/HotfixPolicy.h"
#include "platform/Log.h"
#include "platform/Reported.h"

namespace installer {

namespace {

bool hasSupportedPaths() {
  const RunState& state = runState();
  log(LogLevel::info, "Check whether the unsupported characters are contained.");
  if (!InstallUtil::containUnSupportedCharacters(state._pathToInstallPackage) &&
      !InstallUtil::containUnSupportedCharacters(state._pathToInstallDestination))
    return true;
  InstallUtil::sendErrorMessage(ErrorCode::unsupportedCharacters, {});
  return false;
}

bool holdsInstance(const std::optional<std::string>& rcpHome) {
  if (!rcpHome || !reported::exists(*rcpHome)) return false;
  log(LogLevel::info, "Check the target platform under {}.", *rcpHome);
  return InstanceService(rcpHome).hasInstanceInstalled();
}

bool isInstalled(const std::optional<std::string>& rcpHome) {
  log(LogLevel::info, "Check whether the target platform is installed.");
  if (holdsInstance(rcpHome)) return true;
  const RunState& state = runState();
  std::vector<std::string> details = {state._pathToInstallDestination};
  if (const auto application = state._package.applicationName()) details.push_back(*application);
  InstallUtil::sendErrorMessage(ErrorCode::notInstalled, details);
  return false;
}

bool isStopped() {
  const RunState& state = runState();
  if (HotfixPolicy(state._pathToInstallPackage).isSkipRunningCheck()) return true;
  log(LogLevel::info, "Check whether platform is running.");
  const std::optional<std::string>& bundleName = state._package.bundleName;
  const std::optional<std::string> bundle = resolveBundle();
  if (!bundleName || !bundle || !InstallUtil::checkBundleIsRunning(*bundle)) return true;
  InstallUtil::sendErrorMessage(ErrorCode::applicationRunning, {*bundleName});
  log(LogLevel::info, "The target platform {} is running.", *bundleName);
  return false;
}

bool isNewEnough() {
  log(LogLevel::info, "Check the version of hotfix");
  return !isHigherHotfixVersionInstalled();
}

}  // namespace

std::optional<std::string> rcpHomePassingChecks() {
  const std::optional<std::string>& rcpHome = runState()._rcpHome;
  const bool passed = hasSupportedPaths() && isInstalled(rcpHome) && isStopped() && isNewEnough();
  return passed ? rcpHome : std::nullopt;
}

}  // namespace installer
