#pragma once

#include "ctl/Command.h"

namespace installer::ctl {

extern const Command kPlan;

}  // namespace installer::ctl
