#include "faults/Judgement.h"

#include <fmt/format.h>

#include <algorithm>

#include "cli/Fixtures.h"
#include "faults/AllocationKind.h"
#include "faults/Normal.h"
#include "faults/Reports.h"

namespace installer::faults {

namespace {

using Violations = std::vector<Violation>;

void append(Violations& all, Violations more) {
  for (Violation& violation : more) all.push_back(std::move(violation));
}

Violations judgeGuards(const Scenario& scenario, const Files& files) {
  Violations found;
  for (const auto& [path, entry] : scenario.files)
    if (path.starts_with(kGuarded) && (!files.contains(path) || files.at(path) != entry))
      found.push_back({"guard", path + " was changed"});
  for (const auto& [path, entry] : files) {
    if (path.starts_with(kGuarded)) {
      if (!scenario.files.contains(path)) found.push_back({"guard", path + " was made"});
    } else if (entry.content.find(kSecret) != std::string::npos) {
      found.push_back({"secret", path + " holds what only root may read"});
    }
  }
  return found;
}

Violations judgeMoment(const Scenario& scenario, const Learned& learned, const Files& files) {
  Violations found = learned.moments.against(withoutStamps(files));
  std::erase_if(found, [&](const Violation& violation) {
    return violation.rule == "missing" && mayBeLost(scenario, violation.text);
  });
  return found;
}

bool isAsEver(const Scenario& scenario, const Learned& learned, const Files& files) {
  const auto known = [&](const auto& entry) {
    const auto& [path, now] = entry;
    if (path == cli::kTrace || isTemporary(path) || mayBeLost(scenario, path)) return true;
    const auto found = learned.files.find(path);
    return found != learned.files.end() && found->second.content == now.content;
  };
  const auto kept = [&](const auto& entry) {
    return mayBeLost(scenario, entry.first) || files.contains(entry.first);
  };
  return std::all_of(files.begin(), files.end(), known) &&
         std::all_of(learned.files.begin(), learned.files.end(), kept);
}

// What differs from an undisturbed run is told, unless nothing could be told.
Violations judgeReason(const Scenario& scenario, const Learned& learned, const Run& run) {
  const Files files = withoutStamps(run.files);
  if (!files.contains(cli::kTrace)) return {};
  const bool asEver = run.end.status == scenario.status && isAsEver(scenario, learned, files);
  if (asEver || complaintsIn(contentOf(files, cli::kTrace)) != learned.complaints) return {};
  return {{"reason", "the outcome is another, and no line says why"}};
}

Violations judgeSecondRun(const Scenario& scenario, const Learned& learned, const Run& run) {
  Violations found = endsAsExpected(scenario, run);
  append(found, learned.ends.against(withoutStamps(run.files)));
  append(found, judgeGuards(scenario, run.files));
  append(found, judgeTrace(run.files));
  for (Violation& violation : found) violation.rule = "again-" + violation.rule;
  return found;
}

Violations judge(const Runner& runner, const Scenario& scenario, const Learned& learned,
                 Judging judging, const Run& run) {
  Violations found = judgeMoment(scenario, learned, run.files);
  append(found, judgeGuards(scenario, run.files));
  append(found, judgeTrace(run.files));
  append(found, judgeRecord(run.files));
  if (judging == Judging::again) {
    append(found, judgeSecondRun(scenario, learned, runner.run(scenario, letBe)));
    return found;
  }
  append(found, judgeStatus(scenario, run));
  append(found, judgeLeftOvers(run.files, scenario.files));
  if (judging == Judging::whole) append(found, judgeReason(scenario, learned, run));
  return found;
}

}  // namespace

Outcome tryPoint(const Runner& runner, const Scenario& scenario, const Learned& learned,
                 const Kind& kind, long point) {
  Outcome outcome{{}, "never reached"};
  const Action action = kind.action(runner, scenario, point);
  const bool countsCalls = !kind.variables;
  runner.prepare(scenario);
  const Run run = runner.run(
      scenario,
      [&](Tracee& program, const Call& call, long number) {
        if (number == point && countsCalls) outcome.call = program.described(call);
        action(program, call, number);
      },
      countsCalls ? std::map<std::string, std::string>() : kind.variables(point));
  if (!countsCalls) outcome.call = placeOfAllocation(runner.world());
  outcome.violations = judge(runner, scenario, learned, kind.judging, run);
  return outcome;
}

}  // namespace installer::faults
