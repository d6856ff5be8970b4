#pragma once

#include "ctl/Command.h"

namespace installer::ctl {

// hotfixctl support: collects what a supporter asks for, in one archive without secrets.
extern const Command kSupport;

}  // namespace installer::ctl
