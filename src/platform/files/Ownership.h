#pragma once

#include <sys/stat.h>
#include <sys/types.h>

#include <optional>

#include "platform/FileManager.h"
#include "platform/UserContext.h"
#include "platform/files/FileChanges.h"

namespace installer {

// Account names turned into numbers; absent where the system does not know the name.
struct Ownership {
  std::optional<uid_t> owner;
  std::optional<gid_t> group;

  bool isComplete() const { return owner && group; }

  // As chown() takes them: all bits set leaves that half as it is.
  uid_t ownerOrSame() const { return owner.value_or(static_cast<uid_t>(-1)); }
  gid_t groupOrSame() const { return group.value_or(static_cast<gid_t>(-1)); }
};

// The group "admin" is the owner's primary group where the system has no such group.
Ownership resolveOwnership(UserContext& users, const FileAttributes& attributes);

// Gives the open file as much of the ownership as the system allows. Nothing is changed where
// nothing differs from the file as it was seen.
void giveOwnershipIfPossible(FileChanges& changes, int file, const Ownership& ownership,
                             const std::optional<struct stat>& seen);

}  // namespace installer
