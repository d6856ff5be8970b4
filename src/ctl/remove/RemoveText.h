#pragma once

#include <string>
#include <string_view>

#include "ctl/Json.h"
#include "ctl/Style.h"
#include "ctl/remove/Removal.h"

namespace installer::ctl {

// For programs.
std::string_view nameOf(RemovalOutcome outcome);

// A removal that was begun, for people.
std::string textOf(const RemovalReport& report, const Style& style);
// Reason and remedy, in one line.
std::string lineOf(const RemovalReport& report);

Json documentOf(const RemovalReport& report, int status);

}  // namespace installer::ctl
