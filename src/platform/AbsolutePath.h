#pragma once

#include <string>

namespace installer {

// The path as it is from everywhere: a relative one stands in the working folder. Unchanged where
// the system does not tell that folder.
std::string absolutePath(const std::string& path);

}  // namespace installer
