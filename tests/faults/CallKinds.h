#pragma once

#include <vector>

#include "faults/Kinds.h"

namespace installer::faults {

// The calls themselves fail, fall short or are never made.
std::vector<Kind> callKinds();

}  // namespace installer::faults
