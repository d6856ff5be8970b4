#pragma once

#include <optional>
#include <string>

namespace installer::calls {

// What the numbers of calls depend on beside the program itself.

// "Linux 6.1"
std::string kernel();

// "glibc 2.36"; "unknown" when the library does not tell.
std::string library();

// Which call that the program prefers to others this kernel does not know, or a filter keeps from
// it; nothing when it has them all.
std::optional<std::string> lackingCall();

}  // namespace installer::calls
