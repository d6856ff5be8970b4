#pragma once

#include <string>

#include "platform/files/FileChanges.h"

namespace installer {

// Removes the entry `name` of the open folder, a folder with all below it, going on after failures.
// 0 when it is gone, else the system's error number (ENOENT when there was nothing).
[[nodiscard]] int removeEntry(FileChanges& changes, int folder, const std::string& name);

}  // namespace installer
