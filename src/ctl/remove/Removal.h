#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "ctl/remove/Agreement.h"
#include "ctl/remove/Remainder.h"
#include "ctl/status/InstanceReport.h"

namespace installer::ctl {

struct RemovalRequest {
  std::string instance;                // a bundle or an rcp home
  std::optional<std::string> rcpData;  // without one the rcp home's own
  bool force = false;                  // although record and instance disagree
};

// What came of a removal. The values are the command's exit statuses, but for the last, which is
// told as the first.
enum class RemovalOutcome {
  removed = 0,
  nothingInstalled = 1,
  refused = 2,
  noInstance = 3,
  notReadable = 4,
  applicationRunning = 5,
  atWork = 6,
  failed = 7,
  interrupted = 8,
  notAllowed = 9,
  forgotten = 10,  // only the record of it is gone, as was wanted
};

struct RemovalReport {
  RemovalOutcome outcome = RemovalOutcome::removed;
  std::string reason;  // why it is that, in sentences; empty after a success
  std::string remedy;  // what to do now; empty when there is nothing
  Agreement agreement = Agreement::nothing;
  std::string rcpData;
  InstanceReport before;
  std::optional<InstanceReport> after;  // nullopt when nothing was begun
  std::vector<std::string> errors;      // that were told on the way
  std::string output;                   // of the workflow, for the graphical installer's eyes
  std::vector<Remainder> remainders;    // what the removal leaves, after a success
};

// Removes the hotfix of the instance with the installer's own workflow, and as safely: nothing is
// begun while another run is at work on the instance or its application runs, and nobody is waited
// for. Afterwards the instance is its user's again. Signals that ask the process to end are noted
// from now on, and end it in order.
[[nodiscard]] RemovalReport removeHotfix(const RemovalRequest& request);

}  // namespace installer::ctl
