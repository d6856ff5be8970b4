#include "platform/overlay/OverlayFileManager.h"

#include <fcntl.h>

#include <algorithm>
#include <cerrno>
#include <utility>

#include "platform/files/Failure.h"
#include "platform/files/Opening.h"
#include "platform/files/PathBelow.h"
#include "platform/overlay/Attributes.h"
#include "platform/overlay/PlannedCopy.h"
#include "platform/overlay/PlannedMerge.h"
#include "platform/overlay/Removal.h"
#include "platform/posix/Descriptor.h"

namespace installer::overlay {

namespace {

constexpr mode_t kPermissionBits = 0777;
constexpr mode_t kDefaultFileMode = 0666;
constexpr mode_t kDefaultFolderMode = 0777;
constexpr mode_t kLogMode = 0644;

bool answer(int error, const std::string& path, std::string_view done, FileError* target) {
  if (error != 0 && target != nullptr) *target = failure(path, done, error);
  return error == 0;
}

bool answerWithItem(int error, const std::string& path, std::string_view done, FileError* target) {
  if (error != 0 && target != nullptr) *target = failureWithItem(path, done, error);
  return error == 0;
}

Content contentOf(std::string_view bytes) {
  return {.bytes = std::make_shared<const std::string>(bytes), .folder = nullptr, .name = {}};
}

Content contentOfLog() {
  Content content = contentOf({});
  content.isForeseen = false;
  return content;
}

// Why a file is none that can be read; 0 when it is one.
int errorOfReading(const Found& found) {
  if (!found.node) return found.error;
  if (found.node->isFolder()) return EISDIR;
  if (!found.node->isFile()) return EINVAL;
  return isBorrowed(*found.node, found.owner) ? EPERM : 0;
}

struct NamedFolder {
  std::string path;
  NodePtr folder;
};

bool isBelowOne(const std::string& path, const NodePtr& folder,
                const std::vector<NamedFolder>& others) {
  return std::any_of(others.begin(), others.end(), [&](const NamedFolder& other) {
    return restBelow(other.path, path) && isInside(folder, *other.folder);
  });
}

}  // namespace

OverlayFileManager::OverlayFileManager(UserContext& users, const Maker& maker)
    : _users(users), _tree(maker) {}

std::shared_ptr<const void> OverlayFileManager::hold(const std::string& folder,
                                                     const std::optional<std::string>& newOwner) {
  const auto user = newOwner ? _users.findUser(*newOwner) : std::nullopt;
  return _held.hold(folder, user ? std::optional(user->uid) : std::nullopt);
}

bool OverlayFileManager::exists(const std::string& path, FileError* error) {
  return answerWithItem(_held.glimpse(path).error, path, "looked at", error);
}

bool OverlayFileManager::isDirectory(const std::string& path) {
  const Found found = _held.glimpse(path);
  return found.node && found.node->isFolder();
}

std::optional<uid_t> OverlayFileManager::owner(const std::string& path) {
  const Found found = _held.entry(path);
  return found.node ? std::optional(found.node->now.owner) : std::nullopt;
}

std::optional<std::vector<std::string>> OverlayFileManager::list(const std::string& folder,
                                                                 std::string_view prefix) {
  const Found found = _held.item(folder);
  auto names = found.node ? _tree.names(found.node) : std::nullopt;
  if (!names) return std::nullopt;
  std::erase_if(*names, [&](const std::string& name) { return !name.starts_with(prefix); });
  std::sort(names->begin(), names->end());
  return names;
}

std::optional<std::string> OverlayFileManager::read(const std::string& path, FileError* error) {
  return readFound(_held.item(path), path, error);
}

std::optional<std::string> OverlayFileManager::readUnlinked(const std::string& path,
                                                            FileOrigin* origin, FileError* error) {
  const Found found = _held.entry(path);
  if (found.node && found.node->isFile() && origin != nullptr)
    *origin = {found.node->now.owner, found.node->now.names > 1};
  return readFound(found, path, error);
}

std::optional<std::string> OverlayFileManager::readFound(const Found& found,
                                                         const std::string& path,
                                                         FileError* error) {
  int reason = errorOfReading(found);
  std::optional<std::string> bytes;
  if (reason == 0) {
    bytes = _tree.read(*found.node, kMaximumRead);
    reason = errno;
  }
  if (!bytes && error != nullptr) *error = readFailure(path, reason);
  return bytes;
}

bool OverlayFileManager::write(const std::string& path, std::string_view bytes,
                               ReplacedFile replaced, std::optional<mode_t> mode,
                               FileError* error) {
  return answer(replace(path, bytes, replaced, mode), path, "written", error);
}

int OverlayFileManager::replace(const std::string& path, std::string_view bytes,
                                ReplacedFile replaced, std::optional<mode_t> mode) {
  const Found place = _held.place(path);
  if (!place.folder) return place.error;
  const Look old = _tree.look(place.folder, place.name);
  if (!old.node && old.error != ENOENT) return old.error;  // whose it is could not be kept
  if (old.node && old.node->isFolder()) return EISDIR;
  Ownership ownership;
  if (replaced == ReplacedFile::takeOver && old.node && old.node->isFile()) {
    ownership = {old.node->now.owner, old.node->now.group};
    mode = old.node->now.mode & kPermissionBits;
  }
  return putFile(place, contentOf(bytes), mode.value_or(kDefaultFileMode & ~_tree.maker().mask),
                 ownership);
}

int OverlayFileManager::putFile(const Found& place, Content content, mode_t mode,
                                const Ownership& ownership) {
  NodePtr file = _tree.newFile(place.folder, mode, std::move(content));
  file->now.owner = ownership.owner.value_or(file->now.owner);
  file->now.group = ownership.group.value_or(file->now.group);
  return _tree.put(place.folder, place.name, std::move(file));
}

bool OverlayFileManager::copy(const CopySource& from, const std::string& to, ExistingItem existing,
                              FileError* error) {
  auto failed = PlannedCopy(_tree, _held, from, to, existing).run();
  if (failed && error != nullptr) *error = std::move(*failed);
  return !failed;
}

bool OverlayFileManager::hasContent(const CopySource& source) {
  if (!source.within || !isUsablePath(source.path)) return true;
  const Found found = _held.entry(source.path);
  const bool isLink = found.node && found.node->isLink();
  return !isLink || linkedContent(_tree, _held, source.path, *source.within).node;
}

void OverlayFileManager::merge(const std::string& from, const std::string& to,
                               const std::string& boundary) {
  PlannedMerge(_tree, _held, boundary).run(from, to);
}

bool OverlayFileManager::remove(const std::string& path, FileError* error) {
  return answerWithItem(removeAt(path), path, "removed", error);
}

int OverlayFileManager::removeAt(const std::string& path) {
  const Found place = _held.place(path);
  if (!place.folder) return place.error;
  if (place.name == "." || place.name == "..") return EINVAL;
  return removeEntry(_tree, place.folder, place.name);
}

void OverlayFileManager::removeLeftOvers(const std::string& folder, LeftOvers which) {
  const Found found = _held.item(folder);
  if (found.node) removeLeftOversFrom(_tree, _users, found.node, which);
}

bool OverlayFileManager::createDirectory(const std::string& path, Intermediates intermediates,
                                         const std::optional<FileAttributes>& attributes,
                                         FileError* error) {
  const bool create = intermediates == Intermediates::create;
  if (create && isDirectory(path)) return true;
  const int result = makeFolder(path, create, attributes);
  if (result == EEXIST && create && isDirectory(path)) return true;  // made on the way
  return answer(result, path, "created", error);
}

int OverlayFileManager::makeFolder(const std::string& path, bool withFoldersAbove,
                                   const std::optional<FileAttributes>& attributes) {
  if (!isUsablePath(path)) return ENOENT;
  if (withFoldersAbove) {
    if (const int error = makeFoldersAbove(withoutTrailingSlashes(path))) return error;
  }
  const Found place = _held.place(path);
  if (!place.folder) return place.error == EISDIR ? EEXIST : place.error;  // the root is there
  return makeFolderAt(place, attributes);
}

int OverlayFileManager::makeFoldersAbove(const std::string& path) {
  for (auto slash = path.find('/', 1); slash != std::string::npos;
       slash = path.find('/', slash + 1)) {
    const std::string above = path.substr(0, slash);
    if (isFolderAt(above)) continue;
    const Found place = _held.place(above);
    if (!place.folder) return place.error;
    if (const int error = makeFolderAt(place, std::nullopt)) return error;
  }
  return 0;
}

bool OverlayFileManager::isFolderAt(const std::string& path) {
  const Found found = _held.item(path);
  return found.node && found.node->isFolder();
}

int OverlayFileManager::makeFolderAt(const Found& place,
                                     const std::optional<FileAttributes>& attributes) {
  const Look old = _tree.look(place.folder, place.name);
  if (old.node) return EEXIST;
  if (old.error != ENOENT) return old.error;
  NodePtr folder = _tree.newFolder(place.folder, kDefaultFolderMode & ~_tree.maker().mask);
  if (attributes) {
    const Ownership ownership = resolveOwnership(_users, *attributes);
    if (!ownership.isComplete()) return EINVAL;
    folder->now.owner = *ownership.owner;
    folder->now.group = *ownership.group;
    folder->now.mode = attributes->mode;
  }
  return _tree.put(place.folder, place.name, std::move(folder));
}

bool OverlayFileManager::createFile(const std::string& path, std::string_view bytes,
                                    const FileAttributes& attributes) {
  const Found place = _held.place(path);
  if (!place.folder) return false;
  const NodePtr old = _tree.look(place.folder, place.name).node;
  if (old && old->isFolder()) return false;
  return putFile(place, contentOf(bytes), attributes.mode, resolveOwnership(_users, attributes)) ==
         0;
}

bool OverlayFileManager::flush(const std::string& folder, FileError* error) {
  const Found found = _held.item(folder);
  int result = found.error;
  if (found.node && !found.node->isFolder()) result = ENOTDIR;
  return answer(result, folder, "flushed", error);
}

bool OverlayFileManager::mayEnter(const std::string& path) {
  std::set<FileIdentity> links;
  return _held.namedFolder(path, links).node != nullptr;
}

bool OverlayFileManager::changeAttributesBelowAll(const std::vector<std::string>& folders,
                                                  const FileAttributes& attributes) {
  std::set<FileIdentity> links;
  std::vector<NamedFolder> opened;
  bool succeeded = true;
  for (const std::string& path : folders) {
    NodePtr folder = _held.namedFolder(path, links).node;
    if (folder && isBelowOne(path, folder, opened)) continue;  // comes with that one
    if (folder)
      opened.push_back({path, std::move(folder)});
    else if (!exists(path) || isDirectory(path))
      succeeded = false;  // while nothing is below a file
  }
  const Ownership ownership = resolveOwnership(_users, attributes);
  for (const auto& [path, folder] : opened) {
    if (!overlay::changeAttributesBelow(_tree, folder, ownership, attributes.mode, links))
      succeeded = false;
  }
  return succeeded;
}

int OverlayFileManager::openLog(const std::string& path) {
  if (makeLog(path) != 0) return -1;
  return openEntry(AT_FDCWD, "/dev/null", O_WRONLY).release();
}

// One that is the maker's own keeps its mode.
int OverlayFileManager::makeLog(const std::string& path) {
  const Found place = _held.place(path);
  if (!place.folder) return place.error;
  const NodePtr old = _tree.look(place.folder, place.name).node;
  const bool isOurs =
      old && old->isFile() && old->now.names == 1 && old->now.owner == _tree.maker().user;
  if (old && old->isFolder()) return EEXIST;
  const Ownership kept = isOurs ? Ownership{old->now.owner, old->now.group} : Ownership{};
  return putFile(place, contentOfLog(), isOurs ? old->now.mode : kLogMode, kept);
}

void OverlayFileManager::closeLog(int descriptor) {
  const Descriptor closed(descriptor);
}

LockAttempt OverlayFileManager::tryLock(const std::string& folder, FileError* error) {
  const Found found = _held.item(folder);
  int reason = found.error;
  if (found.node && !found.node->isFolder()) reason = ENOTDIR;
  if (reason == 0) return {.busy = false, .hold = std::make_shared<int>()};
  if (error != nullptr) *error = lockFailure(folder, reason);
  return {};
}

}  // namespace installer::overlay
