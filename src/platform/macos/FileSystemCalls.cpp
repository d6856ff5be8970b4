#include "platform/files/FileSystemCalls.h"

#include <copyfile.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <stdio.h>
#include <sys/param.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <array>
#include <cerrno>

#include "platform/files/RenameInSteps.h"
#include "platform/posix/Descriptor.h"

namespace installer::syscalls {

namespace {

// Whether `path` names the item that has been opened, and no other by now.
bool isNamedBy(const struct stat& item, const char* path) {
  struct stat named {};
  return ::lstat(path, &named) == 0 && named.st_dev == item.st_dev && named.st_ino == item.st_ino;
}

// Whether the last call failed because the file system does not know it.
bool isUnknownThere() {
  return errno == ENOTSUP || errno == EINVAL || errno == ENOTTY;
}

// Came with macOS 13; null before.
using ReadOpenLink = ssize_t (*)(int, char*, std::size_t);
ReadOpenLink readOpenLink() {
  static const auto call = reinterpret_cast<ReadOpenLink>(::dlsym(RTLD_DEFAULT, "freadlink"));
  return call;
}

// A link's target never changes, so what is read by its name is its own when the name is the item's
// before and afterwards, and nobody has exchanged it for that moment alone: who may rename in the
// folder can.
ssize_t readNamedLink(int item, char* target, std::size_t size) {
  struct stat status {};
  std::array<char, MAXPATHLEN> path{};
  if (::fstat(item, &status) != 0 || ::fcntl(item, F_GETPATH, path.data()) != 0) return -1;
  if (isNamedBy(status, path.data())) {
    const ssize_t length = ::readlink(path.data(), target, size);
    if (length < 0 || isNamedBy(status, path.data())) return length;
  }
  errno = ESTALE;
  return -1;
}

bool canBeOpened(mode_t mode) {
  return S_ISREG(mode) || S_ISDIR(mode) || S_ISLNK(mode);
}

}  // namespace

// exFAT, SMB and NFS know no such renaming.
int renameKeepingExisting(int fromFolder, const char* from, int toFolder, const char* to) {
  if (::renameatx_np(fromFolder, from, toFolder, to, RENAME_EXCL) == 0) return 0;
  if (!isUnknownThere()) return -1;
  return renameInSteps(fromFolder, from, toFolder, to);
}

// Where volumes cannot be written down by themselves all of them are asked to be.
int flushFileSystem(int folder) {
  if (::fsync_volume_np(folder, SYNC_VOLUME_FULLSYNC | SYNC_VOLUME_WAIT) == 0) return 0;
  if (!isUnknownThere()) return -1;
  ::sync();
  return ::fsync(folder);
}

// A file system that cannot make the medium write is asked for as much as it can. Any other failure
// is one: what was to be written may be lost.
int flushFile(int file) {
  if (::fcntl(file, F_FULLFSYNC) == 0) return 0;
  if (!isUnknownThere()) return -1;
  return ::fsync(file);
}

ssize_t copyRange(int, int, std::size_t) {
  errno = ENOSYS;
  return -1;
}

// The mark of what came over the network is the source's: a copy that root makes is meant to be
// run.
void copyAttributes(int from, int to) {
  (void)::fcopyfile(from, to, nullptr, COPYFILE_ACL | COPYFILE_XATTR);  // not kept everywhere
  (void)::fremovexattr(to, "com.apple.quarantine", 0);                  // mostly there is none
}

mode_t modeToBeginWith(mode_t /*mode*/) {
  return S_IRUSR | S_IWUSR;
}

// A descriptor for events opens what it names, if for nothing else: with pipes and devices that is
// not without effect, and sockets refuse it.
int openItem(int folder, const char* name) {
  struct stat status {};
  if (::fstatat(folder, name, &status, AT_SYMLINK_NOFOLLOW) != 0) return -1;
  if (!canBeOpened(status.st_mode)) return errno = EOPNOTSUPP, -1;
  return ::openat(folder, name, O_EVTONLY | O_SYMLINK | O_NONBLOCK | O_CLOEXEC);
}

ssize_t readLink(int item, char* target, std::size_t size) {
  if (const ReadOpenLink read = readOpenLink()) return read(item, target, size);
  return readNamedLink(item, target, size);
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

int openItemBeneath(int /*above*/, const char* /*path*/) {
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

std::optional<std::string> reportedPath(const std::string& path) {
  const Descriptor item(::open(path.c_str(), O_EVTONLY | O_NONBLOCK | O_CLOEXEC));
  std::array<char, MAXPATHLEN> named{};
  if (!item.valid() || ::fcntl(item.get(), F_GETPATH, named.data()) != 0) return std::nullopt;
  return std::string(named.data());
}

timespec modificationTime(const struct stat& status) {
  return status.st_mtimespec;
}

// For one architecture, in the order of bytes of these machines, or for several.
bool isProgram(std::string_view beginning) {
  return beginning.starts_with("\xcf\xfa\xed\xfe") || beginning.starts_with("\xca\xfe\xba\xbe") ||
         beginning.starts_with("\xca\xfe\xba\xbf");
}

bool takesGroupOfFolder(mode_t) {
  return true;
}

}  // namespace installer::syscalls
