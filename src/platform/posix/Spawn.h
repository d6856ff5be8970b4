#pragma once

#include <sys/types.h>

#include <vector>

#include "platform/ChildProcesses.h"

namespace installer {

// What a child has in place of standard output or error when no descriptor is given for it.
constexpr int kInherited = -1;
constexpr int kNullDevice = -2;

struct ChildOutputs {
  int output = kInherited;
  int error = kInherited;
};

// Starts the command with default signal handling, nothing blocked and no descriptor but 0 to 2. A
// signal of `stillIgnored`, which this process ignores, is ignored there too.
// 0 and the child's number, or the system's error number when there is no child.
[[nodiscard]] int spawn(const Command& command, const ChildOutputs& outputs, pid_t& child,
                        const std::vector<int>& stillIgnored);
[[nodiscard]] inline int spawn(const Command& command, const ChildOutputs& outputs, pid_t& child) {
  return spawn(command, outputs, child, {});
}

}  // namespace installer
