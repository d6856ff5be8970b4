#include "platform/LockLook.h"

#include <fcntl.h>

#include <cerrno>

#include "platform/files/Failure.h"
#include "platform/files/FolderLock.h"
#include "platform/files/Opening.h"

namespace installer {

bool isFolderLocked(const std::string& folder, FileError* error) {
  errno = ENOENT;  // for a path that the system cannot take
  const Descriptor opened =
      isUsablePath(folder) ? openFolderFollowingLinks(AT_FDCWD, folder) : Descriptor();
  if (opened.valid() && canShareLock(opened)) return false;
  if (opened.valid() && errno == EWOULDBLOCK) return true;
  if (error != nullptr) *error = lockFailure(folder, errno);
  return false;
}

}  // namespace installer
