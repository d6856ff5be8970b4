#include "ctl/install/Result.h"

#include <fmt/format.h>

#include "ctl/Shown.h"

namespace installer::ctl::install {

namespace {

// Where the facts begin.
constexpr std::size_t kFacts = 11;

Json installerJson(const std::optional<InstallerProcess>& installer) {
  if (!installer) return nullptr;
  return {{"program", installer->program},
          {"process", installer->number ? Json(*installer->number) : Json(nullptr)},
          {"status", installer->end.status ? Json(*installer->end.status) : Json(nullptr)},
          {"signal", jsonOf(installer->end.signal)},
          {"output", installer->output}};
}

Json interruptionJson(const std::optional<Interruption>& interruption) {
  if (!interruption) return nullptr;
  return {{"signal", jsonOf(interruption->signal)},
          {"timeLimit", interruption->timeLimit},
          {"killed", interruption->killed}};
}

Json phasesJson(const std::vector<Step>& phases) {
  Json all = Json::array();
  for (const Step& phase : phases)
    all.push_back({{"phase", nameOf(phase.kind)}, {"at", phase.at}, {"seconds", phase.seconds}});
  return all;
}

Json lintJson(const std::optional<LintCounts>& lint) {
  if (!lint) return nullptr;
  return {{"errors", lint->errors}, {"warnings", lint->warnings}};
}

double secondsOf(std::chrono::milliseconds time) {
  return static_cast<double>(time.count()) / 1000;
}

std::string fact(std::string_view name, std::string_view text, const Style& style) {
  return entry(style.strong(name), text, {style.width, kFacts});
}

std::string outcomeText(const Result& result, const Style& style) {
  const std::string words = result.code == 0
                                ? std::string(result.outcome.meaning)
                                : fmt::format("{} (code {})", result.outcome.meaning, result.code);
  return result.outcome.status == 0 ? style.good(words) : style.bad(words);
}

std::string interruptionText(const Interruption& interruption) {
  std::string text = interruption.signal.value_or("");
  if (interruption.timeLimit) text += fmt::format("{}the time limit", text.empty() ? "" : ", ");
  return interruption.killed ? text + "; it had to be killed" : text;
}

std::string versionsText(const Result& result) {
  return fmt::format("{}; before {}, now {}", shown(result.packageVersion, "one without a version"),
                     shown(result.versionBefore, "none"), shown(result.versionAfter, "none"));
}

std::string endText(const WatchedEnd& end) {
  if (end.signal) return fmt::format("ended by {}", *end.signal);
  return fmt::format("status {}", end.status.value_or(-1));
}

}  // namespace

void Result::take(const Evidence& evidence) {
  keptLack = evidence.lack;  // what could not be written before will be now, or is told then
  if (evidence.record) code = static_cast<int>(evidence.record->code);
  if (evidence.record) details = evidence.record->details;
  if (!evidence.run) return;
  phases = evidence.run->steps;
  if (outcome.status != 0 && evidence.run->cause) cause = evidence.run->cause->text;
}

Json documentOf(const Result& result) {
  return {{"schema", "hotfixctl/install/1"},
          {"status", result.isOver ? Json(result.outcome.status) : Json(nullptr)},
          {"cause", result.outcome.name},
          {"code", result.code},
          {"details", result.details},
          {"meaning", result.outcome.meaning},
          {"line", jsonOf(result.cause)},
          {"remedy", result.outcome.remedy},
          {"package", result.request.package},
          {"destination", result.request.destination},
          {"rcpData", jsonOf(result.request.rcpData)},
          {"instance", {{"bundle", jsonOf(result.bundle)}, {"rcpHome", jsonOf(result.rcpHome)}}},
          {"versions",
           {{"package", jsonOf(result.packageVersion)},
            {"before", jsonOf(result.versionBefore)},
            {"after", jsonOf(result.versionAfter)}}},
          {"keptRun", jsonOf(result.keptRun)},
          {"keptLack", jsonOf(result.keptLack)},
          {"began", result.began},
          {"seconds", secondsOf(result.time)},
          {"installer", installerJson(result.installer)},
          {"interruption", interruptionJson(result.interruption)},
          {"phases", phasesJson(result.phases)},
          {"lint", lintJson(result.lint)}};
}

std::string textOf(const Result& result, const Style& style) {
  std::string text = fact("Result", outcomeText(result, style), style);
  if (result.cause) text += fact("Cause", shown(*result.cause), style);
  if (result.interruption) text += fact("Ended by", interruptionText(*result.interruption), style);
  text += fact("Remedy", result.outcome.remedy, style);
  if (result.bundle) text += fact("Instance", shown(*result.bundle), style);
  text += fact("Hotfix", versionsText(result), style);
  if (result.installer)
    text += fact(
        "Installer",
        fmt::format("{}, {:.1f} s", endText(result.installer->end), secondsOf(result.time)), style);
  if (result.keptRun) text += fact("Kept run", shown(*result.keptRun), style);
  if (result.keptLack) text += fact("Not kept", shown(*result.keptLack), style);
  return text;
}

}  // namespace installer::ctl::install
