#pragma once

#include "platform/posix/PosixProcessTable.h"

namespace installer {

// The process table as libproc tells it. Processes whose executable the system does not tell are
// left out.
class LibprocProcessTable : public PosixProcessTable {
 public:
  std::vector<std::vector<std::string>> commandLines() override;

 private:
  std::vector<std::string> executables() const override;
};

}  // namespace installer
