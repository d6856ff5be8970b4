#include <fmt/format.h>

#include "ctl/Shown.h"
#include "ctl/lint/Report.h"
#include "ctl/lint/RuleTable.h"

namespace installer::ctl::lint {

namespace {

constexpr std::size_t kRemedyIndent = 4;

std::string colored(Level level, std::string_view text, const Style& style) {
  switch (level) {
    case Level::error:
      return style.bad(text);
    case Level::warning:
      return style.warning(text);
    case Level::note:
      break;
  }
  return style.faint(text);
}

std::string textOf(const Place& place) {
  std::string text = shown(place.file);
  if (place.line) text += fmt::format(":{}", *place.line);
  return text;
}

std::string counted(std::size_t count, std::string_view what) {
  return fmt::format("{} {}{}", count, what, count == 1 ? "" : "s");
}

void append(const Finding& finding, const Style& style, std::string& text) {
  const Rule& rule = *finding.rule;
  text +=
      fmt::format("{}: {}: {} [{}]\n", textOf(finding.place),
                  colored(rule.level, wordOf(rule.level), style), shown(finding.message), rule.id);
  text += broken(rule.remedy, {style.textWidth(), kRemedyIndent}, std::string(kRemedyIndent, ' '));
}

}  // namespace

std::string_view wordOf(Level level) {
  switch (level) {
    case Level::error:
      return "error";
    case Level::warning:
      return "warning";
    case Level::note:
      break;
  }
  return "note";
}

std::string textOf(const Findings& findings, const Style& style) {
  std::string text;
  for (const Finding& finding : findings.kept()) append(finding, style, text);
  for (const auto& [id, count] : findings.dropped())
    text += fmt::format("and {} of {} more\n", count, id);
  text += fmt::format("{}, {}, {}\n", counted(findings.count(Level::error), "error"),
                      counted(findings.count(Level::warning), "warning"),
                      counted(findings.count(Level::note), "note"));
  return text;
}

std::string listOfRules(const Style& style) {
  std::string text;
  for (const Rule& rule : kRules)
    text += entry(fmt::format("{}  {}", rule.id, wordOf(rule.level)), rule.sentence,
                  {style.textWidth(), 16});
  return text;
}

std::string explanationOf(const Rule& rule, const Style& style) {
  const Layout layout{style.textWidth(), 0};
  return fmt::format("{} ({})\n", style.strong(rule.id), wordOf(rule.level)) +
         broken(rule.sentence, layout) + "\n" + broken(rule.explanation, layout) + "\n" +
         broken(rule.remedy, layout);
}

}  // namespace installer::ctl::lint
