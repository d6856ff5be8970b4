#pragma once

#include "ctl/Command.h"

namespace installer::ctl {

// hotfixctl install: runs the installer, and tells and keeps what came of it.
extern const Command kInstall;

}  // namespace installer::ctl
