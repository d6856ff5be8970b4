#pragma once

#include <sys/stat.h>

#include <optional>

#include "platform/posix/Descriptor.h"

namespace installer {

// Claims a file or folder under a temporary name for the process that is making it, as long as it
// is open. Whoever looks for left-overs claims them too before it removes them: what is claimed is
// in the making, however old it is, and a process that is killed claims nothing any more. False
// when another process has the claim, or has had it and removed the item; true where the file
// system knows no claims. `seen` becomes the item as it was then, if it was looked at.
[[nodiscard]] bool claim(const Descriptor& item, std::optional<struct stat>* seen = nullptr);

// The same, but false also where there are no claims: nothing tells then that nobody makes it.
[[nodiscard]] bool claimLeftOver(const Descriptor& item);

}  // namespace installer
