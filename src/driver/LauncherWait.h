#pragma once

#include <string>

#include "platform/ProcessTable.h"

namespace installer {

// Whether a launcher of the rcp home that this user has started runs right now; the second form
// asks for the effective user in the table of the platform.
[[nodiscard]] bool isLauncherAtWork(const std::string& rcpHome, ProcessTable& processes,
                                    uid_t user);
[[nodiscard]] bool isLauncherAtWork(const std::string& rcpHome);

// Waits until no launcher of the rcp home provisions any more [notice, and once more after ten
// seconds]. To be called by the holder of the instance's lock: whoever started such a launcher has
// ended, killed perhaps, while the launcher works on in the instance, and another one must not be
// started beside it. Nor is it the running application.
void waitForLauncherLeftBehind(const std::string& rcpHome);

}  // namespace installer
