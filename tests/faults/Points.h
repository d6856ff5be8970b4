#pragma once

#include <vector>

#include "faults/Kinds.h"
#include "faults/Options.h"

namespace installer::faults {

// The calls at which the kind of fault is to be tried, by number.
std::vector<long> pointsOf(const Kind& kind, const Learned& learned, const Options& options);

// As many of the points as wanted, evenly spread; the seed moves them.
std::vector<long> sampleOf(const std::vector<long>& points, std::size_t wanted, unsigned long seed);

}  // namespace installer::faults
