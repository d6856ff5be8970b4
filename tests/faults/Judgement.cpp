#include "faults/Judgement.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>

#include "cli/Fixtures.h"
#include "faults/AllocationKind.h"
#include "faults/Normal.h"
#include "faults/Paths.h"
#include "faults/Planting.h"
#include "faults/Reports.h"

namespace installer::faults {

namespace fs = std::filesystem;

namespace {

using Violations = std::vector<Violation>;

void append(Violations& all, Violations more) {
  for (Violation& violation : more) all.push_back(std::move(violation));
}

// A hard link to a guarded file holds its text and is nobody's fault.
bool isGuardItself(const World& world, const Scenario& scenario, const std::string& path) {
  std::error_code unknown;
  return std::any_of(scenario.files.begin(), scenario.files.end(), [&](const auto& entry) {
    return entry.first.starts_with(kGuarded) &&
           fs::equivalent(world.host(entry.first), world.host(path), unknown);
  });
}

Violations judgeGuards(const World& world, const Scenario& scenario, const Files& files) {
  Violations found;
  for (const auto& [path, entry] : scenario.files)
    if (path.starts_with(kGuarded) && (!files.contains(path) || files.at(path) != entry))
      found.push_back({"guard", path + " was changed"});
  for (const auto& [path, entry] : files) {
    if (path.starts_with(kGuarded)) {
      if (!scenario.files.contains(path)) found.push_back({"guard", path + " was made"});
    } else if (entry.kind == "file" && entry.content.find(kSecret) != std::string::npos &&
               !isGuardItself(world, scenario, path)) {
      found.push_back({"secret", path + " holds what only root may read"});
    }
  }
  return found;
}

// Nothing changes but in the application, the data, /tmp and what a user moved away.
Violations judgeElsewhere(const Scenario& scenario, const Files& files) {
  const auto isElsewhere = [&](const std::string& path) {
    return !path.starts_with(scenario.bundle) && !path.starts_with(scenario.data) &&
           !path.starts_with("/tmp") && !path.starts_with("/Users/alice") &&
           !path.starts_with(kGuarded);
  };
  Violations found;
  for (const auto& [path, entry] : files)
    if (isElsewhere(path) && (!scenario.files.contains(path) || scenario.files.at(path) != entry))
      found.push_back({"elsewhere", path});
  for (const auto& [path, entry] : scenario.files)
    if (isElsewhere(path) && !files.contains(path)) found.push_back({"elsewhere", path});
  return found;
}

// The folders of copied trees that could not be opened to others, as if they had been.
Files withCopiesOpen(const Scenario& scenario, Files files) {
  for (auto& [path, entry] : files) {
    const bool isClosed = entry.kind == "folder" && entry.mode == 0700 && entry.owner == 0;
    const auto isAbove = [&](const std::string& copy) { return isAtOrBelow(path, copy); };
    if (isClosed && std::any_of(scenario.copies.begin(), scenario.copies.end(), isAbove))
      entry.mode = 0755;
  }
  return files;
}

Violations judgeMoment(const Scenario& scenario, const Learned& learned, const Files& files) {
  Violations found = learned.moments.against(withoutStamps(withCopiesOpen(scenario, files)));
  std::erase_if(found, [&](const Violation& violation) {
    return violation.rule == "missing" && mayBeLost(scenario, violation.text);
  });
  return found;
}

bool mayChangeSilently(const Scenario& scenario, const std::string& path) {
  return mayBeLost(scenario, path) || std::find(scenario.silences.begin(), scenario.silences.end(),
                                                path) != scenario.silences.end();
}

// A file of keys and values without the one whose change is passed over.
bool isSame(const Scenario& scenario, const std::string& path, const std::string& now,
            const std::string& ever) {
  const auto silent = scenario.silentKeys.find(path);
  if (now == ever || silent == scenario.silentKeys.end()) return now == ever;
  auto entries = entriesOf(path, now);
  auto known = entriesOf(path, ever);
  if (!entries || !known) return false;
  entries->erase(silent->second);
  known->erase(silent->second);
  return entries == known;
}

bool isAsEver(const Scenario& scenario, const Learned& learned, const Files& files) {
  const auto known = [&](const auto& entry) {
    const auto& [path, now] = entry;
    if (path == cli::kTrace || mayChangeSilently(scenario, path)) return true;
    // What a killed run left and this one could not remove waits for the next one.
    if (isTemporary(path) && scenario.files.contains(path)) return true;
    const auto found = learned.files.find(path);
    return found != learned.files.end() &&
           isSame(scenario, path, now.content, found->second.content);
  };
  const auto kept = [&](const auto& entry) {
    return mayChangeSilently(scenario, entry.first) || files.contains(entry.first);
  };
  return std::all_of(files.begin(), files.end(), known) &&
         std::all_of(learned.files.begin(), learned.files.end(), kept);
}

// What differs from an undisturbed run is told, unless nothing could be told.
Violations judgeReason(const Scenario& scenario, const Learned& learned, const Run& run) {
  const Files files = withoutStamps(run.files);
  if (!files.contains(cli::kTrace)) return {};
  const bool asEver = run.end.status == scenario.status && isAsEver(scenario, learned, files);
  const auto complaints = complaintsIn(contentOf(files, cli::kTrace));
  const bool isTold = !std::includes(learned.complaints.begin(), learned.complaints.end(),
                                     complaints.begin(), complaints.end());
  if (asEver || isTold) return {};
  return {{"reason", "the outcome is another, and no line says why"}};
}

Violations judgeSecondRun(const World& world, const Scenario& scenario, const Learned& learned,
                          const Run& run) {
  Violations found = endsAsExpected(scenario, run);
  append(found, learned.ends.against(withoutStamps(run.files)));
  append(found, judgeGuards(world, scenario, run.files));
  append(found, judgeTrace(run.files));
  for (Violation& violation : found) violation.rule = "again-" + violation.rule;
  return found;
}

// The reports among the files that nobody else has put there.
Files ownReports(const Files& files) {
  Files own;
  for (const char* path : {cli::kTrace, cli::kPasteboard}) {
    const auto found = files.find(path);
    if (found != files.end() && found->second.kind == "file" &&
        found->second.content.find(kSecret) == std::string::npos)
      own.insert(*found);
  }
  return own;
}

Violations judgeAnyRun(const World& world, const Scenario& scenario, const Run& run) {
  Violations found = judgeGuards(world, scenario, run.files);
  append(found, judgeTrace(ownReports(run.files)));
  append(found, judgeRecord(ownReports(run.files)));
  return found;
}

Violations judge(const Runner& runner, const Scenario& scenario, const Learned& learned,
                 Judging judging, const Run& run) {
  if (judging == Judging::foreign) return judgeForeign(runner.world(), scenario, run);
  Violations found = judgeAnyRun(runner.world(), scenario, run);
  append(found, judgeMoment(scenario, learned, run.files));
  if (judging == Judging::again) {
    const Run second = runner.run(scenario, letBe);
    append(found, judgeSecondRun(runner.world(), scenario, learned, second));
    return found;
  }
  append(found, judgeStatus(scenario, run));
  append(found, judgeLeftOvers(run.files, scenario.files));
  if (judging == Judging::whole) append(found, judgeReason(scenario, learned, run));
  return found;
}

}  // namespace

Violations judgeForeign(const World& world, const Scenario& scenario, const Run& run) {
  Violations found = judgeAnyRun(world, scenario, run);
  append(found, judgeElsewhere(scenario, run.files));
  append(found, judgeEnd(run));
  return found;
}

Outcome tryPoint(const Runner& runner, const Scenario& asItIs, const Learned& learned,
                 const Kind& kind, long point) {
  if (kind.tried) return kind.tried(runner, asItIs, learned, point);
  Outcome outcome{{}, "never reached"};
  const bool countsCalls = !kind.variables;
  const Scenario scenario = kind.judging == Judging::foreign ? forPlanting(asItIs) : asItIs;
  const Action action = kind.action(runner, scenario, point);
  runner.prepare(scenario);
  const Run run = runner.run(
      scenario,
      [&](Tracee& program, const Call& call, long number) {
        if (number == point && countsCalls) outcome.call = program.described(call);
        action(program, call, number);
      },
      countsCalls ? std::map<std::string, std::string>() : kind.variables(point));
  if (!countsCalls) outcome.call = placeOfAllocation(runner.world());
  outcome.trace = contentOf(run.files, cli::kTrace);
  outcome.violations = judge(runner, scenario, learned, kind.judging, run);
  return outcome;
}

}  // namespace installer::faults
