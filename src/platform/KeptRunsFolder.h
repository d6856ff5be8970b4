#pragma once

#include <string>

namespace installer {

// Where what is known of each run is kept, in a folder for each: below the system's logs, where
// only root can write. Absolute; nobody may have made it yet.
[[nodiscard]] std::string keptRunsFolder();

}  // namespace installer
