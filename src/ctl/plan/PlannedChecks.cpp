#include "ctl/plan/PlannedChecks.h"

#include <algorithm>
#include <string_view>

#include "driver/RunState.h"
#include "hotfix/util/ErrorCode.h"
#include "instance/InstanceLayout.h"

namespace installer::ctl {

namespace {

using State = PlannedCheck::State;

constexpr std::string_view kProcess = ">>>> current is ";

bool says(const Plan& plan, std::string_view line) {
  return std::any_of(plan.log.begin(), plan.log.end(),
                     [&](const overlay::PlannedLine& one) { return one.text == line; });
}

// `begun` is what the run says before the check. A record that comes behind the checks is
// another's.
State stateOf(const Plan& plan, std::string_view begun, ErrorCode code) {
  if (!says(plan, begun)) return says(plan, "Success") ? State::skipped : State::notReached;
  const bool hasFailed = says(plan, "Not success");
  return hasFailed && plan.errorCode == static_cast<int>(code) ? State::failed : State::passed;
}

// The process that the check has stopped at.
std::optional<std::string> runningProcess(const Plan& plan) {
  std::optional<std::string> process;
  for (const overlay::PlannedLine& line : plan.log)
    if (line.text.starts_with(kProcess))
      process = line.text.substr(kProcess.size(), line.text.size() - kProcess.size() - 1);
  return process;
}

PlannedCheck charactersCheck(const Plan& plan) {
  return {
      "characters",
      stateOf(plan, "Check whether the unsupported characters are contained.",
              ErrorCode::unsupportedCharacters),
      {{"package", plan.request().package}, {"destination", runState()._pathToInstallDestination}}};
}

PlannedCheck instanceCheck(const Plan& plan) {
  const auto manifest =
      plan.rcpHome ? std::optional(InstanceLayout::installManifest(*plan.rcpHome)) : std::nullopt;
  return {"instance",
          stateOf(plan, "Check whether the target platform is installed.", ErrorCode::notInstalled),
          {{"rcpHome", plan.rcpHome}, {"installManifest", manifest}}};
}

PlannedCheck runningCheck(const Plan& plan) {
  PlannedCheck check{
      "running",
      stateOf(plan, "Check whether platform is running.", ErrorCode::applicationRunning),
      {{"bundle", plan.bundle}}};
  // Without a line of its own it was left out, if the next one was reached.
  if (check.state == State::notReached && says(plan, "Check the version of hotfix"))
    check.state = State::skipped;
  if (check.state == State::failed) check.values.push_back({"process", runningProcess(plan)});
  return check;
}

PlannedCheck versionCheck(const Plan& plan) {
  std::optional<std::string> installed;
  constexpr std::string_view kInstalled = "Installed hotfix version: ";
  for (const overlay::PlannedLine& line : plan.log)
    if (line.text.starts_with(kInstalled) && line.text != "Installed hotfix version: (null).")
      installed = line.text.substr(kInstalled.size(), line.text.size() - kInstalled.size() - 1);
  return {"version",
          stateOf(plan, "Check the version of hotfix", ErrorCode::higherHotfixInstalled),
          {{"package", plan.packageVersion}, {"installed", installed}}};
}

}  // namespace

std::vector<PlannedCheck> plannedChecks(const Plan& plan) {
  return {charactersCheck(plan), instanceCheck(plan), runningCheck(plan), versionCheck(plan)};
}

}  // namespace installer::ctl
