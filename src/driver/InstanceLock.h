#pragma once

#include <optional>
#include <string>

namespace installer {

// Waits for another installer at work on the same rcp home [notice], then keeps it from others
// until this process ends. A second call on the same home does nothing, nor does one where the rcp
// home is no folder.
void lockInstance(const std::optional<std::string>& rcpHome);

}  // namespace installer
