#pragma once

#include "faults/Options.h"
#include "faults/Runner.h"

namespace installer::faults {

// Sweeps what is asked for, tells each violation with the words that repeat it and a table at the
// end, and answers the exit status: 0 when there was no violation, 1 when there was, 2 for trouble.
int sweep(const Runner& runner, const Options& options);

}  // namespace installer::faults
