#pragma once

#include "faults/Kinds.h"

namespace installer::faults {

// The applications lie on a disk of their own. What of it is safe before the call, as a loss of
// power would leave it, is mounted in its place and looked at.
Kind powerCutKind();

}  // namespace installer::faults
