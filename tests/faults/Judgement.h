#pragma once

#include <string>
#include <vector>

#include "faults/Allowed.h"
#include "faults/Kinds.h"
#include "faults/Learned.h"

namespace installer::faults {

// What must be true whoever else moved the application's files: what lies outside of them is as it
// was, and the run ended well.
std::vector<Violation> judgeForeign(const World& world, const Scenario& scenario, const Run& run);

// Lets the scenario run with the fault at that call, and again where the fault ends the run.
Outcome tryPoint(const Runner& runner, const Scenario& scenario, const Learned& learned,
                 const Kind& kind, long point);

}  // namespace installer::faults
