#pragma once

#include <vector>

#include "faults/Kinds.h"

namespace installer::faults {

// One kind for each planted name: while the program runs, from its first instruction to its end, a
// process of the user exchanges what lies there with something that leads to a guarded item. A
// point is a run by its number; every second one has another sort of bait.
std::vector<Kind> attackKinds();

}  // namespace installer::faults
