#pragma once

#include <map>
#include <string>

#include "faults/Kinds.h"

namespace installer::faults {

// One allocation can not be had. A point is an allocation by its number.
Kind allocationKind();

// The variables with which the n-th allocation of a run fails, or none for 0 and they are counted;
// both as the program sees the files of the sandbox.
std::map<std::string, std::string> allocationVariables(long failing);

// How many there were in a run that counted them.
long countedAllocations(const World& world);

// Where the one that failed was asked for, in the program's own code: offsets in it, innermost
// first.
std::string placeOfAllocation(const World& world);

}  // namespace installer::faults
