#pragma once

#include <optional>
#include <string>

namespace installer {

// The checks before an installation, in order: no unsupported characters in the paths, an instance
// is installed, it is not running (unless the package may be installed all the same), and no higher
// hotfix is installed. The first that fails sends its error record and ends them. Reads runState().
// The rcp home of the instance, which is there, when all pass; nullopt when one fails.
[[nodiscard]] std::optional<std::string> rcpHomePassingChecks();

}  // namespace installer
