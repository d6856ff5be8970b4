#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/LogLevel.h"
#include "ctl/Endings.h"

namespace installer::ctl {

// What a run does, one after the other; some not in every run, some twice.
enum class StepKind {
  readPackage,
  waitForInstaller,
  waitForLauncher,
  checkPaths,
  checkInstance,
  checkApplication,
  checkVersions,
  removeOlder,
  updateUntouched,
  bringFiles,
  provision,
  record,
  recover,
  collectLogs,
};

struct Step {
  StepKind kind;
  std::int64_t at = 0;       // seconds since the beginning of the run
  std::int64_t seconds = 0;  // that it took
};

// For programs: "check-paths"; for people: "checks the characters of the paths".
std::string_view nameOf(StepKind kind);
std::string_view wordsOf(StepKind kind);
// The kind of that name; nullopt for a name that none has.
std::optional<StepKind> stepNamed(std::string_view name);

// A line that somebody should see.
struct Problem {
  LogLevel level;
  std::string time;
  std::string text;
  std::int64_t at = 0;  // as in Step
};

// What the trace tells of a run.
struct Run {
  static constexpr std::size_t kMostSteps = 100;
  static constexpr std::size_t kMostProblems = 100;

  std::string began;  // local time, as the trace has it; so is the end's
  std::string ended;
  std::int64_t seconds = 0;
  std::string host;
  long process = 0;
  std::optional<std::string> rcpHome;           // the instance that was meant
  std::optional<std::string> packageVersion;    // as the versions were compared
  std::optional<std::string> installedVersion;  // before the run
  std::vector<Step> steps;                      // at most kMostSteps
  std::vector<Problem> problems;                // errors and warnings, at most kMostProblems
  std::size_t problemsLeftOut = 0;
  Ending ending = Ending::brokenOff;
  std::optional<Problem> cause;  // the line that tells why; nullopt where the ending says it all
};

}  // namespace installer::ctl
