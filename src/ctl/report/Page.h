#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "ctl/report/Fleet.h"

namespace installer::ctl::report {

// One HTML document that needs nothing beside itself: how many machines have which version, the
// failures by cause with their remedies, what needs attention, each machine with its last run, and
// what could not be read. `made`: now, in seconds since the epoch.
std::string pageOf(const Fleet& fleet, const std::vector<LeftOut>& leftOut, std::int64_t made);

}  // namespace installer::ctl::report
