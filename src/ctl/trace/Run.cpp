#include "ctl/trace/Run.h"

#include <array>

namespace installer::ctl {

namespace {

struct StepWords {
  StepKind kind;
  std::string_view name;
  std::string_view words;
};

constexpr std::array kSteps{
    StepWords{StepKind::readPackage, "read-package", "reads the package"},
    StepWords{StepKind::waitForInstaller, "wait-for-installer",
              "waits for another installation on the instance"},
    StepWords{StepKind::waitForLauncher, "wait-for-launcher",
              "waits for a launcher that was left behind"},
    StepWords{StepKind::checkPaths, "check-paths", "checks the characters of the paths"},
    StepWords{StepKind::checkInstance, "check-instance", "checks that there is an instance"},
    StepWords{StepKind::checkApplication, "check-application",
              "checks that the application does not run"},
    StepWords{StepKind::checkVersions, "check-versions", "compares the versions"},
    StepWords{StepKind::removeOlder, "remove-older", "removes the older hotfix"},
    StepWords{StepKind::updateUntouched, "update-untouched",
              "lets the launcher update the instance as it is"},
    StepWords{StepKind::bringFiles, "bring-files",
              "brings manifests, settings, key stores and extras"},
    StepWords{StepKind::provision, "provision", "lets the launcher install the features"},
    StepWords{StepKind::record, "record", "records the hotfix, restores permissions"},
    StepWords{StepKind::recover, "recover", "brings the instance back into a consistent state"},
    StepWords{StepKind::collectLogs, "collect-logs", "collects the logs"},
};

// They are found by their kind's number.
constexpr bool areInOrder() {
  for (std::size_t i = 0; i < kSteps.size(); ++i)
    if (static_cast<std::size_t>(kSteps[i].kind) != i) return false;
  return true;
}
static_assert(areInOrder());

}  // namespace

std::string_view nameOf(StepKind kind) {
  return kSteps.at(static_cast<std::size_t>(kind)).name;
}

std::string_view wordsOf(StepKind kind) {
  return kSteps.at(static_cast<std::size_t>(kind)).words;
}

std::optional<StepKind> stepNamed(std::string_view name) {
  for (const StepWords& step : kSteps)
    if (step.name == name) return step.kind;
  return std::nullopt;
}

}  // namespace installer::ctl
