#include "platform/files/FileSystemCalls.h"

#include <fcntl.h>
#include <stdio.h>
#include <unistd.h>

#include <cerrno>

namespace installer::syscalls {

int renameKeepingExisting(int fromFolder, const char* from, int toFolder, const char* to) {
  return ::renameatx_np(fromFolder, from, toFolder, to, RENAME_EXCL);
}

int flushFileSystem(int folder) {
  return ::fsync_volume_np(folder, SYNC_VOLUME_FULLSYNC | SYNC_VOLUME_WAIT);
}

int flushFile(int file) {
  if (::fcntl(file, F_FULLFSYNC) == 0) return 0;
  return ::fsync(file);
}

ssize_t copyRange(int, int, std::size_t) {
  errno = ENOSYS;
  return -1;
}

int openItem(int folder, const char* name) {
  return ::openat(folder, name, O_EVTONLY | O_SYMLINK | O_NONBLOCK | O_CLOEXEC);
}

ssize_t readLink(int item, char* target, std::size_t size) {
  return ::freadlink(item, target, size);
}

int changeOwnerOfItem(int item, uid_t owner, gid_t group) {
  return ::fchown(item, owner, group);
}

int changeModeOfItem(int item, mode_t mode) {
  return ::fchmod(item, mode);
}

int openFolderBeneath(int /*above*/, const char* /*path*/) {
  errno = ENOSYS;
  return -1;
}

int openFolderWithoutLinks(int /*start*/, const char* /*path*/, Beneath /*beneath*/) {
  errno = ENOSYS;
  return -1;
}

int openFolderAbove(int folder) {
  return ::openat(folder, "..", O_SEARCH | O_CLOEXEC);
}

timespec modificationTime(const struct stat& status) {
  return status.st_mtimespec;
}

}  // namespace installer::syscalls
