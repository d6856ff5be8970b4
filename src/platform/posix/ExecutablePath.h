#pragma once

#include <optional>
#include <string>

namespace installer {

// What follows the last slash.
std::string fileNameOf(const std::string& path);

// The path with every link resolved; nullopt when nothing is there.
[[nodiscard]] std::optional<std::string> resolved(const std::string& path);

// The same, with a slash at the end if it had one, so that "/B.app/" does not begin the path of
// "/B.app2"; as it is when nothing is there.
std::string resolvedOrSame(const std::string& path);

}  // namespace installer
