#pragma once

#include <sys/types.h>

#include <string>

#include "platform/FileManager.h"
#include "platform/files/FileChanges.h"
#include "platform/files/Ownership.h"

namespace installer {

// Both answer 0 or the system's error number; EEXIST when something is at the path already.

// Makes every missing folder above the last component of the path, mode 0777 less the mask.
[[nodiscard]] int makeFoldersAbove(FileChanges& changes, const std::string& path);

// Makes the last folder with exactly this ownership and mode, or not at all.
[[nodiscard]] int makeOwnedFolder(FileChanges& changes, const std::string& path,
                                  const Ownership& ownership, mode_t mode);

}  // namespace installer
