#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "ctl/Json.h"
#include "ctl/Style.h"
#include "ctl/status/InstanceReport.h"
#include "ctl/status/LastRun.h"

// What status answers.
namespace installer::ctl {

// For programs: "needs-attention".
std::string_view nameOf(InstanceState state);

std::string textOf(const InstanceReport& report, const Style& style);
std::string textOf(const LastRun& last, const Style& style);

// One line for each instance: the hotfix's version or "none", and what needs attention. Its place
// stands before it where there are several.
std::string briefTextOf(const std::vector<InstanceReport>& reports);

Json documentOf(const std::vector<InstanceReport>& reports, const LastRun& last, int status);

}  // namespace installer::ctl
