#pragma once

#include <ctime>
#include <optional>
#include <string>

#include "ctl/install/Outcome.h"
#include "ctl/status/LastRun.h"
#include "ctl/trace/Run.h"
#include "platform/WatchedChild.h"

namespace installer::ctl::install {

// What a run of the installer left that tells how it went.
struct Evidence {
  std::optional<Run> run;             // of its trace; nullopt when there is none of its own
  std::optional<ErrorRecord> record;  // nullopt without such a trace
  std::optional<std::string> lack;    // the first that could not be kept
};

// When the run in the folder had been planned: what was changed last before that is another run's,
// for numbers of processes are used again. Without a plan everything is.
std::time_t plannedAt(const std::string& folder);

// Copies trace and error record of the installer with that process number (any, for nullopt) into
// the folder of its run, unless they are there already, and tells them. A trace that somebody else
// could have written, that is older than the run, or that tells of another process, counts for
// nothing.
Evidence keepEvidence(const std::string& folder, std::optional<long> process);

// The first bytes of the installer's output.
std::string outputIn(const std::string& folder);

// What came of it. `isWanted`: whether it was asked to end before its time.
Outcome outcomeOf(const WatchedEnd& end, const Evidence& evidence, bool isWanted);
// The same of one whose end nobody saw.
Outcome outcomeOfUnseen(const Evidence& evidence);

}  // namespace installer::ctl::install
