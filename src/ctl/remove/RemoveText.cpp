#include "ctl/remove/RemoveText.h"

#include <fmt/format.h>

#include "ctl/Shown.h"

namespace installer::ctl {

namespace {

constexpr std::size_t kFacts = 14;  // where they begin

// What is left to do after a removal.
constexpr std::string_view kWayBack =
    "To go back to an older hotfix, install its package now; it brings its own extras, settings "
    "and "
    "key stores. Settings and key stores of the product itself come back with the product's own "
    "installer only.";

std::string fact(std::string_view name, std::string_view text, const Style& style) {
  return entry(fmt::format("  {}", name), text, {style.width, kFacts});
}

std::string resultOf(const RemovalReport& report, const Style& style) {
  if (report.outcome == RemovalOutcome::removed) return style.good("the hotfix was removed");
  if (report.outcome == RemovalOutcome::forgotten)
    return style.warning("the record of it was deleted; what it installed stays");
  return style.bad(shown(report.reason));
}

std::string hotfixOf(const std::optional<InstalledHotfix>& hotfix) {
  return hotfix ? fmt::format("{} ({})", shown(hotfix->version),
                              shown(hotfix->identifier, "its package's identifier is not recorded"))
                : "none is recorded";
}

Json jsonOf(const std::optional<InstalledHotfix>& hotfix) {
  if (!hotfix) return nullptr;
  return {{"version", hotfix->version}, {"identifier", ctl::jsonOf(hotfix->identifier)}};
}

Json jsonOf(const Remainder& remainder) {
  return {{"name", remainder.name}, {"text", remainder.text}, {"paths", remainder.paths}};
}

Json afterOf(const RemovalReport& report) {
  if (!report.after) return nullptr;
  const auto& answer = report.after->provisioning;
  return {{"hotfix", jsonOf(report.after->hotfix)},
          {"launcher", answer ? ctl::jsonOf(answer->code) : Json(nullptr)}};
}

std::string remaindersOf(const RemovalReport& report, const Style& style) {
  std::string text = "\n" + style.strong("What stays") + "\n";
  for (const Remainder& remainder : report.remainders) {
    text += broken(remainder.text, {style.width, 2}, "  ");
    for (const std::string& path : remainder.paths) text += "    " + shown(path) + "\n";
  }
  text += "\n" + style.strong("What to do") + "\n";
  return text + broken(kWayBack, {style.width, 2}, "  ");
}

}  // namespace

std::string_view nameOf(RemovalOutcome outcome) {
  switch (outcome) {
    case RemovalOutcome::removed:
      return "removed";
    case RemovalOutcome::nothingInstalled:
      return "nothing-installed";
    case RemovalOutcome::refused:
      return "refused";
    case RemovalOutcome::noInstance:
      return "no-instance";
    case RemovalOutcome::notReadable:
      return "not-readable";
    case RemovalOutcome::applicationRunning:
      return "application-running";
    case RemovalOutcome::atWork:
      return "at-work";
    case RemovalOutcome::failed:
      return "failed";
    case RemovalOutcome::interrupted:
      return "interrupted";
    case RemovalOutcome::notAllowed:
      return "not-allowed";
    case RemovalOutcome::forgotten:
      break;
  }
  return "forgotten";
}

std::string textOf(const RemovalReport& report, const Style& style) {
  const InstanceReport& before = report.before;
  std::string text =
      broken(shown(before.bundle.value_or(before.place.rcpHome)), {style.width, 2}, "");
  text += fact("Hotfix", hotfixOf(before.hotfix), style);
  text += fact("Result", resultOf(report, style), style);
  if (report.after) text += fact("Now", hotfixOf(report.after->hotfix), style);
  for (const std::string& error : report.errors) text += fact("Error", shown(error), style);
  if (!report.remedy.empty()) text += fact("Remedy", shown(report.remedy), style);
  return report.outcome == RemovalOutcome::removed ? text + remaindersOf(report, style) : text;
}

std::string lineOf(const RemovalReport& report) {
  return report.remedy.empty() ? report.reason : report.reason + " " + report.remedy;
}

Json documentOf(const RemovalReport& report, int status) {
  Json remainders = Json::array();
  for (const Remainder& remainder : report.remainders) remainders.push_back(jsonOf(remainder));
  const auto textOrNull = [](const std::string& text) {
    return text.empty() ? Json(nullptr) : Json(text);
  };
  return {{"schema", "hotfixctl/remove/1"},
          {"status", status},
          {"outcome", nameOf(report.outcome)},
          {"reason", textOrNull(report.reason)},
          {"remedy", textOrNull(report.remedy)},
          {"rcpHome", report.before.place.rcpHome},
          {"rcpData", report.rcpData},
          {"bundle", ctl::jsonOf(report.before.bundle)},
          {"agreement", nameOf(report.agreement)},
          {"hotfix", jsonOf(report.before.hotfix)},
          {"after", afterOf(report)},
          {"stays", std::move(remainders)},
          {"errors", report.errors},
          {"output", report.output}};
}

}  // namespace installer::ctl
