#pragma once

#include "ctl/Command.h"

namespace installer::ctl {

// hotfixctl report: what many machines told of themselves, as one page.
extern const Command kReport;

}  // namespace installer::ctl
