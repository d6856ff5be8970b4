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

using HeldFolders = std::map<FileIdentity, std::weak_ptr<const Descriptor>>;

// What this process holds. A descriptor that is closed gives the lock back.
HeldFolders& heldFolders() {
  static HeldFolders folders;
  std::erase_if(folders, [](const auto& entry) { return entry.second.expired(); });
  return folders;
}

}  // namespace

LockAttempt tryLockFolder(const std::string& folder) {
  if (!isUsablePath(folder)) return {};
  Descriptor descriptor = openFolderFollowingLinks(AT_FDCWD, folder);
  const auto identity = identityOf(descriptor.get());
  if (!identity) return {};
  HeldFolders& held = heldFolders();
  if (const auto found = held.find(*identity); found != held.end())
    return {.busy = false, .hold = found->second.lock()};
  if (uninterrupted([&] { return ::flock(descriptor.get(), LOCK_EX | LOCK_NB); }) != 0)
    return {.busy = errno == EWOULDBLOCK, .hold = nullptr};
  const auto hold = std::make_shared<const Descriptor>(std::move(descriptor));
  held.emplace(*identity, hold);
  return {.busy = false, .hold = hold};
}

}  // namespace installer
