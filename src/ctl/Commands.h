#pragma once

#include <span>

#include "ctl/Command.h"

namespace installer::ctl {

// Every command of the program, in the order in which its help lists them.
std::span<const Command> commands();

}  // namespace installer::ctl
