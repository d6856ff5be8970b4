#include "ctl/plan/PlanText.h"

#include <fmt/format.h>

#include <algorithm>

#include "ctl/Shown.h"
#include "ctl/plan/ChangeTexts.h"
#include "hotfix/util/ErrorCode.h"

namespace installer::ctl {

namespace {

using Kind = overlay::Change::Kind;
using State = PlannedCheck::State;

constexpr std::size_t kIndent = 14;  // columns of the terms on the left

class PlanText {
 public:
  PlanText(Plan& plan, const PlanDetail& detail, const Style& style)
      : _plan(plan), _detail(detail), _style(style) {}

  std::string run() {
    tellTarget();
    tellChecks();
    tellError();
    tellVersions();
    tellChanges();
    tellChildren();
    tellUnknown();
    tellEnd();
    return std::move(_text);
  }

 private:
  void term(std::string_view name, const std::string& meaning) {
    _text += entry(name, meaning, {_style.width, kIndent});
  }
  void head(std::string_view name) { _text += "\n" + _style.strong(name) + "\n"; }
  void line(const std::string& text) { _text += text + "\n"; }

  void tellTarget() {
    term("Package", shown(_plan.request().package));
    term("Instance", shown(_plan.bundle, "none"));
    term("", reasonText(_plan));
    term("Rcp home", shown(_plan.rcpHome, "unknown"));
    if (_plan.rcpHomeOfWorkflow)
      term("", fmt::format("what is changed lies below another one, {}",
                           shown(*_plan.rcpHomeOfWorkflow)));
    if (_plan.waitsForLauncher)
      term("", "a launcher is at work there; the run would wait for its end");
  }

  std::string stateText(State state) const {
    switch (state) {
      case State::passed:
        return _style.good("passed");
      case State::failed:
        return _style.bad("FAILED");
      case State::skipped:
        return "skipped";
      case State::notReached:
        break;
    }
    return "not reached";
  }

  void tellChecks() {
    head("Checks");
    for (const PlannedCheck& check : _plan.checks) {
      std::string text = stateText(check.state);
      for (const PlannedCheck::Value& value : check.values)
        text += fmt::format("; {} {}", value.name, shown(value.text, "none"));
      term("  " + check.name, text);
    }
  }

  void tellError() {
    if (_plan.errorCode == 0) return;
    head("Error");
    const auto* const known =
        std::find_if(kErrors.begin(), kErrors.end(), [&](const ErrorDescription& error) {
          return static_cast<int>(error.code) == _plan.errorCode;
        });
    std::string text = known != kErrors.end() ? std::string(known->meaning) : "unknown";
    for (const std::string& detail : _plan.errorDetails) text += "; " + shown(detail);
    term(fmt::format("  code {}", _plan.errorCode), text);
  }

  void tellVersions() {
    head("Version");
    term("  package", shown(_plan.packageVersion, "none"));
    term("  before", shown(_plan.versionBefore, "no hotfix"));
    term("  after", shown(_plan.versionAfter, "no hotfix"));
  }

  void tellChanges() {
    head("Changes");
    for (const overlay::Change& change : _plan.changes)
      if (_detail.all || !(isOfAttributes(change) || change.kind == Kind::rewritten)) tell(change);
    tellCounts();
  }

  void tellCounts() {
    const auto count = [&](Kind kind) {
      return std::count_if(_plan.changes.begin(), _plan.changes.end(),
                           [&](const overlay::Change& change) { return change.kind == kind; });
    };
    line(
        fmt::format("  {} created, {} replaced, {} removed, {} other owners or modes, {} written "
                    "again as they were",
                    count(Kind::created), count(Kind::replaced), count(Kind::removed),
                    count(Kind::attributes), count(Kind::rewritten)));
  }

  void tell(const overlay::Change& change) {
    std::string text = fmt::format("  {} {}", markOf(change.kind), shown(change.path));
    if (isOfAttributes(change))
      text += fmt::format(" ({} -> {})", statusText(*change.before), statusText(*change.after));
    else if (change.after)
      text += fmt::format(" ({})", statusText(*change.after));
    if (const auto source = sourceOf(change)) text += " from " + shown(*source);
    line(text);
    if (_detail.differences) tellDifference(change);
  }

  // Each line of it is one line.
  void tellDifference(const overlay::Change& change) {
    const Difference difference = differenceOf(_plan.tree(), change);
    if (!difference.text && !difference.reason.empty())
      return line(fmt::format("    ({})", difference.reason));
    std::string_view rest = difference.text ? std::string_view(*difference.text) : "";
    while (!rest.empty()) {
      const std::size_t end = std::min(rest.find('\n'), rest.size() - 1);
      line("    " + shown(rest.substr(0, end)));
      rest.remove_prefix(end + 1);
    }
  }

  void tellChildren() {
    head("Children");
    if (_plan.children().empty()) line("  none");
    for (const overlay::PlannedChild& child : _plan.children()) {
      std::string text = "  " + shown(child.command.executable);
      for (const std::string& argument : child.command.arguments)
        text += fmt::format(" \"{}\"", shown(argument));
      if (!child.refusal.empty()) text += fmt::format(" (cannot be started: {})", child.refusal);
      line(text);
    }
    line(fmt::format("  (taken to answer {}; what the launcher itself changes is not foreseen)",
                     _plan.request().assumed));
  }

  void tellUnknown() {
    if (_plan.unknown().empty()) return;
    head("Unknown");
    for (const std::string& path : _plan.unknown()) line("  " + shown(path));
    line("  (this user may not look there; root's run may find something else)");
  }

  void tellEnd() {
    const bool installs = _plan.status == 0;
    line("");
    const std::string_view proviso = _plan.unknown().empty() ? "" : ", as far as can be told";
    term("Exit status", fmt::format("{}: {}{}", _plan.status,
                                    installs ? _style.good("the hotfix would be installed")
                                             : _style.bad("the hotfix would not be installed"),
                                    proviso));
  }

  Plan& _plan;
  const PlanDetail& _detail;
  const Style& _style;
  std::string _text;
};

}  // namespace

std::string reasonText(const Plan& plan) {
  const std::string file = shown(plan.registration, "no file");
  switch (plan.reason) {
    case BundleReason::severalInstances:
      return "the package allows several instances: it is the one in the destination";
    case BundleReason::registered:
      return fmt::format("{} names it", file);
    case BundleReason::notRegistered:
      return fmt::format("{} names none: it is the one in the destination", file);
    case BundleReason::registeredOneIsMissing:
      return fmt::format("what {} names is not there: it is the one in the destination", file);
    case BundleReason::none:
      break;
  }
  return "the package does not tell which bundle it is for";
}

std::string planText(Plan& plan, const PlanDetail& detail, const Style& style) {
  return PlanText(plan, detail, style).run();
}

}  // namespace installer::ctl
