#include "platform/files/AttributeWalk.h"

#include <cerrno>
#include <utility>

#include "platform/Interruption.h"
#include "platform/files/FileSystemCalls.h"
#include "platform/files/FolderReader.h"
#include "platform/files/SecondName.h"

namespace installer {

namespace {

constexpr mode_t kModeBits = 07777;
constexpr mode_t kLostBits = S_ISUID | S_ISGID;  // when an item is given away

// What a descriptor of syscalls::openItem() names.
struct OpenItem {
  FileChanges& changes;
  const Descriptor& item;

  int changeOwner(uid_t owner, gid_t group) {
    return changes.changeOwnerOfItem(item.get(), owner, group);
  }
  int changeMode(mode_t mode) { return changes.changeModeOfItem(item.get(), mode); }
};

}  // namespace

AttributeWalk::AttributeWalk(FileChanges& changes, const Ownership& ownership, mode_t mode,
                             const std::set<FileIdentity>& spared)
    : _changes(changes), _ownership(ownership), _mode(mode), _spared(spared) {}

bool AttributeWalk::changeBelow(Descriptor folder) {
  walk(std::move(folder), true, 0);
  return _succeeded;
}

void AttributeWalk::walk(Descriptor folder, bool isLikelyRight, int depth) {
  FolderReader reader(std::move(folder));
  while (const auto name = reader.next()) {
    checkInterruption();
    isLikelyRight = visit({reader.descriptor(), *name}, isLikelyRight, depth);
  }
  check(reader.error() == 0);
}

// Whether the entry was right, for what is below it and stands behind it is mostly the same: after
// a wrong one an entry is opened at once, and looked at through what would be changed.
bool AttributeWalk::visit(const Entry& entry, bool isLikelyRight, int depth) {
  Descriptor item = isLikelyRight ? Descriptor() : openItem(entry);
  const bool isOpen = item.valid();
  const auto status = isOpen ? statusOf(item) : statusOf(entry.folder, entry.name);
  if (!status) {
    check(errno == ENOENT);  // removed meanwhile: nothing is left to change
    return isLikelyRight;
  }
  if (_spared.contains(identityOf(*status))) return true;
  check(_ownership.isComplete());
  const bool wasRight = isRight(*status);
  if (!wasRight && isOpen) change(OpenItem{_changes, item}, *status);
  if (!wasRight && !isOpen) openAndChange(entry);
  item = Descriptor();  // what is below has need of descriptors too
  if (S_ISDIR(status->st_mode)) enter(entry, wasRight, depth + 1);
  return wasRight;
}

Descriptor AttributeWalk::openItem(const Entry& entry) {
  return Descriptor(syscalls::openItem(entry.folder, entry.name.c_str()));
}

void AttributeWalk::enter(const Entry& entry, bool wasRight, int depth) {
  if (depth >= kMaximumDepth) return check(false);
  walk(openFolder(entry.folder, entry.name), wasRight, depth);
}

// Judged again on the very item that is changed.
void AttributeWalk::openAndChange(const Entry& entry) {
  const Descriptor item = openItem(entry);
  if (!item.valid() && errno == EOPNOTSUPP) return changeByAnotherName(entry);
  const auto status = statusOf(item);
  if (!status) return check(false);
  change(OpenItem{_changes, item}, *status);
}

void AttributeWalk::changeByAnotherName(const Entry& entry) {
  SecondName item(_changes, entry);
  if (!item.status()) return check(false);
  change(item, *item.status());
}

// Owner first: giving an item away clears mode bits.
template <class Item>
void AttributeWalk::change(Item&& item, const struct stat& status) {
  if (isSomebodyElses(status)) return check(false);
  const bool givesAway = !hasOwnership(status);
  if (givesAway) check(item.changeOwner(_ownership.ownerOrSame(), _ownership.groupOrSame()) == 0);
  const bool hasLostBits = givesAway && (status.st_mode & kLostBits) != 0;
  if (hasMode(status) && !hasLostBits) return;
  check(item.changeMode(_mode) == 0);
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
