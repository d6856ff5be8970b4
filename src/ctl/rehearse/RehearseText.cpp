#include "ctl/rehearse/RehearseText.h"

#include <fmt/format.h>

#include <algorithm>

#include "ctl/Endings.h"
#include "ctl/Shown.h"
#include "ctl/plan/ChangeTexts.h"
#include "hotfix/base/Path.h"

namespace installer::ctl {

namespace {

using Kind = overlay::Change::Kind;

constexpr std::size_t kIndent = 16;  // columns of the terms on the left

std::optional<std::string> versionIn(const InstanceFacts& facts) {
  const auto& hotfix = facts.report.hotfix;
  return hotfix ? std::optional(hotfix->version) : std::nullopt;
}

// Those that the other list lacks.
std::vector<Feature> without(const std::vector<Feature>& features,
                             const std::vector<Feature>& others) {
  std::vector<Feature> rest;
  std::copy_if(features.begin(), features.end(), std::back_inserter(rest),
               [&](const Feature& feature) {
                 return std::find(others.begin(), others.end(), feature) == others.end();
               });
  return rest;
}

class RehearsalText {
 public:
  RehearsalText(const RehearsalReport& report, const RehearsalRequest& request, bool all,
                const Style& style)
      : _report(report), _request(request), _all(all), _style(style) {}

  std::string run() {
    term("Package", shown(_request.package));
    term("Instance", shown(_report.bundle));
    term("", "rehearsed on a copy of it, which is gone; nothing of the machine was changed");
    tellResult();
    tellVersions();
    tellFeatures();
    tellChanges();
    return std::move(_text);
  }

 private:
  void term(std::string_view name, const std::string& meaning) {
    _text += entry(name, meaning, {_style.width, kIndent});
  }
  void head(std::string_view name) { _text += "\n" + _style.strong(name) + "\n"; }

  void tellResult() {
    const bool isInstalled = _report.outcome == RehearsalOutcome::installed;
    const auto& run = _report.run;
    const std::string words(run ? descriptionOf(run->ending).meaning : "it left no trace");
    term("Result", isInstalled ? _style.good(words) : _style.bad(words));
    if (run && run->cause) term("Cause", shown(run->cause->text));
    if (run && !isInstalled) term("Remedy", std::string(descriptionOf(run->ending).remedy));
    term("Exit status", std::to_string(_report.status.value_or(1)));
  }

  void tellVersion(std::string_view name, const std::optional<std::string>& before,
                   const std::optional<std::string>& after) {
    const std::string now = shown(after, "none");
    term(fmt::format("  {}", name),
         before == after ? now + ", as before" : shown(before, "none") + " -> " + now);
  }

  void tellVersions() {
    head("Before and after");
    const InstanceReport& before = _report.before->report;
    const InstanceReport& after = _report.after->report;
    tellVersion("hotfix", versionIn(*_report.before), versionIn(*_report.after));
    tellVersion("application", before.applicationVersion, after.applicationVersion);
    tellVersion("base", before.baseVersion, after.baseVersion);
  }

  void tell(std::string_view mark, const std::vector<Feature>& features) {
    for (const Feature& feature : features)
      _text += fmt::format("  {} {} {}\n", mark, shown(feature.identifier), shown(feature.version));
  }

  void tellFeatures() {
    head("Features");
    tell("+", without(_report.after->features, _report.before->features));
    tell("-", without(_report.before->features, _report.after->features));
    if (_report.after->features == _report.before->features) _text += "  as before\n";
  }

  void tellChanges() {
    head("Changes in the bundle");
    for (const RehearsedChange& change : _report.changes)
      if (_all || change.difference.kind != Kind::attributes) tell(change);
    const auto count = [&](Kind kind) {
      return std::count_if(
          _report.changes.begin(), _report.changes.end(),
          [&](const RehearsedChange& change) { return change.difference.kind == kind; });
    };
    _text += fmt::format("  {} created, {} replaced, {} removed, {} other owners or modes\n",
                         count(Kind::created), count(Kind::replaced), count(Kind::removed),
                         count(Kind::attributes));
    if (!_report.changedMeanwhile.empty())
      _text += broken(fmt::format("(Left out, for others have changed them in the instance "
                                  "meanwhile: {}.)",
                                  _report.changedMeanwhile.size()),
                      {_style.width, 2}, "  ");
    if (!_report.ownersAreKept)
      _text += broken("(Only root's rehearsal can give files to the user, as root's run does.)",
                      {_style.width, 2}, "  ");
  }

