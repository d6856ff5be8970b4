#pragma once

#include <optional>
#include <string>
#include <vector>

namespace installer {

// Starts the launcher, discards its output and waits for its end, however long that takes. How the
// run went is told by the result file alone: an exit status is not looked at, and a launcher that
// cannot be started (an absent path included) leaves one error line and no result file.
void runProvisioning(const std::optional<std::string>& launcher,
                     const std::vector<std::string>& arguments);

}  // namespace installer
