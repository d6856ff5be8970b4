#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>
#include <map>
#include <system_error>

#include "platform/Interruption.h"
#include "platform/PrivateRun.h"
#include "platform/files/Ancestry.h"
#include "platform/files/FileChanges.h"
#include "platform/files/FolderReader.h"
#include "platform/files/Opening.h"

namespace installer::privately {

namespace {

FileChanges withoutDoor() {
  return FileChanges([](FileOperation) { return 0; });
}

Stamp stampOf(const struct stat& status) {
  return {status.st_dev, status.st_ino, status.st_ctim.tv_sec, status.st_ctim.tv_nsec};
}

// One copy of a tree. Only this process works in the new one.
class TreeCopy {
 public:
  explicit TreeCopy(int target) : _target(target) {}

  // 0 or the system's error number; `path` is then where it has stopped.
  int run(Descriptor from, int depth = 0) {
    const Descriptor to(openat(_target, folder().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    struct stat status {};
    if (!to.valid() || fstat(from.get(), &status) != 0) return errno;
    if (depth > kMaximumDepth) return ELOOP;
    FolderReader reader(std::move(from));
    while (const auto name = reader.next()) {
      checkInterruption();
      const std::string above = path;
      path += path.empty() ? *name : "/" + *name;
      if (const int error = copyEntry(reader.descriptor(), to.get(), *name, depth)) return error;
      path = above;
    }
    return reader.error() != 0 ? reader.error() : finish(to.get(), status);
  }

  std::string path;  // of what is being copied, below the tree
  Copied copied;

 private:
  std::string folder() const { return path.empty() ? "." : path; }

  int copyEntry(int from, int to, const std::string& name, int depth) {
    struct stat status {};
    if (fstatat(from, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) return errno;
    copied.emplace(path, stampOf(status));
    if (S_ISDIR(status.st_mode)) return copyFolder(from, to, name, depth);
    if (S_ISLNK(status.st_mode)) return copyLink(from, to, name, status);
    if (!S_ISREG(status.st_mode)) return copyOther(to, name, status);
    if (status.st_nlink < 2) return copyFile(from, to, name);
    const auto [first, isNew] = _several.emplace(identityOf(status), path);
    if (isNew) return copyFile(from, to, name);
    return linkat(_target, first->second.c_str(), to, name.c_str(), 0) == 0 ? 0 : errno;
  }

  int copyFolder(int from, int to, const std::string& name, int depth) {
    Descriptor folder = openFolder(from, name);
    if (!folder.valid()) return errno;
    if (const int error = _changes.makeFolder(to, name, S_IRWXU)) return error;
    return run(std::move(folder), depth + 1);
  }

  int copyFile(int from, int to, const std::string& name) {
    const Descriptor source = openEntry(from, name, O_RDONLY | O_NOFOLLOW | O_NONBLOCK);
    struct stat status {};
    if (!source.valid() || fstat(source.get(), &status) != 0) return errno;
    Descriptor copy;
    if (const int error = _changes.createFile(to, name, S_IRUSR | S_IWUSR, copy)) return error;
    const auto size = static_cast<std::size_t>(status.st_size);
    if (const int error = _changes.copyBytes(source.get(), copy.get(), size)) return error;
    return finish(copy.get(), status);
  }

  int copyLink(int from, int to, const std::string& name, const struct stat& status) {
    std::array<char, PATH_MAX> target;
    const ssize_t length = readlinkat(from, name.c_str(), target.data(), target.size());
    if (length < 0) return errno;
    const std::string text(target.data(), static_cast<std::size_t>(length));
    if (const int error = _changes.makeLink(to, name, text)) return error;
    return finishEntry(to, name, status);
  }

  // Pipes, sockets and devices: only the entry, nothing is opened.
  int copyOther(int to, const std::string& name, const struct stat& status) {
    const mode_t mode = status.st_mode & (S_IFMT | S_IRWXU);
    if (mknodat(to, name.c_str(), mode, status.st_rdev) != 0) return errno;
    if (const int error = finishEntry(to, name, status)) return error;
    return fchmodat(to, name.c_str(), status.st_mode & ~static_cast<mode_t>(S_IFMT), 0) == 0
               ? 0
               : errno;
  }

  // Whoever is not root gives nothing away; the copy is his then.
  static bool mayStay(int error) { return error == EPERM || error == EINVAL; }

  static int finishEntry(int folder, const std::string& name, const struct stat& status) {
    const char* const entry = name.c_str();
    if (fchownat(folder, entry, status.st_uid, status.st_gid, AT_SYMLINK_NOFOLLOW) != 0 &&
        !mayStay(errno))
      return errno;
    const std::array times = {status.st_atim, status.st_mtim};
    return utimensat(folder, entry, times.data(), AT_SYMLINK_NOFOLLOW) == 0 ? 0 : errno;
  }

  // The owner first: giving a file away takes its set-id bits.
  static int finish(int file, const struct stat& status) {
    if (fchown(file, status.st_uid, status.st_gid) != 0 && !mayStay(errno)) return errno;
    if (fchmod(file, status.st_mode & ~static_cast<mode_t>(S_IFMT)) != 0) return errno;
    const std::array times = {status.st_atim, status.st_mtim};
    return futimens(file, times.data()) == 0 ? 0 : errno;
  }

  const int _target;
  FileChanges _changes = withoutDoor();
  std::map<FileIdentity, std::string> _several;  // files with several names, and the first of each
};

std::string told(const std::string& path, int error) {
  return "\"" + path + "\": " + std::generic_category().message(error);
}

}  // namespace

std::optional<Copied> copyTree(const std::string& from, const std::string& to,
                               std::string& reason) {
  Descriptor source = openFolderFollowingLinks(AT_FDCWD, from);
  if (!source.valid()) {
    reason = told(from, errno);
    return std::nullopt;
  }
  const bool isMade = mkdir(to.c_str(), S_IRWXU) == 0;
  const Descriptor target = isMade ? openFolder(AT_FDCWD, to) : Descriptor();
  if (!target.valid()) {
    reason = told(to, errno);
    return std::nullopt;
  }
  TreeCopy copy(target.get());
  const int error = copy.run(std::move(source));
  if (error == 0) return std::move(copy.copied);
  reason = told(copy.path.empty() ? from : from + "/" + copy.path, error);
  return std::nullopt;
}

bool isAsCopied(const Copied& copied, const std::string& folder, const std::string& path) {
  struct stat status {};
  const bool isThere = lstat((folder + "/" + path).c_str(), &status) == 0;
  const auto found = copied.find(path);
  if (found == copied.end()) return !isThere;
  return isThere && found->second == stampOf(status);
}

}  // namespace installer::privately
