#pragma once

#include <string>
#include <vector>

#include "ctl/report/Told.h"

namespace installer::ctl::report {

inline constexpr std::size_t kLongestDocument = std::size_t{4} << 20;  // bytes
inline constexpr std::size_t kLongestTrace = std::size_t{64} << 20;    // bytes
inline constexpr int kDeepestFolder = 4;                               // below one that is named

// Something that was to be read, and tells nothing.
struct LeftOut {
  std::string path;
  std::string reason;  // what is said behind the path
};

struct Inputs {
  std::vector<Told> told;
  std::vector<LeftOut> leftOut;
};

// Reads the files, the kept runs, and what of both is in the folders, by name. Links are followed
// where they are named only.
Inputs readInputs(const std::vector<std::string>& paths);

}  // namespace installer::ctl::report
