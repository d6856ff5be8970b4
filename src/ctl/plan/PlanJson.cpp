#include "ctl/plan/PlanJson.h"

#include "ctl/Endings.h"
#include "ctl/plan/ChangeTexts.h"
#include "ctl/plan/PlanText.h"

namespace installer::ctl {

namespace {

std::string_view wordFor(BundleReason reason) {
  switch (reason) {
    case BundleReason::severalInstances:
      return "severalInstances";
    case BundleReason::registered:
      return "registered";
    case BundleReason::notRegistered:
      return "notRegistered";
    case BundleReason::registeredOneIsMissing:
      return "registeredOneIsMissing";
    case BundleReason::none:
      break;
  }
  return "none";
}

std::string_view wordFor(PlannedCheck::State state) {
  switch (state) {
    case PlannedCheck::State::passed:
      return "passed";
    case PlannedCheck::State::failed:
      return "failed";
    case PlannedCheck::State::skipped:
      return "skipped";
    case PlannedCheck::State::notReached:
      break;
  }
  return "notReached";
}

Json instanceJson(const Plan& plan) {
  return {{"bundle", jsonOf(plan.bundle)},
          {"reason", wordFor(plan.reason)},
          {"registration", jsonOf(plan.registration)},
          {"rcpHome", jsonOf(plan.rcpHome)},
          {"rcpHomeOfWorkflow", jsonOf(plan.rcpHomeOfWorkflow)},
          {"waitsForLauncher", plan.waitsForLauncher}};
}

Json checksJson(const Plan& plan) {
  Json checks = Json::array();
  for (const PlannedCheck& check : plan.checks) {
    Json values = Json::object();
    for (const PlannedCheck::Value& value : check.values) values[value.name] = jsonOf(value.text);
    checks.push_back({{"name", check.name}, {"state", wordFor(check.state)}, {"values", values}});
  }
  return checks;
}

// What becomes of it is told in the words that tell it of a run.
Json errorJson(const Plan& plan) {
  Json error = {{"code", plan.errorCode}, {"details", plan.errorDetails}};
  const EndingDescription* const ending = descriptionOf(plan.errorCode);
  error["cause"] = ending ? Json(ending->name) : Json(nullptr);
  error["meaning"] = ending ? Json(ending->meaning) : Json(nullptr);
  error["remedy"] = ending ? Json(ending->remedy) : Json(nullptr);
  return error;
}

Json statusJson(const std::optional<overlay::Status>& status) {
  if (!status) return nullptr;
  return {{"kind", nameOf(status->kind)},
          {"mode", modeText(*status)},
          {"owner", status->owner},
          {"group", status->group}};
}

Json changesJson(Plan& plan, bool withDifferences) {
  Json changes = Json::array();
  for (const overlay::Change& change : plan.changes) {
    Json one = {{"path", change.path},
                {"change", nameOf(change.kind)},
                {"before", statusJson(change.before)},
                {"after", statusJson(change.after)},
                {"source", jsonOf(sourceOf(change))},
                {"foreseen", change.isForeseen()}};
    if (withDifferences) one["difference"] = jsonOf(differenceOf(plan.tree(), change).text);
    changes.push_back(std::move(one));
  }
  return changes;
}

Json childrenJson(const Plan& plan) {
  Json children = Json::array();
  for (const overlay::PlannedChild& child : plan.children())
    children.push_back({{"executable", child.command.executable},
                        {"arguments", child.command.arguments},
                        {"question", child.isQuestion},
                        {"refusal", child.refusal.empty() ? Json(nullptr) : Json(child.refusal)}});
  return children;
}

Json logJson(const Plan& plan) {
  Json lines = Json::array();
  for (const overlay::PlannedLine& line : plan.log)
    lines.push_back({{"level", static_cast<int>(line.level)}, {"text", line.text}});
  return lines;
}

}  // namespace

Json planJson(Plan& plan, bool withDifferences) {
  return {{"schema", "hotfixctl/plan/1"},
          {"package", plan.request().package},
          {"destination", plan.request().destination},
          {"rcpData", jsonOf(plan.request().rcpData)},
          {"assumed", plan.request().assumed},
          {"instance", instanceJson(plan)},
          {"checks", checksJson(plan)},
          {"error", errorJson(plan)},
          {"versions",
           {{"package", jsonOf(plan.packageVersion)},
            {"before", jsonOf(plan.versionBefore)},
            {"after", jsonOf(plan.versionAfter)}}},
          {"changes", changesJson(plan, withDifferences)},
          {"children", childrenJson(plan)},
          {"output", plan.output},
          {"log", logJson(plan)},
          {"unknown", plan.unknown()},
          {"status", plan.status}};
}

}  // namespace installer::ctl
