#pragma once

#include <vector>

#include "ctl/status/Places.h"
#include "ctl/support/Item.h"

namespace installer::ctl::support {

// Everything that may go into the archive, in its order, for these instances. Nothing else is
// opened. Folders are listed for it, no more.
std::vector<Item> allowList(const std::vector<InstancePlace>& places);

}  // namespace installer::ctl::support
