#include "ctl/status/StatusText.h"

#include <fmt/format.h>

#include "ctl/Endings.h"
#include "ctl/Shown.h"
#include "platform/Platform.h"

namespace installer::ctl {

namespace {

constexpr std::size_t kFacts = 16;  // where they begin

std::string fact(std::string_view name, std::string_view text, const Style& style) {
  return entry(fmt::format("  {}", name), text, {style.width, kFacts});
}

std::string wordsOf(const InstanceReport& report, const Style& style) {
  switch (report.state) {
    case InstanceState::hotfixInstalled:
      return style.good("a hotfix is installed, and all is well");
    case InstanceState::noHotfix:
      return "no hotfix is installed";
    case InstanceState::needsAttention:
      return style.warning("needs attention");
    case InstanceState::noInstance:
      return style.bad("no instance is installed there");
    case InstanceState::notReadable:
      return style.bad(fmt::format("not readable: {}", shown(report.reason, "")));
  }
  return "";
}

std::string hotfixOf(const InstanceReport& report) {
  if (!report.hotfix) return "none";
  return fmt::format("{} ({})", shown(report.hotfix->version),
                     shown(report.hotfix->identifier, "its package's identifier is not recorded"));
}

std::string answerOf(const ProvisioningAnswer& answer) {
  const std::string words = answer.succeeded ? "succeeded" : "failed";
  return fmt::format("{} ({})", words,
                     answer.code ? "rc " + shown(*answer.code) : "its result file has no rc");
}

std::string age(std::int64_t seconds) {
  if (seconds < 60) return fmt::format("{} s", seconds);
  if (seconds < 3600) return fmt::format("{} min", seconds / 60);
  if (seconds < 86'400) return fmt::format("{} h", seconds / 3600);
  return fmt::format("{} days", seconds / 86'400);
}

std::string findingsOf(const InstanceReport& report, const Style& style) {
  std::string text;
  for (const Finding& finding : report.findings) {
    text += broken(shown(finding.text), {style.width, 4}, "  " + style.warning("!") + " ");
    text += broken(shown(finding.remedy), {style.width, 4}, "    ");
  }
  return text;
}

bool isLooked(const InstanceReport& report) {
  return report.state != InstanceState::noInstance && report.state != InstanceState::notReadable;
}

std::string factsOf(const InstanceReport& report, const Style& style) {
  std::string text = fact("Hotfix", hotfixOf(report), style);
  text += fact("Application", shown(report.applicationVersion, "of unknown version"), style);
  text += fact("Base plug-in", shown(report.baseVersion, "of unknown version"), style);
  if (report.recordedVersion) text += fact("Recorded as", shown(*report.recordedVersion), style);
  text += fact("Launcher",
               report.provisioning ? answerOf(*report.provisioning) : "has left no result", style);
  return text;
}

std::string briefOf(const InstanceReport& report) {
  if (report.state == InstanceState::noInstance) return "no instance";
  if (report.state == InstanceState::notReadable)
    return "not readable: " + shown(report.reason, "");
  const std::string version = report.hotfix ? shown(report.hotfix->version) : "none";
  std::string_view separator = " (needs attention: ";
  std::string findings;
  for (const Finding& finding : report.findings) {
    findings += fmt::format("{}{}", separator, shown(finding.text));
    separator = " ";
  }
  return findings.empty() ? version : version + findings + ")";
}

const EndingDescription* meaningOf(const ErrorRecord& record) {
  return descriptionOf(record.code);
}

std::string recordOf(const ErrorRecord& record) {
  std::string text = fmt::format("code {}", record.code);
  if (const auto* const meaning = meaningOf(record)) text += fmt::format(": {}", meaning->meaning);
  for (const std::string& detail : record.details) text += fmt::format(", {}", shown(detail));
  return text;
}

Json jsonOf(const Finding& finding) {
  return {{"name", finding.name}, {"text", finding.text}, {"remedy", finding.remedy}};
}

Json jsonOf(const InstanceReport& report) {
  Json hotfix(nullptr);
  if (report.hotfix)
    hotfix = {{"version", report.hotfix->version},
              {"identifier", ctl::jsonOf(report.hotfix->identifier)}};
  Json provisioning(nullptr);
  if (report.provisioning)
    provisioning = {{"code", ctl::jsonOf(report.provisioning->code)},
                    {"succeeded", report.provisioning->succeeded}};
  Json findings = Json::array();
  for (const Finding& finding : report.findings) findings.push_back(jsonOf(finding));
  return {{"rcpHome", report.place.rcpHome},
          {"foundBy", report.place.foundBy},
          {"bundle", ctl::jsonOf(report.bundle)},
          {"product", ctl::jsonOf(report.product)},
          {"state", nameOf(report.state)},
          {"reason", ctl::jsonOf(report.reason)},
          {"applicationVersion", ctl::jsonOf(report.applicationVersion)},
          {"baseVersion", ctl::jsonOf(report.baseVersion)},
          {"recordedVersion", ctl::jsonOf(report.recordedVersion)},
          {"hotfix", std::move(hotfix)},
          {"provisioning", std::move(provisioning)},
          {"atWork", report.isAtWork},
          {"findings", std::move(findings)}};
}

Json jsonOf(const ErrorRecord& record) {
  const EndingDescription* const meaning = meaningOf(record);
  return {{"code", record.code},
          {"details", record.details},
          {"meaning", meaning == nullptr ? Json(nullptr) : Json(meaning->meaning)},
          {"remedy", meaning == nullptr ? Json(nullptr) : Json(meaning->remedy)}};
}

Json jsonOf(const Run& run, const Problem* firstError) {
  return {{"began", run.began},
          {"rcpHome", ctl::jsonOf(run.rcpHome)},
          {"ending", descriptionOf(run.ending).name},
          {"meaning", descriptionOf(run.ending).meaning},
          {"remedy", descriptionOf(run.ending).remedy},
          {"cause", run.cause ? Json(run.cause->text) : Json(nullptr)},
          {"firstError", firstError == nullptr ? Json(nullptr) : Json(firstError->text)}};
}

Json jsonOf(const LastRun& last) {
  const bool hasTrace = last.trace.has_value();
  const bool hasRun = hasTrace && last.trace->run;
  return {{"trace", Platform::current().paths.traceFile},
          {"modified", hasTrace ? Json(isoTime(last.trace->modified)) : Json(nullptr)},
          {"ageSeconds", hasTrace ? Json(last.traceAge) : Json(nullptr)},
          {"reason", ctl::jsonOf(last.traceLack)},
          {"run", hasRun ? jsonOf(*last.trace->run, last.firstError()) : Json(nullptr)},
          {"errorRecord", last.record ? jsonOf(*last.record) : Json(nullptr)},
          {"marker", last.hasMarker}};
}

std::string runOf(const LastRun& last, const Style& style) {
  if (!last.trace->run) return fact("Result", "its trace holds no run", style);
  const Run& run = *last.trace->run;
  std::string text;
  if (run.rcpHome) text += fact("Instance", shown(*run.rcpHome), style);
  text += fact("Result", descriptionOf(run.ending).meaning, style);
  if (run.cause) text += fact("Cause", shown(run.cause->text), style);
  const Problem* const error = last.firstError();
  if (error != nullptr && (!run.cause || run.cause->text != error->text))
    text += fact("First error", shown(error->text), style);
  if (run.ending != Ending::installed)
    text += fact("Remedy", descriptionOf(run.ending).remedy, style);
  return text;
}

}  // namespace

std::string_view nameOf(InstanceState state) {
  switch (state) {
    case InstanceState::hotfixInstalled:
      return "hotfix-installed";
    case InstanceState::noHotfix:
      return "no-hotfix";
    case InstanceState::needsAttention:
      return "needs-attention";
    case InstanceState::noInstance:
      return "no-instance";
    case InstanceState::notReadable:
      return "not-readable";
  }
  return "";
}

std::string textOf(const InstanceReport& report, const Style& style) {
  const std::string place = report.bundle.value_or(report.place.rcpHome);
  std::string text = broken(shown(place), {style.width, 2}, "");
  text += fact("State", wordsOf(report, style), style);
  if (report.isAtWork)
    text += fact("At work", "an installation is at work on it now; all this may change", style);
  if (isLooked(report)) text += factsOf(report, style);
  return text + findingsOf(report, style);
}

std::string textOf(const LastRun& last, const Style& style) {
  std::string text = style.strong("The last run on this machine") + "\n";
  const std::string path = shown(Platform::current().paths.traceFile);
  if (last.trace)
    text += fact("Trace", fmt::format("{}, {} old", path, age(last.traceAge)), style);
  else
    text += fact("Trace", shown(last.traceLack, "there is none"), style);
  if (last.trace) text += runOf(last, style);
  if (last.record) text += fact("Error record", recordOf(*last.record), style);
  if (last.hasMarker)
    text += fact("Marker",
                 fmt::format("{} is there: a check has failed, in this run or in one before",
                             shown(Platform::current().paths.errorMarker)),
                 style);
  return text;
}

std::string briefTextOf(const std::vector<InstanceReport>& reports) {
  if (reports.empty()) return "no instance\n";
  std::string text;
  for (const InstanceReport& report : reports) {
    if (reports.size() > 1) text += shown(report.bundle.value_or(report.place.rcpHome)) + ": ";
    text += briefOf(report) + "\n";
  }
  return text;
}

Json documentOf(const std::vector<InstanceReport>& reports, const LastRun& last, int status) {
  Json instances = Json::array();
  for (const InstanceReport& report : reports) instances.push_back(jsonOf(report));
  return {{"schema", "hotfixctl/status/1"},
          {"status", status},
          {"instances", std::move(instances)},
          {"lastRun", jsonOf(last)}};
}

}  // namespace installer::ctl
