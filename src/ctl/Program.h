#pragma once

#include <span>
#include <string>
#include <vector>

#include "ctl/Command.h"

namespace installer::ctl {

class Output;

// One run of the program. `arguments` is the whole command line, the program's own name first. The
// answer is the exit status.
[[nodiscard]] int runProgram(const std::vector<std::string>& arguments,
                             std::span<const Command> commands, Output& out);

}  // namespace installer::ctl
