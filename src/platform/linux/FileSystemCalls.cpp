#include "platform/files/FileSystemCalls.h"

#include <fcntl.h>
#include <linux/fs.h>
#include <linux/openat2.h>
#include <stdio.h>
#include <sys/sendfile.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <string>

#include "platform/files/RenameInSteps.h"
#include "platform/posix/ExecutablePath.h"
#include "platform/posix/Uninterrupted.h"

namespace installer::syscalls {

namespace {

// Since Linux 6.6, the same number on every architecture that matters; the C library's headers may
// be older than the kernel.
constexpr long kChangeModeCall = 452;

// Up to here no file system shares blocks to speak of, and many do not copy to another one.
constexpr std::size_t kSmallFile = std::size_t{64} << 10;

int openResolved(int start, const char* path, unsigned flags, unsigned resolve) {
  open_how how{};
  how.flags = flags | O_CLOEXEC;
  how.resolve = resolve;
  return static_cast<int>(
      uninterrupted([&] { return ::syscall(SYS_openat2, start, path, &how, sizeof how); }));
}

}  // namespace

int renameKeepingExisting(int fromFolder, const char* from, int toFolder, const char* to) {
  if (::renameat2(fromFolder, from, toFolder, to, RENAME_NOREPLACE) == 0) return 0;
  if (errno != EINVAL && errno != ENOSYS) return -1;
  return renameInSteps(fromFolder, from, toFolder, to);
}

int flushFileSystem(int folder) {
  return ::syncfs(folder);
}

int flushFile(int file) {
  return ::fsync(file);
}

ssize_t copyRange(int from, int to, std::size_t length) {
  if (length <= kSmallFile) return ::sendfile(to, from, nullptr, length);
  return ::copy_file_range(from, nullptr, to, nullptr, length, 0);
}

// Copies carry none here.
void copyAttributes(int /*from*/, int /*to*/) {}

mode_t modeToBeginWith(mode_t mode) {
  return mode;
}

int openItem(int folder, const char* name) {
  return ::openat(folder, name, O_PATH | O_NOFOLLOW | O_CLOEXEC);
}

ssize_t readLink(int item, char* target, std::size_t size) {
  return ::readlinkat(item, "", target, size);
}

int changeOwnerOfItem(int item, uid_t owner, gid_t group) {
  return ::fchownat(item, "", owner, group, AT_EMPTY_PATH);
}

int changeModeOfItem(int item, mode_t mode) {
  if (::syscall(kChangeModeCall, item, "", mode, AT_EMPTY_PATH) == 0) return 0;
  // An older kernel, or a container's filter, does not know the call. The name below leads to the
  // very item of the descriptor.
  const std::string name = "/proc/self/fd/" + std::to_string(item);
  return ::chmod(name.c_str(), mode);
}

int openFolderBeneath(int above, const char* path) {
  return openResolved(above, path, O_RDONLY | O_DIRECTORY, RESOLVE_BENEATH | RESOLVE_NO_MAGICLINKS);
}

int openItemBeneath(int above, const char* path) {
  return openResolved(above, path, O_PATH, RESOLVE_BENEATH | RESOLVE_NO_MAGICLINKS);
}

int openFolderWithoutLinks(int start, const char* path, Beneath beneath) {
  return openResolved(start, path, O_PATH | O_DIRECTORY,
                      RESOLVE_NO_SYMLINKS | (beneath == Beneath::yes ? RESOLVE_BENEATH : 0U));
}

int openFolderAbove(int folder) {
  return ::openat(folder, "..", O_PATH | O_DIRECTORY | O_CLOEXEC);
}

std::optional<std::string> reportedPath(const std::string& path) {
  return resolved(path);
}

timespec modificationTime(const struct stat& status) {
  return status.st_mtim;
}

bool isProgram(std::string_view beginning) {
  return beginning.starts_with("\177ELF");
}

bool takesGroupOfFolder(mode_t folder) {
  return (folder & S_ISGID) != 0;
}

}  // namespace installer::syscalls
