#pragma once

#include <string>

namespace installer {

// Where what is known of each run is kept, in a folder for each. Not below the system's logs, which
// some systems let a group write. Absolute; nobody may have made it yet.
[[nodiscard]] std::string keptRunsFolder();

}  // namespace installer
