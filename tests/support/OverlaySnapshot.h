#pragma once

#include <string>

#include "platform/overlay/Tree.h"
#include "support/TreeSnapshot.h"

namespace installer::test {

// What stands at the path in the tree, in the form in which snapshotOf() tells what is on the disk.
// What is no file, folder or link is a pipe here.
TreeSnapshot snapshotOf(overlay::Tree& tree, const std::string& path);

}  // namespace installer::test
