#pragma once

#include <string>

namespace installer::faults {

// Absolute paths, without a slash at their end.

// The folder that holds the entry; "" for one of the root folder.
inline std::string folderOf(const std::string& path) {
  return path.substr(0, path.rfind('/'));
}

// Never for a folder "".
inline bool isAtOrBelow(const std::string& path, const std::string& folder) {
  return !folder.empty() && (path == folder || path.starts_with(folder + "/"));
}

}  // namespace installer::faults
