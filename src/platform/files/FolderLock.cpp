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

// Kept open, and locked with that, until the process ends.
std::map<FileIdentity, Descriptor>& heldFolders() {
  static std::map<FileIdentity, Descriptor> folders;
  return folders;
}

int tryLock(int folder, int operation) {
  return uninterrupted([&] { return ::flock(folder, operation); }) == 0 ? 0 : errno;
}

bool waitForLock(int folder, void (*onWait)()) {
  const int error = tryLock(folder, LOCK_EX | LOCK_NB);
  if (error != EWOULDBLOCK) return error == 0;
  if (onWait != nullptr) onWait();
  return tryLock(folder, LOCK_EX) == 0;
}

}  // namespace

bool lockFolder(const std::string& folder, void (*onWait)()) {
  if (!isUsablePath(folder)) return false;
  Descriptor descriptor = openFolderFollowingLinks(AT_FDCWD, folder);
  const auto identity = identityOf(descriptor.get());
  if (!identity) return false;
  if (heldFolders().contains(*identity)) return true;
  if (!waitForLock(descriptor.get(), onWait)) return false;
  heldFolders().emplace(*identity, std::move(descriptor));
  return true;
}

}  // namespace installer
