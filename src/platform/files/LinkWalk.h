#pragma once

#include <sys/stat.h>

#include <functional>
#include <string>

#include "platform/files/Opening.h"
#include "platform/posix/Descriptor.h"

namespace installer {

// Says of each link on the way whether it may be followed.
using LinkJudge = std::function<bool(const struct stat& link)>;

// Walks the path component by component, each held open before the next is looked for, so that no
// link is followed that was not judged. A relative path begins at `start`, or in the process's own
// folder when that is none. Answers where the item behind the last link is; its name is "." when
// the path ends in "." or "..", or at the root. A link that may not be followed is EPERM.
Place openPlaceBehindLinks(Descriptor start, const std::string& path, const LinkJudge& mayFollow);

}  // namespace installer
