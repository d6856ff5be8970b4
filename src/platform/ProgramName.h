#pragma once

#include <optional>
#include <string>

namespace installer {

// The file name of the program that the process runs, whoever's it is; only its first 15 bytes on
// some systems. nullopt when there is no such process, or it is kept from us.
[[nodiscard]] std::optional<std::string> programOf(long process);

}  // namespace installer
