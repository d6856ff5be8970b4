#include "ctl/plan/Plan.h"

#include <utility>

#include "ctl/QuietPlatform.h"
#include "ctl/plan/PlannedChecks.h"
#include "driver/LauncherWait.h"
#include "driver/PackageLoader.h"
#include "driver/RunState.h"
#include "hotfix/base/Path.h"
#include "hotfix/driver/Installer.h"
#include "hotfix/formats/RegisterFile.h"
#include "hotfix/platform/PropertyListFile.h"
#include "hotfix/util/InstallUtil.h"
#include "instance/InstanceLayout.h"
#include "instance/ProvisioningCommand.h"
#include "platform/Exists.h"
#include "platform/ProcessTable.h"
#include "platform/UserContext.h"
#include "platform/overlay/KeptOutput.h"

namespace installer::ctl {

namespace {

std::vector<std::string> commandLineOf(const Command& command) {
  std::vector<std::string> line = {command.executable};
  line.insert(line.end(), command.arguments.begin(), command.arguments.end());
  return line;
}

std::string registrationOf(const std::string& bundleName) {
  return path::appendingComponent(RegisterFile(bundleName).getRegisterDirectory(),
                                  "framework.plist");
}

}  // namespace

std::optional<std::string> recordedVersionOf(const std::string& rcpHome) {
  const auto info = PropertyList::readDictionary(InstanceLayout::installInfo(rcpHome));
  return info ? PropertyList::textForKey(*info, "hotfixVersion") : std::nullopt;
}

Plan::Plan(const PlanRequest& request, const overlay::Maker& maker)
    : _request(request), _platform(Platform::current(), maker) {
  _platform.noted.onStart([this](const Command& command) { answerAsLauncher(command); });
  {
    const ScopedPlatform played(_platform);
    play();
    versionAfter = recordedVersion();
  }
  versionBefore = recordedVersion();
  lookAtProcesses(maker.user);
  changes = overlay::changesIn(_platform.overlay.tree());
  _unknown = _platform.overlay.unknown();
}

void Plan::play() {
  std::vector<std::string> arguments = {"HotfixInstaller", _request.package, _request.destination};
  if (_request.rcpData) arguments.insert(arguments.end(), {"-rcpdata", *_request.rcpData});
  {
    overlay::KeptOutput kept;
    status = runInstaller(arguments);
    output = kept.take();
  }
  log = _platform.lines.lines();
  findBundle();
  readRecord();
  checks = plannedChecks(*this);
}

// What the launcher changes in the instance is its own business; of a provisioning it always
// leaves its answer.
void Plan::answerAsLauncher(const Command& command) {
  if (!ProvisioningCommand::launcherIn(commandLineOf(command))) return;
  const std::string home = path::deletingLastComponent(command.executable);
  // One that cannot be written is missed by the run, as it would be.
  (void)_platform.overlay.write(InstanceLayout::provisioningResult(home),
                                "rc=" + std::to_string(_request.assumed) + "\n");
}

void Plan::findBundle() {
  const RunState& state = runState();
  rcpHome = state._rcpHome;
  if (state._rcpHomeOfWorkflow != rcpHome) rcpHomeOfWorkflow = state._rcpHomeOfWorkflow;
  packageVersion = state._package.version;
  const std::optional<std::string>& name = state._package.bundleName;
  if (!name) return;
  bundle = resolveBundle();
  if (state._package.allowMultiInstance) {
    reason = BundleReason::severalInstances;
    return;
  }
  registration = registrationOf(*name);
  const std::optional<std::string> registered = RegisterFile(*name).getProductPath();
  if (!registered)
    reason = BundleReason::notRegistered;
  else
    reason = exists(registered) ? BundleReason::registered : BundleReason::registeredOneIsMissing;
}

void Plan::readRecord() {
  const auto record = InstallUtil::getErrorMessage();
  if (!record) return;
  const auto* const code = record->find("ERROR_CODE");
  const auto* const number = code != nullptr ? code->as<std::int64_t>() : nullptr;
  if (number != nullptr && std::in_range<int>(*number)) errorCode = static_cast<int>(*number);
  const auto* const details = record->find("ERROR_DETAILS");
  if (details == nullptr || details->as<PropertyList::Array>() == nullptr) return;
  for (const PropertyList::Value& detail : *details->as<PropertyList::Array>())
    if (const auto* text = detail.as<std::string>()) errorDetails.push_back(*text);
}

std::optional<std::string> Plan::recordedVersion() const {
  return workedOn() ? recordedVersionOf(*workedOn()) : std::nullopt;
}

// Asked of the real table: the played run sees no launcher, for it would wait for its end.
void Plan::lookAtProcesses(uid_t user) {
  const QuietPlatform quiet;
  ProcessTable& processes = *Platform::current().processes;
  const auto isAtWork = [&](const std::string& home) {
    return isLauncherAtWork(home, processes, user);
  };
  waitsForLauncher =
      rcpHome && (isAtWork(*rcpHome) || (rcpHomeOfWorkflow && isAtWork(*rcpHomeOfWorkflow)));
  // Root sees here what its run will see.
  const bool isRoot = Platform::current().users->effectiveUserId() == 0;
  if (!isRoot && _platform.hasAskedForProcesses() && !processes.seesAll())
    tree().noteUnknown("the processes of other users");
}

}  // namespace installer::ctl
