#pragma once

#include <sys/types.h>

#include <string>

#include "platform/FileManager.h"
#include "platform/files/FileChanges.h"
#include "platform/files/HeldFolders.h"
#include "platform/files/Opening.h"
#include "platform/files/Ownership.h"

namespace installer {

// Both answer 0 or the system's error number; EEXIST when something is at the path already.

// Makes every missing folder above the last component of the path, mode 0777 less the mask.
[[nodiscard]] int makeFoldersAbove(HeldFolders& folders, FileChanges& changes,
                                   const std::string& path);

// Makes the folder with exactly this ownership and mode, or not at all.
[[nodiscard]] int makeOwnedFolder(FileChanges& changes, const Place& place,
                                  const Ownership& ownership, mode_t mode);

}  // namespace installer
