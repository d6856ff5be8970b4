#pragma once

#include "ctl/Surroundings.h"
#include "ctl/new/Options.h"

namespace installer::ctl::package {

// Asks somebody at a terminal for what is missing, and then for settings and extras unless they are
// given; a question is asked again while its answer is empty. False when there are no more
// answers.
[[nodiscard]] bool askForMissing(Options& options, Surroundings& surroundings);

}  // namespace installer::ctl::package
