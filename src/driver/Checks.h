#pragma once

#include <optional>
#include <string>

namespace installer {

// The checks before an installation, in order: no unsupported characters in the paths, an instance
// is installed, it is not running (unless the package may be installed all the same), and no higher
// hotfix is installed. The first that fails sends its error record and ends them. True when all
// pass. Reads runState().
[[nodiscard]] bool passesChecks(const std::optional<std::string>& rcpHome);

}  // namespace installer
