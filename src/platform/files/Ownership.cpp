#include "platform/files/Ownership.h"

namespace installer {

namespace {

bool differs(const struct stat& status, const Ownership& ownership) {
  return status.st_uid != ownership.owner.value_or(status.st_uid) ||
         status.st_gid != ownership.group.value_or(status.st_gid);
}

}  // namespace

Ownership resolveOwnership(UserContext& users, const FileAttributes& attributes) {
  Ownership ownership;
  const auto user = users.findUser(attributes.owner);
  if (user) ownership.owner = user->uid;
  ownership.group = users.findGroup(attributes.group);
  if (!ownership.group && user && attributes.group == "admin") ownership.group = user->gid;
  return ownership;
}

void giveOwnershipIfPossible(FileChanges& changes, int file, const Ownership& ownership,
                             const std::optional<struct stat>& seen) {
  if (seen && !differs(*seen, ownership)) return;
  if (changes.changeOwner(file, ownership.ownerOrSame(), ownership.groupOrSame()) == 0) return;
  // Who may not give a file away can often still choose among his own groups.
  constexpr auto kSameOwner = static_cast<uid_t>(-1);
  (void)changes.changeOwner(file, kSameOwner, ownership.groupOrSame());  // "if possible"
}

}  // namespace installer
