#pragma once

#include <optional>
#include <string>

#include "ctl/install/KeptRuns.h"

namespace installer::ctl::install {

// Puts in order what processes left in the kept runs that were killed: what was half written goes,
// a run that had not begun goes with its folder, and one whose end nobody saw gets the result that
// its trace tells. The answer is the folder of a run whose installer is still at work; nothing has
// been done about that one, nor about later ones.
std::optional<std::string> settleOrphans(const KeptRuns& runs);

}  // namespace installer::ctl::install
