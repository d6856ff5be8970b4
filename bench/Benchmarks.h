#pragma once

#include "BenchData.h"

namespace installer::bench {

// Each names its benchmarks after the sizes that `data` has; `data` must outlive the runs.
void registerProperties(const BenchData& data);
void registerPropertyLists(const BenchData& data);
void registerManifests(const BenchData& data);
void registerCopies(const BenchData& data);
void registerAttributes(const BenchData& data);
void registerRunningCheck(const BenchData& data);

}  // namespace installer::bench
