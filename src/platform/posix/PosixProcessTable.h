#pragma once

#include <cstddef>

#include "platform/ProcessTable.h"

namespace installer {

inline constexpr std::size_t kLongestCommandLine = std::size_t{64} << 10;  // bytes

// What the process tables of these systems have in common: names are those of the executables'
// files, and executables are told as the kernel does.
class PosixProcessTable : public ProcessTable {
 public:
  std::vector<std::string> valuesForKey(std::string_view key) final;
  std::string asReported(const std::string& path) final;

 private:
  // The executable's path of each process that has one.
  virtual std::vector<std::string> executables() const = 0;
};

}  // namespace installer
