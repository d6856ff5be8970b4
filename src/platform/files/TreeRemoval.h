#pragma once

#include <string>

#include "platform/files/Ancestry.h"
#include "platform/files/FileChanges.h"

namespace installer {

// Whether a removal ends at the next entry, by Interrupted, once a signal has asked for that. What
// tidies up behind a change goes on to its end.
enum class Heed { yes, no };

// Removes the entry `name` of the open folder, a folder with all below it, going on after failures.
// 0 when it is gone, else the system's error number (ENOENT when there was nothing).
[[nodiscard]] int removeEntry(FileChanges& changes, int folder, const std::string& name,
                              Heed signals = Heed::no);

// Removes a folder with all below it, as long as it is this one; ESTALE when another has its name.
[[nodiscard]] int removeFolder(FileChanges& changes, int folder, const std::string& name,
                               const FileIdentity& which);

}  // namespace installer
