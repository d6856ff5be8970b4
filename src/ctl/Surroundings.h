#pragma once

#include "ctl/Output.h"
#include "ctl/Style.h"

namespace installer::ctl {

// What a command is handed beside its own options.
struct Surroundings {
  Output& out;        // for the answer; what went wrong is told by complain()
  Style style;        // of answers for people
  bool json = false;  // the answer is wanted for programs
};

}  // namespace installer::ctl
