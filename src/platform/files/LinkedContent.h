#pragma once

#include <string>
#include <vector>

#include "platform/files/HeldFolders.h"
#include "platform/files/Opening.h"

namespace installer {

// The place of the regular file to which the link at `path` leads, when that is in the folder that
// holds the link or in one of the folders `within`, at any depth; the root folder counts as none.
// EPERM when the link leads elsewhere.
Place openLinkedContent(HeldFolders& folders, const std::string& path,
                        const std::vector<std::string>& within);

}  // namespace installer
