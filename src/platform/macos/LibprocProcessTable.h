#pragma once

#include "platform/posix/PosixProcessTable.h"

namespace installer {

// The process table as libproc tells it. Processes whose executable the system does not tell are
// left out.
class LibprocProcessTable : public PosixProcessTable {
 public:
  bool seesAll() override;
  // Of another user's processes the system tells root alone.
  std::vector<std::vector<std::string>> commandLines(uid_t user) override;

 private:
  std::vector<std::string> executables() const override;
};

}  // namespace installer
