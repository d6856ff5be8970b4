#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>
#include <set>
#include <system_error>

#include "platform/Interruption.h"
#include "platform/PrivateRun.h"
#include "platform/files/FolderReader.h"
#include "platform/files/Opening.h"
#include "platform/posix/Uninterrupted.h"

namespace installer::privately {

namespace {

using Kind = overlay::Change::Kind;

constexpr std::size_t kBlock = std::size_t{64} << 10;  // bytes

struct Failure {
  std::string path;
  int error;
};

std::optional<struct stat> entryIn(int folder, const std::string& name) {
  struct stat status {};
  if (folder < 0 || fstatat(folder, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0)
    return std::nullopt;
  return status;
}

overlay::Status told(const struct stat& status) {
  return {.kind = kindOf(status),
          .mode = status.st_mode & ~static_cast<mode_t>(S_IFMT),
          .owner = status.st_uid,
          .group = status.st_gid};
}

// The names in the folder; none in none.
std::set<std::string> namesIn(int folder, const std::string& path) {
  std::set<std::string> names;
  if (folder < 0) return names;
  FolderReader reader(openFolder(folder, "."));
  while (const auto name = reader.next()) names.insert(*name);
  if (reader.error() != 0) throw Failure{path, reader.error()};
  return names;
}

class Comparison {
 public:
  std::vector<Difference> found;

  // Either can be none.
  void compare(int before, int after, const std::string& path) {
    std::set<std::string> names = namesIn(before, path);
    names.merge(namesIn(after, path));
    const std::string prefix = path.empty() ? path : path + "/";
    for (const std::string& name : names) {
      checkInterruption();
      compareEntry(before, after, name, prefix + name);
    }
  }

 private:
  void compareEntry(int before, int after, const std::string& name, const std::string& path) {
    const auto old = entryIn(before, name);
    const auto now = entryIn(after, name);
    if (!old && !now) return;
    if (old && now)
      compareBoth(*old, *now, before, after, name, path);
    else
      add(old ? Kind::removed : Kind::created, old, now, path);
    const Descriptor oldFolder = folderIn(before, name, old, path);
    const Descriptor newFolder = folderIn(after, name, now, path);
    if (oldFolder.valid() || newFolder.valid()) compare(oldFolder.get(), newFolder.get(), path);
  }

  void compareBoth(const struct stat& old, const struct stat& now, int before, int after,
                   const std::string& name, const std::string& path) {
    if ((old.st_mode & S_IFMT) != (now.st_mode & S_IFMT) ||
        !hasSameContent(old, now, before, after, name, path))
      add(Kind::replaced, old, now, path);
    else if (told(old) != told(now))
      add(Kind::attributes, old, now, path);
  }

  void add(Kind kind, const std::optional<struct stat>& old, const std::optional<struct stat>& now,
           const std::string& path) {
    const auto orNone = [](const std::optional<struct stat>& status) {
      return status ? std::optional(told(*status)) : std::nullopt;
    };
    found.push_back({path, kind, orNone(old), orNone(now)});
  }

  static Descriptor folderIn(int above, const std::string& name,
                             const std::optional<struct stat>& status, const std::string& path) {
    if (!status || !S_ISDIR(status->st_mode)) return {};
    Descriptor folder = openFolder(above, name);
    if (!folder.valid()) throw Failure{path, errno};
    return folder;
  }

  bool hasSameContent(const struct stat& old, const struct stat& now, int before, int after,
                      const std::string& name, const std::string& path) {
    if (S_ISLNK(old.st_mode)) return targetOf(before, name) == targetOf(after, name);
    if (!S_ISREG(old.st_mode)) return true;
    return old.st_size == now.st_size && hasSameBytes(before, after, name, path);
  }

  static std::string targetOf(int folder, const std::string& name) {
    std::array<char, PATH_MAX> target;
    const ssize_t length = readlinkat(folder, name.c_str(), target.data(), target.size());
    return {target.data(), length > 0 ? static_cast<std::size_t>(length) : 0};
  }

  static bool hasSameBytes(int before, int after, const std::string& name,
                           const std::string& path) {
    const Descriptor old = openEntry(before, name, O_RDONLY | O_NOFOLLOW | O_NONBLOCK);
    const Descriptor now = openEntry(after, name, O_RDONLY | O_NOFOLLOW | O_NONBLOCK);
    if (!old.valid() || !now.valid()) throw Failure{path, errno};
    std::string oldBlock;
    std::string newBlock;
    do {
      checkInterruption();
      readBlock(old.get(), oldBlock, path);
      readBlock(now.get(), newBlock, path);
      if (oldBlock != newBlock) return false;
    } while (!oldBlock.empty());
    return true;
  }

  // Full, unless the file ends before.
  static void readBlock(int file, std::string& block, const std::string& path) {
    block.resize(kBlock);
    std::size_t length = 0;
    ssize_t count = 0;
    do {
      count = uninterrupted([&] { return read(file, block.data() + length, kBlock - length); });
      if (count < 0) throw Failure{path, errno};
      length += static_cast<std::size_t>(count);
    } while (count > 0 && length < kBlock);
    block.resize(length);
  }
};

}  // namespace

std::optional<std::vector<Difference>> differences(const std::string& before,
                                                   const std::string& after, std::string& reason) {
  const Descriptor old = openFolderFollowingLinks(AT_FDCWD, before);
  const int oldError = errno;
  const Descriptor now = openFolderFollowingLinks(AT_FDCWD, after);
  try {
    if (!old.valid()) throw Failure{before, oldError};
    if (!now.valid()) throw Failure{after, errno};
    Comparison comparison;
    comparison.compare(old.get(), now.get(), "");
    return std::move(comparison.found);
  } catch (const Failure& failure) {
    reason = "\"" + failure.path + "\": " + std::generic_category().message(failure.error);
    return std::nullopt;
  }
}

}  // namespace installer::privately
