#include "platform/overlay/Tree.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <utility>

#include "platform/files/FileReading.h"
#include "platform/files/FileSystemCalls.h"
#include "platform/files/FolderReader.h"
#include "platform/overlay/PathWalk.h"
#include "platform/posix/Uninterrupted.h"

namespace installer::overlay {

namespace {

constexpr mode_t kModeBits = 07777;

Status statusFrom(const struct stat& status) {
  Status all{.kind = kindOf(status), .owner = status.st_uid, .group = status.st_gid};
  all.mode = status.st_mode & kModeBits;
  all.names = S_ISDIR(status.st_mode) ? 1 : status.st_nlink;
  return all;
}

// A folder of the disk. No link is followed that the tree has not followed already.
Descriptor openRealFolder(const std::string& path) {
  const std::string whole = path.empty() ? "/" : path;
  const Descriptor named(
      syscalls::openFolderWithoutLinks(AT_FDCWD, whole.c_str(), syscalls::Beneath::no));
  if (named.valid()) return openFolder(named.get(), ".");
  return errno == ENOSYS ? openFolderFollowingLinks(AT_FDCWD, whole) : Descriptor();
}

std::string targetOfReal(const std::string& path) {
  std::array<char, PATH_MAX> target;
  const ssize_t length = ::readlink(path.c_str(), target.data(), target.size());
  return {target.data(), static_cast<std::size_t>(std::max<ssize_t>(length, 0))};
}

bool isDot(std::string_view name) {
  return name == "." || name == "..";
}

// A folder has one name, and lives on without it for whoever holds it.
void loseName(Node& node) {
  if (node.isFolder())
    node.folder->isGone = true;
  else
    --node.now.names;
}

FileIdentity nextIdentity() {
  static ino_t made = 0;
  return {static_cast<dev_t>(-1), ++made};  // of no disk
}

}  // namespace

Tree::Tree(const Maker& maker) : _maker(maker) {
  struct stat status {};
  (void)::lstat("/", &status);  // there is always a root
  _root = nodeOf(nullptr, "", status);
  _root->folder->above = _root;
}

Look Tree::workingFolder() {
  std::array<char, PATH_MAX> path;
  if (::getcwd(path.data(), path.size()) == nullptr) return {nullptr, errno};
  const Found found = walk(*this, _root, path.data(), LastLink::keep);
  return {found.node, found.error};
}

NodePtr Tree::above(const NodePtr& folder) {
  return folder->folder->above.lock();
}

// The names in a folder of the disk are asked for one by one until somebody wants them all.
Look Tree::look(const NodePtr& folder, std::string_view name) {
  if (!folder->isFolder()) return {nullptr, ENOTDIR};
  if (name == ".") return {folder, 0};
  if (name == "..") return {above(folder), 0};
  if (name.size() > NAME_MAX) return {nullptr, ENAMETOOLONG};
  Folder& inside = *folder->folder;
  const auto known = inside.entries.find(name);
  if (known == inside.entries.end() && (!inside.real || inside.isListed)) return {nullptr, ENOENT};
  const std::string owned(name);
  Entry& entry = entryOf(inside, name);
  if (!entry.isSeen) {
    const std::string path = *inside.real + "/" + owned;
    struct stat status {};
    const int error = ::lstat(path.c_str(), &status) == 0 ? 0 : errno;
    noteIfClosed(error, path);
    if (error != 0 && error != ENOENT && error != ENOTDIR) return {nullptr, error};
    entry.isSeen = true;
    if (error == 0) entry.now = entry.real = nodeOf(folder, owned, status);
  }
  return {entry.now, entry.now ? 0 : ENOENT};
}

Entry& Tree::entryOf(Folder& folder, std::string_view name) {
  auto [found, isNew] = folder.entries.try_emplace(std::string(name));
  if (isNew) {
    found->second.isSeen = !folder.real || folder.isListed;
    found->second.position = folder.nextPosition++;
  }
  return found->second;
}

// Of what has several names each leads to the same item.
NodePtr Tree::nodeOf(const NodePtr& folder, const std::string& name, const struct stat& status) {
  const FileIdentity identity = identityOf(status);
  const bool hasOtherNames = !S_ISDIR(status.st_mode) && status.st_nlink > 1;
  if (const auto known = _linked.find(identity); hasOtherNames && known != _linked.end())
    return known->second;
  auto node = std::make_shared<Node>();
  node->now = statusFrom(status);
  node->seen = node->now;
  node->identity = identity;
  const std::string path = folder ? *folder->folder->real + "/" + name : std::string();
  if (node->isFile())
    node->content = {.bytes = nullptr, .folder = folder->folder->real, .name = name};
  if (node->isLink()) node->target = targetOfReal(path);
  if (node->isFolder()) {
    node->folder = std::make_unique<Folder>();
    node->folder->real = std::make_shared<const std::string>(path);
    if (folder) node->folder->above = folder;
  }
  if (hasOtherNames) _linked.emplace(identity, node);
  return node;
}

std::optional<std::vector<std::string>> Tree::names(const NodePtr& folder) {
  errno = ENOTDIR;
  if (!folder->isFolder()) return std::nullopt;
  Folder& inside = *folder->folder;
  if (inside.real && !inside.isListed) fillFromDisk(inside);
  errno = inside.error;
  if (inside.error != 0) return std::nullopt;
  std::vector<std::pair<std::size_t, const std::string*>> there;
  for (const auto& [name, entry] : inside.entries)
    if (entry.now || !entry.isSeen) there.emplace_back(entry.position, &name);
  std::sort(there.begin(), there.end());
  std::vector<std::string> names;
  names.reserve(there.size());
  for (const auto& [position, name] : there) names.push_back(*name);
  return names;
}

void Tree::fillFromDisk(Folder& folder) {
  FolderReader reader(openRealFolder(*folder.real));
  std::size_t position = 0;
  while (const auto name = reader.next()) {
    Entry& entry = entryOf(folder, *name);
    entry.listed = reader.kind();
    entry.position = position++;
  }
  folder.nextPosition = std::max(folder.nextPosition, position);
  folder.error = reader.error();
  folder.isListed = folder.error == 0;
  noteIfClosed(folder.error, folder.real->empty() ? "/" : *folder.real);
}

EntryKind Tree::kindOf(const NodePtr& folder, const std::string& name) {
  const auto known = folder->folder->entries.find(name);
  const bool isListed = known != folder->folder->entries.end() && !known->second.isSeen;
  if (isListed && known->second.listed != EntryKind::unknown) return known->second.listed;
  const Look found = look(folder, name);
  return found.node ? found.node->now.kind : EntryKind::unknown;
}

std::optional<std::string> Tree::read(const Node& file, std::size_t maximum) {
  const Content& content = file.content;
  if (content.bytes) {
    errno = EFBIG;
    return content.bytes->size() <= maximum ? std::optional(*content.bytes) : std::nullopt;
  }
  const RegularFile opened = openReal(content);
  return opened.valid() ? readWhole(opened, maximum) : std::nullopt;
}

std::optional<std::string> Tree::beginning(const Node& file, std::size_t count) {
  if (file.content.bytes) return file.content.bytes->substr(0, count);
  const RegularFile opened = openReal(file.content);
  if (!opened.valid()) return std::nullopt;
  std::string bytes(count, '\0');
  const ssize_t length =
      uninterrupted([&] { return ::read(opened.file.get(), bytes.data(), bytes.size()); });
  if (length == -1) return std::nullopt;
  bytes.resize(static_cast<std::size_t>(length));
  return bytes;
}

// Invalid with errno set.
RegularFile Tree::openReal(const Content& content) {
  const Descriptor folder = openRealFolder(*content.folder);
  RegularFile opened;
  if (folder.valid()) opened = openRegularFile(folder.get(), content.name);
  if (!opened.valid()) noteIfClosed(errno, content.realPath());
  return opened;
}

// Leaves errno as it is.
void Tree::noteIfClosed(int error, const std::string& path) {
  if (error == EACCES || error == EPERM) _unknown.insert(path);
  errno = error;
}

NodePtr Tree::newNode(const NodePtr& folder, EntryKind kind, mode_t mode) const {
  auto node = std::make_shared<Node>();
  const Status& above = folder->now;
  node->now = {.kind = kind,
               .mode = mode,
               .owner = _maker.user,
               .group = syscalls::takesGroupOfFolder(above.mode) ? above.group : _maker.group};
  node->identity = nextIdentity();
  return node;
}

NodePtr Tree::newFile(const NodePtr& folder, mode_t mode, Content content) const {
  NodePtr node = newNode(folder, EntryKind::file, mode);
  node->content = std::move(content);
  return node;
}

// A folder hands the bit that rules the group on to the folders below it, where it has a meaning.
NodePtr Tree::newFolder(const NodePtr& folder, mode_t mode) const {
  NodePtr node = newNode(folder, EntryKind::folder, mode | (folder->now.mode & S_ISGID));
  node->folder = std::make_unique<Folder>();
  node->folder->above = folder;
  return node;
}

NodePtr Tree::newLink(const NodePtr& folder, std::string target) const {
  constexpr mode_t kModeOfLinks = 0777;
  NodePtr node = newNode(folder, EntryKind::link, kModeOfLinks);
  node->target = std::move(target);
  return node;
}

int Tree::put(const NodePtr& folder, const std::string& name, NodePtr node) {
  if (isDot(name)) return EINVAL;
  const Look old = look(folder, name);
  if (old.error != 0 && old.error != ENOENT) return old.error;
  if (const int error = refusal(folder)) return error;
  if (old.node) loseName(*old.node);
  if (node->isFolder()) node->folder->above = folder;
  entryOf(*folder->folder, name).now = std::move(node);
  return 0;
}

int Tree::drop(const NodePtr& folder, const std::string& name) {
  if (isDot(name)) return name == "." ? EINVAL : ENOTEMPTY;
  const Look old = look(folder, name);
  if (!old.node) return old.error;
  if (const int error = refusal(folder)) return error;
  loseName(*old.node);
  entryOf(*folder->folder, name).now = nullptr;
  return 0;
}

int Tree::refusal(const NodePtr& folder) {
  Folder& inside = *folder->folder;
  if (inside.isGone) return ENOENT;
  if (!inside.isReadOnly && inside.real) {
    struct statvfs mount {};
    const std::string path = inside.real->empty() ? "/" : *inside.real;
    const bool isKnown = ::statvfs(path.c_str(), &mount) == 0;
    inside.isReadOnly = isKnown && (mount.f_flag & ST_RDONLY) != 0;
  }
  return inside.isReadOnly.value_or(false) ? EROFS : 0;  // what is new is where changes are
}

bool isInside(const NodePtr& folder, const Node& other) {
  NodePtr current = folder;
  while (current && current.get() != &other) {
    NodePtr next = Tree::above(current);
    current = next == current ? nullptr : std::move(next);
  }
  return current != nullptr;
}

}  // namespace installer::overlay
