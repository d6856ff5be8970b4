#pragma once

#include <optional>
#include <string>

namespace installer {

// Removes what runs that were killed left under temporary names: everywhere in the rcp homes that
// runState() names and whose locks this process has, beside the settings of the data folder, beside
// the files in /tmp, and beside the place of the staging folder's copy. Other runs' items that are
// in the making stay.
void removeLeftOverItems(const std::optional<std::string>& rcpData);

}  // namespace installer
