#include "platform/files/AttributeWalk.h"

#include <cerrno>
#include <utility>

#include "platform/Interruption.h"
#include "platform/files/FileSystemCalls.h"
#include "platform/files/FolderReader.h"
#include "platform/files/Opening.h"

namespace installer {

namespace {

constexpr mode_t kModeBits = 07777;

}  // namespace

AttributeWalk::AttributeWalk(FileChanges& changes, const Ownership& ownership, mode_t mode,
                             const std::set<FileIdentity>& spared)
    : _changes(changes), _ownership(ownership), _mode(mode), _spared(spared) {}

bool AttributeWalk::changeBelow(Descriptor folder) {
  walk(std::move(folder), 0);
  return _succeeded;
}

void AttributeWalk::walk(Descriptor folder, int depth) {
  FolderReader reader(std::move(folder));
  while (const auto name = reader.next()) visit(reader.descriptor(), *name, depth);
  check(reader.error() == 0);
}

void AttributeWalk::visit(int folder, const std::string& name, int depth) {
  checkInterruption();
  const auto status = statusOf(folder, name);
  if (!status) return check(errno == ENOENT);  // removed meanwhile: nothing is left to change
  if (_spared.contains(identityOf(*status))) return;
  check(_ownership.isComplete());
  if (!isRight(*status)) change(Descriptor(syscalls::openItem(folder, name.c_str())));
  if (!S_ISDIR(status->st_mode)) return;
  if (depth + 1 >= kMaximumDepth) return check(false);
  walk(openFolder(folder, name), depth + 1);
}

// Judged again on the very item that is changed. Owner first: giving an item away clears mode bits.
void AttributeWalk::change(const Descriptor& item) {
  const auto status = statusOf(item);
  if (!status || isSomebodyElses(*status)) return check(false);
  changeOwner(item, *status);
  changeMode(item, *status);
}

void AttributeWalk::changeOwner(const Descriptor& item, const struct stat& status) {
  if (hasOwnership(status)) return;
  check(_changes.changeOwnerOfItem(item.get(), _ownership.ownerOrSame(),
                                   _ownership.groupOrSame()) == 0);
}

void AttributeWalk::changeMode(const Descriptor& item, const struct stat& status) {
  if (S_ISLNK(status.st_mode)) return;
  // Asked anew, for the change of owner can have cleared bits.
  const auto now = statusOf(item);
  if (now && hasMode(*now)) return;
  check(_changes.changeModeOfItem(item.get(), _mode) == 0);
}

bool AttributeWalk::isRight(const struct stat& status) const {
  return hasOwnership(status) && hasMode(status);
}

bool AttributeWalk::hasOwnership(const struct stat& status) const {
  return _ownership.owner.value_or(status.st_uid) == status.st_uid &&
         _ownership.group.value_or(status.st_gid) == status.st_gid;
}

// A link's mode means nothing.
bool AttributeWalk::hasMode(const struct stat& status) const {
  return S_ISLNK(status.st_mode) || (status.st_mode & kModeBits) == _mode;
}

// A second name can have been put here for a file that its owner never meant to hand over. Nobody
// is the owner that is not known.
bool AttributeWalk::isSomebodyElses(const struct stat& status) const {
  return !S_ISDIR(status.st_mode) && isBorrowed(status, _ownership.ownerOrSame());
}

}  // namespace installer
