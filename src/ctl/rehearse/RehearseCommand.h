#pragma once

#include "ctl/Command.h"

namespace installer::ctl {

// hotfixctl rehearse: runs the installer on a copy of an instance.
extern const Command kRehearse;

}  // namespace installer::ctl
