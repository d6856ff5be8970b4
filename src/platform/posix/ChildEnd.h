#pragma once

#include <sys/types.h>

#include <optional>

namespace installer {

// Waits for the child's end; `options` may be WNOHANG. Whether it has ended, or there is no such
// child. Its number stays its own until it is reaped.
bool hasEnded(pid_t child, int options);

// The wait status of a child that has ended, whose number is free again then. nullopt when the
// system does not tell.
[[nodiscard]] std::optional<int> reaped(pid_t child);

}  // namespace installer
