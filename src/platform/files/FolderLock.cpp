#include "platform/files/FolderLock.h"

#include <fcntl.h>
#include <sys/file.h>

#include <cerrno>
#include <map>
#include <utility>

#include "platform/files/Ancestry.h"
#include "platform/files/Opening.h"
#include "platform/posix/Uninterrupted.h"

namespace installer {

namespace {

// What this process holds. A descriptor that is closed gives the lock back.
std::map<FileIdentity, std::weak_ptr<const Descriptor>>& heldFolders() {
  static std::map<FileIdentity, std::weak_ptr<const Descriptor>> folders;
  return folders;
}

}  // namespace

LockAttempt tryLockFolder(const std::string& folder) {
  if (!isUsablePath(folder)) return {};
  Descriptor descriptor = openFolderFollowingLinks(AT_FDCWD, folder);
  const auto identity = identityOf(descriptor.get());
  if (!identity) return {};
  std::weak_ptr<const Descriptor>& held = heldFolders()[*identity];
  if (const auto hold = held.lock()) return {.busy = false, .hold = hold};
  if (uninterrupted([&] { return ::flock(descriptor.get(), LOCK_EX | LOCK_NB); }) != 0)
    return {.busy = errno == EWOULDBLOCK, .hold = nullptr};
  const auto hold = std::make_shared<const Descriptor>(std::move(descriptor));
  held = hold;
  return {.busy = false, .hold = hold};
}

}  // namespace installer
