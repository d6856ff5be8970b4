#pragma once

#include <string>
#include <vector>

#include "platform/ChildProcesses.h"

namespace installer {

// Ends with a null pointer; the texts stay the command's, which no system changes.
inline std::vector<char*> argumentVector(const Command& command) {
  std::vector<char*> vector{const_cast<char*>(command.executable.c_str())};
  for (const std::string& argument : command.arguments)
    vector.push_back(const_cast<char*>(argument.c_str()));
  vector.push_back(nullptr);
  return vector;
}

}  // namespace installer
