#pragma once

#include <cstddef>
#include <ctime>
#include <memory>
#include <optional>
#include <string>

#include "ctl/trace/Run.h"
#include "hotfix/platform/FileError.h"
#include "platform/LineFile.h"

namespace installer::ctl {

// What a trace file holds.
struct Trace {
  std::string path;
  std::time_t modified = 0;
  std::size_t lines = 0;
  std::size_t otherLines = 0;  // of other programs, of other runs, or cut
  std::optional<Run> run;      // nullopt when there is none in it
};

// Reads it from its beginning to its end. nullopt, with `error` set, when that cannot be done.
[[nodiscard]] std::optional<Trace> readTrace(const LineSource& source, FileError& error);

// The trace of the last run on this machine. Everybody could have planted it: only root's and the
// effective user's counts, and no link.
LineSource lastTrace();

// Whether the lines of a run leave open how it ended. Of one that has told nothing but its
// beginning they do: an installer without arguments tells no more, and neither does one that reads
// its package.
bool mayBeAtWork(const std::optional<Run>& run);
// Whether the run is at work right now: whoever is has its instance's lock. A run of which no
// instance is known, or only from its own working folder, is known by its process.
bool isAtWork(const Run& run);

// The year, in local time.
int yearOf(std::time_t time);
// "2026-11-22T11:35:02+00:00"
std::string isoTime(std::time_t time);

}  // namespace installer::ctl
