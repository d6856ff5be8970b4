#pragma once

#include "platform/files/FileChanges.h"
#include "platform/files/Opening.h"

namespace installer {

// Opens the log file at the place for writing from its start, as FileManager::openLog promises. The
// caller owns the descriptor; -1 when it cannot be had.
[[nodiscard]] int openLogFile(FileChanges& changes, const Place& place);

}  // namespace installer
