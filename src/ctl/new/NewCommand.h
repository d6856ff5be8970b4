#pragma once

#include "ctl/Command.h"

namespace installer::ctl {

// hotfixctl new: makes a hotfix package.
extern const Command kNew;

}  // namespace installer::ctl
