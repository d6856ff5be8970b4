#include "ctl/explain/RunText.h"

#include <fmt/format.h>

#include <algorithm>
#include <string_view>

#include "ctl/Shown.h"
#include "ctl/trace/TraceRecord.h"

namespace installer::ctl {

namespace {

// Where the facts begin.
constexpr std::size_t kFacts = 10;
constexpr std::size_t kWords = 20;
// So that all is on one screen.
constexpr std::size_t kShownSteps = 20;
constexpr std::size_t kShownProblems = 5;
constexpr std::size_t kShownText = 1000;  // bytes of a line of the trace
constexpr std::int64_t kMicroseconds = 1'000'000;

std::string fact(std::string_view name, std::string_view text, const Style& style) {
  return entry(style.strong(name), text, {style.width, kFacts});
}

std::string duration(std::int64_t seconds) {
  if (seconds < 60) return fmt::format("{} s", seconds);
  if (seconds < 3600) return fmt::format("{} min {:02} s", seconds / 60, seconds % 60);
  return fmt::format("{} h {:02} min", seconds / 3600, seconds / 60 % 60);
}

std::string result(const EndingDescription& ending, const Style& style) {
  const std::string words(ending.meaning);
  const std::string text = ending.code == ErrorCode::none
                               ? words
                               : fmt::format("{} (code {})", words, static_cast<int>(ending.code));
  if (ending.ending == Ending::installed) return style.good(text);
  return ending.ending == Ending::atWork ? style.warning(text) : style.bad(text);
}

std::string lineOf(const Problem& problem) {
  const std::string_view text = problem.text;
  return fmt::format("{} {}: {}{}", shown(problem.time), nameOf(problem.level),
                     shown(text.substr(0, kShownText)), text.size() > kShownText ? "..." : "");
}

std::string versions(const Run& run) {
  return fmt::format("{} over {}", shown(run.packageVersion, "one without a version"),
                     shown(run.installedVersion, "no hotfix"));
}

std::string steps(const Run& run, const Style& style) {
  std::string text;
  const std::size_t count = std::min(run.steps.size(), kShownSteps);
  for (std::size_t i = 0; i < count; ++i) text += lineOf(run.steps[i], style);
  if (run.steps.size() > count)
    text += fmt::format("  and {} more steps\n", run.steps.size() - count);
  return text;
}

std::string problems(const Run& run, const Style& style) {
  std::string text;
  const std::size_t count = std::min(run.problems.size(), kShownProblems);
  for (std::size_t i = 0; i < count; ++i)
    text += broken(lineOf(run.problems[i]), {style.width, 4}, "  ");
  const std::size_t all = run.problems.size() + run.problemsLeftOut;
  if (all > count) text += fmt::format("  and {} more\n", all - count);
  return text;
}

Json jsonOf(const Problem& problem) {
  return {{"level", nameOf(problem.level)},
          {"time", problem.time},
          {"at", problem.at},
          {"text", problem.text}};
}

Json jsonOf(const Run& run) {
  const EndingDescription& ending = descriptionOf(run.ending);
  Json steps = Json::array();
  for (const Step& step : run.steps)
    steps.push_back({{"step", nameOf(step.kind)}, {"at", step.at}, {"seconds", step.seconds}});
  Json problems = Json::array();
  for (const Problem& problem : run.problems) problems.push_back(jsonOf(problem));
  return {{"began", run.began},
          {"ended", run.ended},
          {"seconds", run.seconds},
          {"host", run.host},
          {"process", run.process},
          {"rcpHome", ctl::jsonOf(run.rcpHome)},
          {"packageVersion", ctl::jsonOf(run.packageVersion)},
          {"installedVersion", ctl::jsonOf(run.installedVersion)},
          {"ending", ending.name},
          {"meaning", ending.meaning},
          {"errorCode", static_cast<int>(ending.code)},
          {"cause", run.cause ? jsonOf(*run.cause) : Json(nullptr)},
          {"remedy", ending.remedy},
          {"steps", std::move(steps)},
          {"problems", std::move(problems)},
          {"problemsLeftOut", run.problemsLeftOut}};
}

}  // namespace

std::string lineOf(const Step& step, const Style& style) {
  const std::string times = fmt::format("  {:>7} {:>7}", fmt::format("+{} s", step.at),
                                        step.seconds > 0 ? duration(step.seconds) : "");
  return entry(times, wordsOf(step.kind), {style.width, kWords});
}

std::string screenOf(const Trace& trace, const Run& run, const Style& style) {
  const EndingDescription& ending = descriptionOf(run.ending);
  std::string text = fact("Trace", shown(trace.path), style);
  text += fact("Run",
               fmt::format("{}, {}, process {} on {}", shown(run.began), duration(run.seconds),
                           run.process, shown(run.host)),
               style);
  if (run.rcpHome) text += fact("Instance", shown(*run.rcpHome), style);
  if (run.packageVersion || run.installedVersion) text += fact("Hotfix", versions(run), style);
  text += "\n" + steps(run, style) + "\n";
  if (!run.problems.empty()) text += style.strong("Problems") + "\n" + problems(run, style) + "\n";
  text += fact("Result", result(ending, style), style);
  if (run.cause) text += fact("Cause", lineOf(*run.cause), style);
  text += fact("Remedy", ending.remedy, style);
  return text;
}

Json documentOf(const Trace& trace) {
  return {{"schema", "hotfixctl/explain/1"},
          {"trace", trace.path},
          {"modified", isoTime(trace.modified)},
          {"lines", trace.lines},
          {"otherLines", trace.otherLines},
          {"run", trace.run ? jsonOf(*trace.run) : Json(nullptr)}};
}

Json chromeTraceOf(const Run& run) {
  Json events = Json::array();
  for (const Step& step : run.steps)
    events.push_back({{"name", wordsOf(step.kind)},
                      {"cat", "step"},
                      {"ph", "X"},
                      {"ts", step.at * kMicroseconds},
                      {"dur", step.seconds * kMicroseconds},
                      {"pid", run.process},
                      {"tid", 1}});
  for (const Problem& problem : run.problems)
    events.push_back({{"name", problem.text},
                      {"cat", nameOf(problem.level)},
                      {"ph", "i"},
                      {"ts", problem.at * kMicroseconds},
                      {"s", "t"},
                      {"pid", run.process},
                      {"tid", 1}});
  return {{"traceEvents", std::move(events)}, {"displayTimeUnit", "ms"}};
}

}  // namespace installer::ctl
