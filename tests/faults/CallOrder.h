#pragma once

#include "faults/Kinds.h"

namespace installer::faults {

// No fault: one run is followed, and what it would leave after a loss of power follows from the
// order of its calls. A file of the instance or the data folder is written under a temporary name
// only, and flushed after it was last written before it gets its own; the new name is flushed
// before a child starts and before the run ends, and what a child installed is flushed before the
// hotfix's version is recorded.
Kind callOrderKind();

}  // namespace installer::faults
