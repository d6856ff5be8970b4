#pragma once

#include "platform/ChildProcesses.h"

namespace installer {

class PosixChildProcesses : public ChildProcesses {
 public:
  [[nodiscard]] std::optional<int> start(const Command& command, std::string* reason) override;
  [[nodiscard]] std::optional<std::string> wait(int child) override;
  [[nodiscard]] std::optional<std::string> firstLine(const Command& command) override;
  [[nodiscard]] int shell(const std::string& commandLine) override;
};

}  // namespace installer
