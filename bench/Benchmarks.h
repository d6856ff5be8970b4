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
void registerBaseVersion(const BenchData& data);

// What each ratio is taken against, with "/reference" behind the name of ours: as little as can be
// done for the same result, as durably.
void registerReferences(const BenchData& data);

}  // namespace installer::bench
