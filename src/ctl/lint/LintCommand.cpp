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
  std::string package;
  std::string instance;
  std::string older;
  std::string explained;
  std::vector<std::string> disabled;  // identifiers, each as many as stand between commas
  bool list = false;
  bool sarif = false;
};

std::optional<std::string> given(const std::string& text) {
  if (text.empty()) return std::nullopt;
  return text;
}

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
  if (surroundings.json) return textOf(lint::jsonOf(options.package, findings));
  return lint::textOf(findings, surroundings.style);
}

int look(const Options& options, Surroundings& surroundings) {
  const std::set<std::string> disabled = identifiersIn(options.disabled);
  for (const std::string& id : disabled)
    if (ruleNamed(id) == nullptr) return refuseRule(id);
  const auto answer =
      lint::lint({options.package, given(options.instance), given(options.older), disabled});
  if (const auto* reason = std::get_if<lint::CannotLook>(&answer)) {
    complain(reason->reason);
    return kCouldNotLook;
  }
  const auto& findings = std::get<Findings>(answer);
  surroundings.out.write(answerOf(options, findings, surroundings));
  return statusOf(findings);
}

int run(const Options& options, Surroundings& surroundings) {
  if (options.list) return list(surroundings);
  if (!options.explained.empty()) return explain(options.explained, surroundings);
  if (!options.package.empty()) return look(options, surroundings);
  complain("lint: a package is missing");
  return kUsageError;
}

Action declare(CLI::App& line) {
  const auto options = std::make_shared<Options>();
  line.add_option("package", options->package, "the folder of the package");
  line.add_option("--instance", options->instance,
                  "an application bundle that the package is for: tells what it would lose")
      ->type_name("BUNDLE");
  line.add_option("--older", options->older,
                  "the package that comes before this one: tells what goes wrong from there")
      ->type_name("PACKAGE");
  line.add_option("--disable", options->disabled, "rules that do not count, HF101,HF102")
      ->type_name("RULES")
      ->allow_extra_args(false);
  line.add_flag("--sarif", options->sarif, "answers as SARIF 2.1.0");
  line.add_flag("--list", options->list, "lists all rules");
  line.add_option("--explain", options->explained, "tells what one rule is about")
      ->type_name("RULE");
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
