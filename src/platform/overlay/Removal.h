#pragma once

#include <string>

#include "platform/FileManager.h"
#include "platform/UserContext.h"
#include "platform/overlay/Tree.h"

namespace installer::overlay {

// Removes the entry, a folder with all below it, going on after failures. 0 when it is gone, else
// the system's error number (ENOENT when there was nothing).
[[nodiscard]] int removeEntry(Tree& tree, const NodePtr& folder, const std::string& name);

// Removes what runs that were killed left in the folder, as FileManager::removeLeftOvers promises.
// What a living process is making counts as left over, for nothing on the disk is asked for its
// lock.
void removeLeftOversFrom(Tree& tree, UserContext& users, const NodePtr& folder, LeftOvers which);

}  // namespace installer::overlay
