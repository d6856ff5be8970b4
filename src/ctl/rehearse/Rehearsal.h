#pragma once

#include <optional>
#include <string>
#include <vector>

#include "ctl/status/Features.h"
#include "ctl/status/InstanceReport.h"
#include "ctl/trace/Run.h"
#include "platform/PrivateRun.h"

namespace installer::ctl {

struct RehearsalRequest {
  std::string package;
  std::string instance;                // a bundle or an rcp home
  std::optional<std::string> rcpData;  // as for the installer
  std::optional<std::string> folder;   // where the copy is made; without one a usual place
  bool withDifferences = false;        // how texts change, too
};

// The values are the command's exit statuses.
enum class RehearsalOutcome {
  installed = 0,
  notInstalled = 1,
  notPossible = 2,
  noInstance = 3,
  notReadable = 4,
  atWork = 6,
  interrupted = 8,
};

// What is known of an instance at one time.
struct InstanceFacts {
  InstanceReport report;
  std::vector<Feature> features;
};

struct RehearsedChange {
  privately::Difference difference;
  std::optional<std::string> text;  // how its text changes, if that was asked for
};

struct RehearsalReport {
  RehearsalOutcome outcome = RehearsalOutcome::notPossible;
  std::string reason;  // why there was no rehearsal, or not to its end; empty otherwise
  std::string bundle;
  std::optional<int> status;  // of the installer; nullopt when it did not come to an end
  std::optional<InstanceFacts> before;
  std::optional<InstanceFacts> after;
  std::optional<Run> run;  // as its trace tells it
  std::string output;
  std::vector<RehearsedChange> changes;  // by path, in the bundle
  // What differs and is not among them: others have changed it in the instance meanwhile.
  std::vector<std::string> changedMeanwhile;
  bool ownersAreKept = true;        // false for a caller who cannot give files away
  std::optional<std::string> left;  // the work folder, when it could not be removed
};

// Runs the installer on a copy of the instance that stands in its place, seen by that run alone.
// Nothing of the machine changes, and nobody is waited for. The copy is gone afterwards, signals or
// not: those that ask the process to end are noted from now on.
[[nodiscard]] RehearsalReport rehearse(const RehearsalRequest& request);

}  // namespace installer::ctl
