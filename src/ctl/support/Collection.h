#pragma once

#include <cstddef>
#include <vector>

#include "ctl/support/Item.h"

namespace installer::ctl::support {

// Reads or makes each item without its secrets, in bounded memory: what comes when `most` bytes are
// reached is left out. Throws Interrupted between two of them.
std::vector<Collected> collect(const std::vector<Item>& items, std::size_t most);

}  // namespace installer::ctl::support
