#pragma once

#include <span>
#include <string>

#include "ctl/Command.h"

namespace installer::ctl {

struct Style;

// Of the whole program.
std::string helpOf(std::span<const Command> commands, const Style& style);

// Of one command. The line is the one that it has declared its options to.
std::string helpOf(const Command& command, const CLI::App& line, const Style& style);

}  // namespace installer::ctl
