#pragma once

#include "ctl/Command.h"

namespace installer::ctl {

// hotfixctl remove: takes the installed hotfix out of an instance.
extern const Command kRemove;

}  // namespace installer::ctl
