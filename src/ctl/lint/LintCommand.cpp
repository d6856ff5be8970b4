#include "ctl/lint/LintCommand.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <iterator>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "ctl/CommandLine.h"
#include "ctl/Nearest.h"
#include "ctl/Surroundings.h"
#include "ctl/lint/Lint.h"
#include "ctl/lint/Report.h"
#include "ctl/lint/RuleTable.h"

namespace installer::ctl {

namespace {

using lint::Findings;
using lint::kRules;
using lint::Level;
using lint::Rule;

constexpr int kFound = 1;
constexpr int kCouldNotLook = 2;
constexpr ExitStatus kStatuses[] = {
    {0, "nothing above a note was found"},
    {kFound, "warnings or errors were found"},
    {kCouldNotLook, "the package, the older one or the instance could not be looked at"},
};

struct Options {
  std::optional<std::string> package;
  std::optional<std::string> instance;
  std::optional<std::string> older;
  std::optional<std::string> explained;
  std::vector<std::string> disabled;  // identifiers, each as many as stand between commas
  bool list = false;
  bool sarif = false;
};

const Rule* ruleNamed(const std::string& id) {
  const auto* const found = std::find_if(std::begin(kRules), std::end(kRules),
                                         [&](const Rule& rule) { return rule.id == id; });
  return found == std::end(kRules) ? nullptr : found;
}

int refuseRule(const std::string& id) {
  std::vector<std::string> known;
  for (const Rule& rule : kRules) known.emplace_back(rule.id);
  const auto meant = nearest(id, known);
  complain(fmt::format("there is no rule \"{}\"{}", id,
                       meant ? fmt::format("; did you mean \"{}\"?", *meant) : ""));
  return kUsageError;
}

int explain(const std::string& id, Surroundings& surroundings) {
  const Rule* const rule = ruleNamed(id);
  if (rule == nullptr) return refuseRule(id);
  surroundings.out.write(lint::explanationOf(*rule, surroundings.style));
  return 0;
}

int list(Surroundings& surroundings) {
  surroundings.out.write(surroundings.json ? textOf(lint::jsonOfRules())
                                           : lint::listOfRules(surroundings.style));
  return 0;
}

std::set<std::string> identifiersIn(const std::vector<std::string>& lists) {
  std::set<std::string> identifiers;
  for (const std::string& list : lists)
    for (std::size_t at = 0; at <= list.size();) {
      const std::size_t end = std::min(list.find(',', at), list.size());
      if (end > at) identifiers.insert(list.substr(at, end - at));
      at = end + 1;
    }
  return identifiers;
}

int statusOf(const Findings& findings) {
  return findings.count(Level::error) + findings.count(Level::warning) > 0 ? kFound : 0;
}

std::string answerOf(const Options& options, const Findings& findings,
                     const Surroundings& surroundings) {
  if (options.sarif) return textOf(lint::sarifOf(findings));
  if (surroundings.json) return textOf(lint::jsonOf(*options.package, findings));
  return lint::textOf(findings, surroundings.style);
}

int look(const Options& options, Surroundings& surroundings) {
  const std::set<std::string> disabled = identifiersIn(options.disabled);
  for (const std::string& id : disabled)
    if (ruleNamed(id) == nullptr) return refuseRule(id);
  const auto answer = lint::lint({*options.package, options.instance, options.older, disabled});
  if (const auto* reason = std::get_if<lint::CannotLook>(&answer)) {
    complain(reason->reason);
    return kCouldNotLook;
  }
  const auto& findings = std::get<Findings>(answer);
  surroundings.out.write(answerOf(options, findings, surroundings));
  return statusOf(findings);
}

int run(const Options& options, Surroundings& surroundings) {
  if (surroundings.json && (options.sarif || options.explained)) {
    complain(fmt::format("lint: --json excludes {}", options.sarif ? "--sarif" : "--explain"));
    return kUsageError;
  }
  if (options.list) return list(surroundings);
  if (options.explained) return explain(*options.explained, surroundings);
  if (options.package) return look(options, surroundings);
  complain("lint: a package is missing");
  return kUsageError;
}

Action declare(CLI::App& line) {
  const auto options = std::make_shared<Options>();
  auto* const package =
      addText(line, "package", options->package, "the folder of the package")->check(whyNoText);
  auto* const instance =
      addText(line, "--instance", options->instance,
              "an application bundle that the package is for: tells what it would lose")
          ->type_name("BUNDLE")
          ->check(whyNoText);
  auto* const older =
      addText(line, "--older", options->older,
              "the package that comes before this one: tells what goes wrong from there")
          ->type_name("PACKAGE")
          ->check(whyNoText);
  auto* const disabled =
      addTexts(line, "--disable", options->disabled, "rules that do not count, HF101,HF102")
          ->type_name("RULES")
          ->allow_extra_args(false);
  auto* const sarif = line.add_flag("--sarif", options->sarif, "answers as SARIF 2.1.0");
  auto* const list = line.add_flag("--list", options->list, "lists all rules");
  auto* const explained =
      addText(line, "--explain", options->explained, "tells what one rule is about")
          ->type_name("RULE")
          ->excludes(list);
  for (auto* const other : {package, instance, older, disabled, sarif}) {
    list->excludes(other);
    explained->excludes(other);
  }
  return [options](Surroundings& surroundings) { return run(*options, surroundings); };
}

}  // namespace

const Command kLint = {
    .name = "lint",
    .summary = "tells what of a package would fail silently or surprise",
    .description =
        "Looks at a hotfix package, with the installer's own readers, for what it "
        "would pass over without a line, take for something else or fail at on a "
        "user's machine. Nothing is changed.",
    .statuses = kStatuses,
    .declare = declare};

}  // namespace installer::ctl
