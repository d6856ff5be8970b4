#pragma once

#include <optional>
#include <string>

#include "platform/ChildProcesses.h"

namespace installer {

// Starts the command, output discarded. The handle goes to ChildProcesses::wait(); nullopt, after
// an error line with path and reason, when it cannot be started.
[[nodiscard]] std::optional<int> startChild(const Command& command);

// The same, and waits for its end. Its exit status tells us nothing and is not asked for; the
// answer is the signal that ended it, as ChildProcesses::wait() tells it.
[[nodiscard]] std::optional<std::string> runChild(const Command& command);

}  // namespace installer
