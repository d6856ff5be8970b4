#pragma once

#include <optional>
#include <string>

namespace installer::ctl::install {

// The installer that belongs to this program: beside it, or in the sbin folder beside its own,
// which is where the two are installed. nullopt when it is in neither.
std::optional<std::string> installerProgram();

// Whether there is a file at the path.
bool isProgram(const std::string& path);

}  // namespace installer::ctl::install
