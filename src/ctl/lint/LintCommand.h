#pragma once

#include "ctl/Command.h"

namespace installer::ctl {

// hotfixctl lint: what of a package would fail silently or surprise.
extern const Command kLint;

}  // namespace installer::ctl
