#include "platform/TreeLook.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <utility>

#include "platform/files/FolderReader.h"
#include "platform/files/Opening.h"

namespace installer {

namespace {

SeenKind seenKindOf(const struct stat& status) {
  switch (kindOf(status)) {
    case EntryKind::file:
      return SeenKind::file;
    case EntryKind::folder:
      return SeenKind::folder;
    case EntryKind::link:
      return SeenKind::link;
    default:
      return SeenKind::other;
  }
}

SeenEntry seen(const std::string& path, const struct stat& status) {
  constexpr mode_t kPermissions = 07777;
  SeenEntry entry;
  entry.path = path;
  entry.kind = seenKindOf(status);
  if (entry.kind == SeenKind::file) entry.size = static_cast<std::uint64_t>(status.st_size);
  entry.mode = static_cast<mode_t>(status.st_mode & kPermissions);
  entry.owner = status.st_uid;
  entry.group = status.st_gid;
  entry.modified = status.st_mtime;
  return entry;
}

// Empty for one that has gone meanwhile.
std::string linkTarget(int folder, const std::string& name) {
  std::array<char, PATH_MAX> target;
  const ssize_t size = ::readlinkat(folder, name.c_str(), target.data(), target.size());
  return size < 0 ? std::string() : std::string(target.data(), static_cast<std::size_t>(size));
}

class Look {
 public:
  explicit Look(const LookLimits& limits) : _limits(limits) {}

  // False when the folder could not be listed from its beginning to its end.
  bool list(Descriptor folder, const std::string& prefix, int depth) {
    FolderReader reader(std::move(folder));
    while (const auto name = reader.next()) {
      const std::string path = prefix + *name;
      _pathBytes += path.size();
      if (_seen.entries.size() >= _limits.entries || _pathBytes > _limits.pathBytes) {
        _seen.isWhole = false;
        return true;
      }
      add(reader.descriptor(), *name, path, depth);
    }
    return reader.error() == 0;
  }

  TreeLook answer() && {
    std::sort(_seen.entries.begin(), _seen.entries.end(),
              [](const SeenEntry& one, const SeenEntry& other) { return one.path < other.path; });
    return std::move(_seen);
  }

 private:
  void add(int folder, const std::string& name, const std::string& path, int depth) {
    const auto status = statusOf(folder, name);
    if (!status) {
      if (errno != ENOENT) _seen.isWhole = false;  // else it has gone meanwhile
      return;
    }
    SeenEntry entry = seen(path, *status);
    if (entry.kind == SeenKind::link) entry.target = linkTarget(folder, name);
    const bool isFolder = entry.kind == SeenKind::folder;
    _seen.entries.push_back(std::move(entry));
    if (isFolder) enter(folder, name, path, depth);
  }

  void enter(int folder, const std::string& name, const std::string& path, int depth) {
    if (depth >= _limits.depth || !list(openFolder(folder, name), path + "/", depth + 1))
      _seen.isWhole = false;
  }

  const LookLimits _limits;
  std::size_t _pathBytes = 0;
  TreeLook _seen;
};

}  // namespace

std::optional<TreeLook> lookBelow(const std::string& folder, const LookLimits& limits) {
  return lookBeneath(folder, {}, limits);
}

std::optional<TreeLook> lookBeneath(const std::string& folder, const std::string& below,
                                    const LookLimits& limits) {
  const Descriptor top = openFolderFollowingLinks(AT_FDCWD, folder);
  Look look(limits);
  if (!top.valid() || !look.list(openFolderBeneath(top.get(), below), {}, 1)) return std::nullopt;
  return std::move(look).answer();
}

}  // namespace installer
