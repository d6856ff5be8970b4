#pragma once

#include <string>

namespace installer {

// What follows the last slash.
std::string fileNameOf(const std::string& path);

// The path with every link resolved; as it is when nothing is there.
std::string resolvedOrSame(const std::string& path);

}  // namespace installer
