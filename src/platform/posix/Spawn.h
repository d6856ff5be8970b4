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

// Starts the command with default signal handling, nothing blocked and no descriptor but 0 to 2.
// 0 and the child's number, or the system's error number when there is no child.
[[nodiscard]] int spawn(const Command& command, const ChildOutputs& outputs, pid_t& child);

// Ends with a null pointer; the texts stay the command's, which no system changes.
inline std::vector<char*> argumentVector(const Command& command) {
  std::vector<char*> vector{const_cast<char*>(command.executable.c_str())};
  for (const std::string& argument : command.arguments)
    vector.push_back(const_cast<char*>(argument.c_str()));
  vector.push_back(nullptr);
  return vector;
}

}  // namespace installer
