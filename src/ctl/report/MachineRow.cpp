#include "ctl/report/MachineRow.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <iterator>
#include <utility>

#include "ctl/report/Html.h"
#include "ctl/report/Moment.h"
#include "ctl/trace/TraceRecord.h"

namespace installer::ctl::report {

namespace {

template <typename... Values>
void append(std::string& page, fmt::format_string<Values...> form, Values&&... values) {
  fmt::format_to(std::back_inserter(page), form, std::forward<Values>(values)...);
}

// The parts of a run that a timeline tells apart, in the order of the key.
struct Part {
  std::string_view name;  // its class
  std::string_view words;
};
constexpr std::array kParts{Part{"wait", "waits for others"}, Part{"check", "reads and checks"},
                            Part{"launcher", "the platform's launcher at work"},
                            Part{"files", "brings and records files"},
                            Part{"recover", "mends and collects"}};

const Part& partOf(StepKind kind) {
  switch (kind) {
    case StepKind::waitForInstaller:
    case StepKind::waitForLauncher:
      return kParts[0];
    case StepKind::removeOlder:
    case StepKind::updateUntouched:
    case StepKind::provision:
      return kParts[2];
    case StepKind::bringFiles:
    case StepKind::record:
      return kParts[3];
    case StepKind::recover:
    case StepKind::collectLogs:
      return kParts[4];
    default:
      return kParts[1];
  }
}

// What took no whole second cannot be seen. The parts are one shape each.
void appendBar(const std::vector<Step>& steps, std::string& page) {
  std::int64_t length = 0;
  for (const Step& step : steps) length = std::max(length, step.at + step.seconds);
  if (length == 0) return;
  append(page,
         "<svg class=timeline viewBox=\"0 0 {} 1\" preserveAspectRatio=none aria-hidden=true>",
         length);
  for (const Part& part : kParts) {
    std::string shape;
    for (const Step& step : steps)
      if (step.seconds > 0 && &partOf(step.kind) == &part)
        append(shape, "M{0},0h{1}v1h-{1}", step.at, step.seconds);
    if (!shape.empty()) append(page, "<path class={} d={} />", part.name, shape);
  }
  page += "</svg>";
}

// A line for each; steps of one moment that took no time share one. The lines are one text, for a
// browser has more to do with elements.
void appendSteps(const std::vector<Step>& steps, std::string& page) {
  if (steps.empty()) return;
  page += "<p class=lines>";
  for (std::size_t i = 0; i < steps.size(); ++i) {
    const bool isAlone = steps[i].seconds > 0 || i == 0 || steps[i - 1].seconds > 0;
    const std::string label = labelOf(nameOf(steps[i].kind));
    if (isAlone || steps[i - 1].at != steps[i].at)
      append(page, "{}+{} s {}", i > 0 ? "\n" : "", steps[i].at, label);
    else
      append(page, ", {}", label);
    if (steps[i].seconds > 0) append(page, ": {} s", steps[i].seconds);
  }
}

void appendProblems(const ToldRun& run, std::string& page) {
  if (run.problems.empty()) return;
  page += "<ul>";
  for (const Problem& problem : run.problems)
    append(page, "<li>+{} s <span{}>{}</span>: {}", problem.at,
           problem.level == LogLevel::error ? " class=error" : "", nameOf(problem.level),
           html(problem.text));
  if (run.problemsLeftOut > 0) append(page, "<li>and {} more", run.problemsLeftOut);
  page += "</ul>";
}

void appendRun(const ToldRun& run, std::string& page) {
  if (isFailure(run.cause)) append(page, "<p>{}", html(wordsOf(run.cause).meaning));
  if (run.line) append(page, "<p>{}", html(*run.line));
  if (run.packageVersion)
    append(page, "<p>{} over {}", html(*run.packageVersion),
           html(run.versionBefore.value_or("none")));
  appendBar(run.steps, page);
  appendSteps(run.steps, page);
  if (run.steps.empty()) page += "<p class=faint>The steps of its last run were not told.";
  appendProblems(run, page);
  if (run.keptRun && isFailure(run.cause))
    append(page, "<p class=faint>Kept there as {}", html(*run.keptRun));
}

void appendInstance(const ToldInstance& instance, std::string& page) {
  append(page, "<p class=faint>{}: {}", html(instance.place),
         instance.isVersionKnown() ? html(instance.version.value_or(std::string(kNoVersion)))
                                   : kUnknownVersion);
  if (instance.findings.empty()) return;
  page += "<ul>";
  for (const ToldFinding& finding : instance.findings)
    append(page, "<li>{} <span class=faint>{}</span>", html(finding.text), html(finding.remedy));
  page += "</ul>";
}

std::string endOf(const Machine& machine) {
  return machine.run && machine.run->ended ? utcText(*machine.run->ended) : "";
}
std::string lengthOf(const Machine& machine) {
  return machine.run && machine.run->seconds ? fmt::format("{} s", *machine.run->seconds) : "";
}

}  // namespace

std::string_view classOf(Standing standing) {
  switch (standing) {
    case Standing::failed:
      return "failed";
    case Standing::needsAttention:
      return "attention";
    case Standing::atWork:
      return "work";
    case Standing::noHotfix:
      return "none";
    case Standing::good:
      break;
  }
  return "good";
}

void appendRow(const Machine& machine, std::size_t number, std::string& page) {
  append(page, "<tr class={}", classOf(machine.standing));
  // Only these are linked to.
  if (machine.standing <= Standing::needsAttention) append(page, " id=m{}", number);
  append(page, "><th scope=row>{}<td>{}<td>{}<td class=number>{}<td><details><summary>{}</summary>",
         html(machine.name), html(fmt::format("{}", fmt::join(machine.versions(), ", "))),
         endOf(machine), lengthOf(machine), html(machine.label()));
  if (machine.run) appendRun(*machine.run, page);
  for (const ToldInstance& instance : machine.instances) appendInstance(instance, page);
  page += "</details>\n";
}

void appendKey(std::string& page) {
  page += "<h2>The steps of a run</h2>\n<ul class=key>";
  for (const Part& part : kParts)
    append(page,
           "<li><svg viewBox=\"0 0 1 1\" aria-hidden=true><path class={} d=M0,0h1v1h-1 /></svg>{}",
           part.name, part.words);
  page += "</ul>\n<details><summary>Their names</summary><dl class=key>";
  for (int kind = 0; kind <= static_cast<int>(StepKind::collectLogs); ++kind) {
    const auto step = static_cast<StepKind>(kind);
    append(page, "<dt>{}<dd>{}", labelOf(nameOf(step)), wordsOf(step));
  }
  page += "</dl></details>\n";
}

}  // namespace installer::ctl::report
