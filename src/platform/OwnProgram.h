#pragma once

#include <optional>
#include <string>

namespace installer {

// The file of the program that this process runs, links resolved; nullopt where the system does not
// tell, and where an upgrade has replaced it meanwhile.
[[nodiscard]] std::optional<std::string> ownProgram();

}  // namespace installer
