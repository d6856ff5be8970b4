#pragma once

#include <string_view>

namespace installer {

// Whether the file manager can have given the name to what was not finished yet: what bears it when
// nobody is at work is left by a run that was killed (FileManager::removeLeftOvers).
[[nodiscard]] bool canBeLeftOver(std::string_view name);

}  // namespace installer
