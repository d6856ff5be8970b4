#pragma once

#include "platform/ChildProcesses.h"

namespace installer {

class PosixChildProcesses : public ChildProcesses {
 public:
  std::optional<int> start(const Command& command, std::string* reason) override;
  std::optional<std::string> wait(int child) override;
  std::optional<std::string> firstLine(const Command& command) override;
  int shell(const std::string& commandLine) override;
};

}  // namespace installer
