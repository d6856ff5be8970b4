#pragma once

#include <optional>
#include <string>
#include <vector>

#include "hotfix/instance/InstanceService.h"

namespace installer {

// Starts the launcher, discards its output and waits for its end, however long that takes. How the
// run went is told by the result file alone: an exit status is not looked at. A launcher that
// cannot be started (an absent path included) or that a signal ends leaves one error line.
void runProvisioning(const std::optional<std::string>& launcher,
                     const std::vector<std::string>& arguments);

// Whether the last run of the service's instance, at `rcpHome`, succeeded. What the result file
// holds instead is one error line: another answer than the two that tell success, or none, with the
// places of the launcher's logs; or why it cannot be read. A missing file is told by whatever kept
// the launcher from writing it.
[[nodiscard]] bool provisioningSucceeded(const InstanceService& service, const std::string& rcpHome,
                                         const std::string& rcpData);

}  // namespace installer
