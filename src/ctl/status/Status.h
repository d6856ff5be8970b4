#pragma once

#include "ctl/Command.h"

namespace installer::ctl {

// hotfixctl status: which hotfix the instances of this machine have, and whether all is well.
extern const Command kStatus;

}  // namespace installer::ctl
