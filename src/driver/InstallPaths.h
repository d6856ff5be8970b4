#pragma once

#include <optional>
#include <string>

namespace installer {

// The two ways on after the checks, and what ends both. All read runState() and work on the rcp
// home and the rcp data folder, which are absent when the package does not tell.

// All checks passed: removes an older hotfix, lets the untouched instance provision once, and
// installs, twice when no client has ever started on the rcp data. The answer of the last
// installation; what goes wrong before it is passed over.
[[nodiscard]] bool runSuccessPath(const std::string& rcpHome,
                                  const std::optional<std::string>& rcpData);

// A check failed: brings the instance back to a consistent state and leaves the error marker.
void runFailurePath(const std::optional<std::string>& rcpHome,
                    const std::optional<std::string>& rcpData);

// The end of every run.
void runLogCollection(const std::optional<std::string>& rcpHome,
                      const std::optional<std::string>& rcpData);

}  // namespace installer
