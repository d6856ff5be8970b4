#pragma once

#include <optional>
#include <string>

#include "ctl/install/KeptRuns.h"

namespace installer::ctl::install {

// Puts in order what processes left in the kept runs that were killed: what was half written goes,
// a run that had not begun goes with its folder, and one whose end nobody saw gets the result that
// its trace tells; the end of one whose installer is still at work is waited for. The answer is the
// folder of one that is at work even at the deadline; nothing has been done about that one, nor
// about later ones.
std::optional<std::string> settleOrphans(const KeptRuns& runs, const Deadline& deadline);

}  // namespace installer::ctl::install