  void tell(const RehearsedChange& change) {
    const privately::Difference& one = change.difference;
    _text += fmt::format("  {} {}", markOf(one.kind), shown(one.path));
    if (one.kind == Kind::attributes)
      _text += fmt::format(" ({} -> {})", statusText(*one.before), statusText(*one.after));
    else if (one.after)
      _text += fmt::format(" ({})", statusText(*one.after));
    _text += "\n";
    if (change.text) tellText(*change.text);
  }

  // Each line of it is one line.
  void tellText(std::string_view rest) {
    while (!rest.empty()) {
      const std::size_t end = std::min(rest.find('\n'), rest.size() - 1);
      _text += "    " + shown(rest.substr(0, end)) + "\n";
      rest.remove_prefix(end + 1);
    }
  }

  const RehearsalReport& _report;
  const RehearsalRequest& _request;
  const bool _all;
  const Style& _style;
  std::string _text;
};

Json statusJson(const std::optional<overlay::Status>& status) {
  if (!status) return nullptr;
  return {{"kind", nameOf(status->kind)},
          {"mode", modeText(*status)},
          {"owner", status->owner},
          {"group", status->group}};
}

Json factsJson(const std::optional<InstanceFacts>& facts) {
  if (!facts) return nullptr;
  Json features = Json::array();
  for (const Feature& feature : facts->features)
    features.push_back({{"id", feature.identifier}, {"version", feature.version}});
  return {{"hotfix", jsonOf(versionIn(*facts))},
          {"applicationVersion", jsonOf(facts->report.applicationVersion)},
          {"baseVersion", jsonOf(facts->report.baseVersion)},
          {"features", std::move(features)}};
}

Json runJson(const std::optional<Run>& run) {
  if (!run) return nullptr;
  const EndingDescription& ending = descriptionOf(run->ending);
  return {{"ending", ending.name},
          {"meaning", ending.meaning},
          {"remedy", ending.remedy},
          {"errorCode", static_cast<int>(ending.code)},
          {"cause", run->cause ? Json(run->cause->text) : Json(nullptr)}};
}

}  // namespace

std::string_view nameOf(RehearsalOutcome outcome) {
  switch (outcome) {
    case RehearsalOutcome::installed:
      return "installed";
    case RehearsalOutcome::notInstalled:
      return "not-installed";
    case RehearsalOutcome::noInstance:
      return "no-instance";
    case RehearsalOutcome::notReadable:
      return "not-readable";
    case RehearsalOutcome::atWork:
      return "at-work";
    case RehearsalOutcome::interrupted:
      return "interrupted";
    case RehearsalOutcome::notPossible:
      break;
  }
  return "not-possible";
}

std::string textOf(const RehearsalReport& report, const RehearsalRequest& request, bool all,
                   const Style& style) {
  return RehearsalText(report, request, all, style).run();
}

Json documentOf(const RehearsalReport& report, const RehearsalRequest& request) {
  Json changes = Json::array();
  for (const RehearsedChange& change : report.changes) {
    const privately::Difference& one = change.difference;
    Json told = {{"path", one.path},
                 {"change", nameOf(one.kind)},
                 {"before", statusJson(one.before)},
                 {"after", statusJson(one.after)}};
    if (request.withDifferences) told["difference"] = jsonOf(change.text);
    changes.push_back(std::move(told));
  }
  return {{"schema", "hotfixctl/rehearse/1"},
          {"status", static_cast<int>(report.outcome)},
          {"outcome", nameOf(report.outcome)},
          {"reason", report.reason.empty() ? Json(nullptr) : Json(report.reason)},
          {"package", request.package},
          {"bundle", report.bundle.empty() ? Json(nullptr) : Json(report.bundle)},
          {"installerStatus", report.status ? Json(*report.status) : Json(nullptr)},
          {"run", runJson(report.run)},
          {"before", factsJson(report.before)},
          {"after", factsJson(report.after)},
          {"changes", std::move(changes)},
          {"changedMeanwhile", report.changedMeanwhile},
          {"ownersAreKept", report.ownersAreKept},
          {"output", report.output},
          {"left", jsonOf(report.left)}};
}

}  // namespace installer::ctl
