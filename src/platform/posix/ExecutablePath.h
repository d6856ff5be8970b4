#pragma once

#include <string>

namespace installer {

// What follows the last slash.
std::string fileNameOf(const std::string& path);

// The path with every link resolved, and a slash at the end if it had one, so that "/B.app/" does
// not begin the path of "/B.app2"; as it is when nothing is there.
std::string resolvedOrSame(const std::string& path);

}  // namespace installer
