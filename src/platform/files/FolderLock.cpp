#include "platform/files/FolderLock.h"

#include <sys/file.h>

#include <cerrno>
#include <map>
#include <utility>

#include "platform/files/Ancestry.h"
#include "platform/posix/Uninterrupted.h"

namespace installer {

namespace {

using LockedFolders = std::map<FileIdentity, std::weak_ptr<const Descriptor>>;

// What this process holds. A descriptor that is closed gives the lock back.
LockedFolders& lockedFolders() {
  static LockedFolders folders;
  std::erase_if(folders, [](const auto& entry) { return entry.second.expired(); });
  return folders;
}

}  // namespace

LockAttempt tryLockFolder(Descriptor folder) {
  if (!folder.valid()) return {};
  const auto identity = identityOf(folder.get());
  if (!identity) return {};
  LockedFolders& held = lockedFolders();
  if (const auto found = held.find(*identity); found != held.end())
    return {.busy = false, .hold = found->second.lock()};
  if (uninterrupted([&] { return ::flock(folder.get(), LOCK_EX | LOCK_NB); }) != 0)
    return {.busy = errno == EWOULDBLOCK, .hold = nullptr};
  const auto hold = std::make_shared<const Descriptor>(std::move(folder));
  held.emplace(*identity, hold);
  return {.busy = false, .hold = hold};
}

}  // namespace installer
