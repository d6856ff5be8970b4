#pragma once

#include <optional>
#include <string>

namespace installer {

// Waits for another installer at work on the same rcp home [notice], then keeps it from others
// until this process ends. Only the first call of a run does something, and only where the rcp home
// is a folder.
void lockInstance(const std::optional<std::string>& rcpHome);

}  // namespace installer
