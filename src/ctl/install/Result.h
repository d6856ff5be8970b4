#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "ctl/Json.h"
#include "ctl/Style.h"
#include "ctl/install/Evidence.h"
#include "ctl/install/Outcome.h"
#include "ctl/plan/Plan.h"
#include "ctl/trace/Run.h"
#include "platform/WatchedChild.h"

namespace installer::ctl::install {

// The installer's process.
struct InstallerProcess {
  std::string program;
  std::optional<long> number;  // nullopt as long as it has not been started
  WatchedEnd end;              // nothing in it while it runs
  std::string output;          // standard output and error, the beginning
};

// What had the installer end before its time.
struct Interruption {
  std::optional<std::string> signal;  // that came to this process
  bool timeLimit = false;
  bool killed = false;  // because it did not end when it was asked
};

struct LintCounts {
  std::size_t errors = 0;
  std::size_t warnings = 0;
};

// All that is told of an installation.
struct Result {
  PlanRequest request;
  Outcome outcome = kUntold;
  bool isOver = true;                // false for what is told while the installer runs
  std::optional<std::string> cause;  // the line that tells why
  int code = 0;                      // of the error record
  std::vector<std::string> details;
  std::optional<std::string> bundle;
  std::optional<std::string> rcpHome;
  std::optional<std::string> packageVersion;
  std::optional<std::string> versionBefore;
  std::optional<std::string> versionAfter;
  std::optional<std::string> keptRun;   // its folder
  std::optional<std::string> keptLack;  // what could not be kept, of a run that could be begun
  std::string began;                    // as isoTime() tells it
  std::chrono::milliseconds time{0};    // that the installer ran
  std::optional<InstallerProcess> installer;
  std::optional<Interruption> interruption;
  std::vector<Step> phases;
  std::optional<LintCounts> lint;

  // What the evidence tells beside the outcome.
  void take(const Evidence& evidence);
};

// For programs: schema hotfixctl/install/1.
Json documentOf(const Result& result);

// For people.
std::string textOf(const Result& result, const Style& style);

}  // namespace installer::ctl::install
