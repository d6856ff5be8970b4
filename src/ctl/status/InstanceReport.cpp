#include "ctl/status/InstanceReport.h"

#include <fmt/format.h>

#include "ctl/status/Doctor.h"
#include "hotfix/base/Path.h"
#include "hotfix/formats/JavaProperties.h"
#include "hotfix/instance/InstanceService.h"
#include "hotfix/util/InstallUtil.h"
#include "instance/InstanceLayout.h"
#include "platform/FileManager.h"
#include "platform/LockLook.h"
#include "platform/Platform.h"

namespace installer::ctl {

namespace {

std::string productOf(const std::string& bundle) {
  const std::string name = path::lastComponent(bundle);
  return name.substr(0, name.find('.'));
}

std::optional<ProvisioningAnswer> lastAnswer(const std::string& rcpHome,
                                             const InstanceService& instance) {
  const std::string file = InstanceLayout::provisioningResult(rcpHome);
  if (!Platform::current().files->exists(file)) return std::nullopt;
  return ProvisioningAnswer{JavaProperties(file).getPropertyForKey("rc"),
                            instance.getProvisioningResult() == 0};
}

// Why nothing can be told of a home that is there; nullopt when something can.
std::optional<std::string> obstacle(const std::string& rcpHome, bool& isAtWork) {
  FileError error;
  isAtWork = isFolderLocked(rcpHome, &error);
  const bool isClosed = !isAtWork && error.code == FileError::kClosed;
  return isClosed ? std::optional(error.description) : std::nullopt;
}

void readFacts(const InstanceService& instance, InstanceReport& report) {
  report.applicationVersion = instance.getInstalledTargetVersion();
  report.baseVersion = instance.getBaseVersion();
  report.recordedVersion = instance.getInstalledVersion();
  if (auto version = instance.getCurrentHotfixVersion())
    report.hotfix = InstalledHotfix{*version, instance.getInstalledHotfixBundleID()};
  report.provisioning = lastAnswer(report.place.rcpHome, instance);
}

void judgeProvisioning(InstanceReport& report) {
  const auto& answer = report.provisioning;
  // While a run is at work the launcher's answer is not its last word.
  if (!answer || answer->succeeded || report.isAtWork) return;
  const std::string told =
      answer->code ? fmt::format("answered {}", *answer->code) : "left no answer";
  report.findings.push_back(
      {"provisioning-failed", fmt::format("The launcher {} when it was last started.", told),
       fmt::format("Its logs, in \"{}\" among others, tell why. Installing a repaired package is "
                   "all it takes.",
                   report.place.rcpHome)});
}

InstanceState stateOf(const InstanceReport& report) {
  if (!report.findings.empty()) return InstanceState::needsAttention;
  return report.hotfix ? InstanceState::hotfixInstalled : InstanceState::noHotfix;
}

}  // namespace

InstanceReport reportOn(const InstancePlace& place, bool doctor, QuietPlatform& quiet) {
  InstanceReport report;
  report.place = place;
  report.bundle = InstallUtil::getBundlePath(place.rcpHome);
  if (report.bundle) report.product = productOf(*report.bundle);
  FileError error;
  if (!Platform::current().files->exists(place.rcpHome, &error)) {
    const bool isMissing = error.code == FileError::kMissing;
    report.state = isMissing ? InstanceState::noInstance : InstanceState::notReadable;
    if (!isMissing) report.reason = error.description;
    return report;
  }
  const auto instance = InstanceService::existing(place.rcpHome);
  if (!instance) return report;
  quiet.forgetErrors();
  report.reason = obstacle(place.rcpHome, report.isAtWork);
  if (!report.reason && !instance->hasInstanceInstalled() && quiet.errors().empty()) return report;
  if (!report.reason) readFacts(*instance, report);
  if (!report.reason && !quiet.errors().empty()) report.reason = quiet.errors().front();
  if (report.reason) {
    report.state = InstanceState::notReadable;
    return report;
  }
  judgeProvisioning(report);
  if (doctor && !report.isAtWork)
    examine(place.rcpHome, report.hotfix.has_value(), report.findings);
  report.state = stateOf(report);
  return report;
}

}  // namespace installer::ctl
