#pragma once

#include <sys/types.h>

#include <optional>
#include <string>

namespace installer {

// Why somebody other than root and `user` could choose or change what stands at the path: it is
// relative, or an item or link on the way belongs to another user or can be written by others. What
// root or the user owns in a sticky folder counts as theirs, for nobody else can exchange it.
// nullopt when nobody could. A missing item is fine where nobody else could make it.
//
// Looked at from the root down, so that nothing can have changed when the answer is used: below a
// folder that is theirs alone only they can change anything.
[[nodiscard]] std::optional<std::string> reasonToDistrust(const std::string& path, uid_t user);

}  // namespace installer
