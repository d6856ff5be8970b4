#pragma once

#include <string>
#include <vector>

#include "faults/Allowed.h"
#include "faults/Kinds.h"
#include "faults/Learned.h"

namespace installer::faults {

// What came of one point of a sweep.
struct Outcome {
  std::vector<Violation> violations;
  std::string call;  // the one that was acted on
};

// Lets the scenario run with the fault at that call, and again where the fault ends the run.
Outcome tryPoint(const Runner& runner, const Scenario& scenario, const Learned& learned,
                 const Kind& kind, long point);

}  // namespace installer::faults
