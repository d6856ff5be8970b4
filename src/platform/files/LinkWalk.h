#pragma once

#include <sys/stat.h>

#include <functional>
#include <set>
#include <string>
#include <vector>

#include "platform/files/Ancestry.h"
#include "platform/files/Opening.h"
#include "platform/posix/Descriptor.h"

namespace installer {

// Says of each link on the way whether it may be followed.
using LinkJudge = std::function<bool(const struct stat& link)>;

// Walks the path component by component, each held open before the next is looked for, so that no
// link is followed that was not judged. Answers where the item behind the last link is; its name is
// "." when the path ends in "." or "..", or at the root. A link that may not be followed is EPERM.
Place openPlaceBehindLinks(const std::string& path, const LinkJudge& mayFollow);

// Opens a folder that the caller named. Links above it are followed like in any other path; when it
// is a link itself, all links on the way must belong to root or `user`, for whoever owns a link
// chooses where it leads. `links` receives the ones that were followed then. Invalid with errno
// set.
Descriptor openNamedFolder(const std::string& path, uid_t user, std::set<FileIdentity>& links);

// The place of the regular file to which the link at `path` leads, when that is in the folder that
// holds the link or in one of the folders `within`, at any depth; the root folder counts as none.
// EPERM when the link leads elsewhere.
Place openFileWithin(const std::string& path, const std::vector<std::string>& within);

}  // namespace installer
