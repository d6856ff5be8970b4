#pragma once

#include <string>
#include <vector>

#include "ctl/status/Finding.h"

namespace installer::ctl {

// Adds what looks half done in an instance on which no installer is at work: what a run that was
// killed left, a record that disagrees with the instance, files that the next run will miss.
// Changes nothing, and looks at known places only, not at every entry of the instance.
void examine(const std::string& rcpHome, bool hasHotfix, std::vector<Finding>& findings);

}  // namespace installer::ctl
