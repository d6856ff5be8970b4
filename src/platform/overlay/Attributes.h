#pragma once

#include <sys/types.h>

#include <set>

#include "platform/files/Ownership.h"
#include "platform/overlay/Tree.h"

namespace installer::overlay {

// Gives owner, group and mode to everything below one folder by the rules of
// platform/files/AttributeWalk.h; links that are in `spared` keep their owner. True when every
// change succeeded.
[[nodiscard]] bool changeAttributesBelow(Tree& tree, const NodePtr& folder,
                                         const Ownership& ownership, mode_t mode,
                                         const std::set<FileIdentity>& spared);

}  // namespace installer::overlay
