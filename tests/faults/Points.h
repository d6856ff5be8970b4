#pragma once

#include <vector>

#include "faults/Kinds.h"
#include "faults/Options.h"

namespace installer::faults {

// Where the kind of fault is to be tried.
std::vector<long> pointsOf(const Kind& kind, const Scenario& scenario, const Learned& learned,
                           const Options& options);

// As many of the points as wanted, evenly spread; the seed moves them.
std::vector<long> sampleOf(const std::vector<long>& points, std::size_t wanted, unsigned long seed);

}  // namespace installer::faults
