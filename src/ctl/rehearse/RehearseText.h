#pragma once

#include <string>
#include <string_view>

#include "ctl/Json.h"
#include "ctl/Style.h"
#include "ctl/rehearse/Rehearsal.h"

namespace installer::ctl {

// For programs.
std::string_view nameOf(RehearsalOutcome outcome);

// A rehearsal that came to its end, for people. With `all` each owner and mode, too.
std::string textOf(const RehearsalReport& report, const RehearsalRequest& request, bool all,
                   const Style& style);

Json documentOf(const RehearsalReport& report, const RehearsalRequest& request);

}  // namespace installer::ctl
