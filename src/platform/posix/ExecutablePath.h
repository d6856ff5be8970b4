#pragma once

#include <optional>
#include <string>

namespace installer {

// What follows the last slash.
std::string fileNameOf(const std::string& path);

// The path with every link resolved; nullopt when nothing is there.
[[nodiscard]] std::optional<std::string> resolved(const std::string& path);

}  // namespace installer
