#pragma once

#include <vector>

#include "ctl/plan/Plan.h"

namespace installer::ctl {

// The checks of the played run in their order, told by its log and its error record: the run itself
// has made them.
std::vector<PlannedCheck> plannedChecks(const Plan& plan);

}  // namespace installer::ctl
