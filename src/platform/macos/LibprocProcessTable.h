#pragma once

#include "platform/ProcessTable.h"

namespace installer {

// The process table as libproc tells it. Processes whose executable the system does not tell are
// left out.
class LibprocProcessTable : public ProcessTable {
 public:
  std::vector<std::string> valuesForKey(std::string_view key) override;
  std::vector<std::vector<std::string>> commandLines() override;
  std::string asReported(const std::string& path) override;
};

}  // namespace installer
