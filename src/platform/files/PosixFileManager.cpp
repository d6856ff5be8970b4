#include "platform/files/PosixFileManager.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <utility>

#include "platform/files/AttributeWalk.h"
#include "platform/files/Failure.h"
#include "platform/files/FileReading.h"
#include "platform/files/FileReplacement.h"
#include "platform/files/FolderCreation.h"
#include "platform/files/FolderLock.h"
#include "platform/files/FolderReader.h"
#include "platform/files/LeftOverRemoval.h"
#include "platform/files/LinkedContent.h"
#include "platform/files/LogOpening.h"
#include "platform/files/Opening.h"
#include "platform/files/Ownership.h"
#include "platform/files/PathBelow.h"
#include "platform/files/SingleCopy.h"
#include "platform/files/TreeMerge.h"
#include "platform/files/TreeRemoval.h"

namespace installer {

namespace {

constexpr mode_t kPermissionBits = 0777;
constexpr mode_t kDefaultFolderMode = 0777;

// Whether there was no error; else tells it who asked for it.
bool answer(int error, const std::string& path, std::string_view done, FileError* target) {
  if (error != 0 && target != nullptr) *target = failure(path, done, error);
  return error == 0;
}

bool answerWithItem(int error, const std::string& path, std::string_view done, FileError* target) {
  if (error != 0 && target != nullptr) *target = failureWithItem(path, done, error);
  return error == 0;
}

// The bytes of a file just opened; errno is still that of a failed opening.
std::optional<std::string> readOpened(const RegularFile& file, const std::string& path,
                                      std::optional<uid_t> owner, FileError* error) {
  std::optional<std::string> bytes;
  if (file.valid() && isBorrowed(file.status, owner))
    errno = EPERM;
  else if (file.valid())
    bytes = readWhole(file, FileManager::kMaximumRead);
  if (!bytes && error != nullptr) *error = readFailure(path, errno);
  return bytes;
}

struct NamedFolder {
  std::string path;
  Descriptor folder;
};

// Whether the folder is below one of those, which its path tells and the disk confirms.
bool isBelowOne(const std::string& path, const Descriptor& folder,
                const std::vector<NamedFolder>& others) {
  return std::any_of(others.begin(), others.end(), [&](const NamedFolder& other) {
    const auto identity = identityOf(other.folder.get());
    return restBelow(other.path, path) && identity &&
           isInside(folder.get(), *identity).value_or(false);
  });
}

// What the file at the place hands over to the one that replaces it.
void takeOver(const struct stat& replaced, NewFile& file) {
  file.ownership = {replaced.st_uid, replaced.st_gid};
  // Not the right to act as the owner: the new bytes are not what he gave it to.
  file.mode = replaced.st_mode & kPermissionBits;
}

}  // namespace

PosixFileManager::PosixFileManager(UserContext& users)
    : _users(users),
      _folders(users),
      _changes([this](FileOperation operation) { return refusal(operation); }) {}

int PosixFileManager::refusal(FileOperation) {
  return 0;
}

std::shared_ptr<const void> PosixFileManager::hold(const std::string& folder,
                                                   const std::optional<std::string>& newOwner) {
  const auto user = newOwner ? _users.findUser(*newOwner) : std::nullopt;
  return _folders.hold(folder, user ? std::optional(user->uid) : std::nullopt);
}

bool PosixFileManager::exists(const std::string& path, FileError* error) {
  if (_folders.exists(path)) return true;
  return answerWithItem(errno, path, "looked at", error);
}

bool PosixFileManager::isDirectory(const std::string& path) {
  return _folders.isDirectory(path);
}

std::optional<uid_t> PosixFileManager::owner(const std::string& path) {
  const auto status = _folders.entry(path).status();
  if (!status) return std::nullopt;
  return status->st_uid;
}

std::optional<std::vector<std::string>> PosixFileManager::list(const std::string& folder,
                                                               std::string_view prefix) {
  FolderReader reader(_folders.item(folder).openFolder());
  std::vector<std::string> names;
  while (auto name = reader.next())
    if (name->starts_with(prefix)) names.push_back(std::move(*name));
  if (reader.error() != 0) return std::nullopt;
  std::sort(names.begin(), names.end());
  return names;
}

std::optional<std::string> PosixFileManager::read(const std::string& path, FileError* error) {
  FoundEntry found = _folders.item(path);
  return readOpened(found.openFile(), path, found.owner, error);
}

std::optional<std::string> PosixFileManager::readUnlinked(const std::string& path,
                                                          FileOrigin* origin, FileError* error) {
  FoundEntry found = _folders.entry(path);
  const RegularFile file = found.openFile();
  if (file.valid() && origin != nullptr) *origin = {file.status.st_uid, file.status.st_nlink > 1};
  return readOpened(file, path, found.owner, error);
}

bool PosixFileManager::write(const std::string& path, std::string_view bytes, ReplacedFile replaced,
                             std::optional<mode_t> mode, FileError* error) {
  return answer(replace(path, bytes, replaced, mode), path, "written", error);
}

int PosixFileManager::replace(const std::string& path, std::string_view bytes,
                              ReplacedFile replaced, std::optional<mode_t> mode) {
  const Place place = _folders.place(path);
  if (!place.usable()) return place.error;
  NewFile file{bytes, mode, {}};
  const auto old = statusOf(place.folder.get(), place.name);
  if (!old && errno != ENOENT) return errno;  // whose it is could not be kept
  if (isFolder(old)) return EISDIR;
  if (replaced == ReplacedFile::takeOver && old && S_ISREG(old->st_mode)) takeOver(*old, file);
  return replaceFile(_changes, place, file);
}

bool PosixFileManager::copy(const CopySource& from, const std::string& to, ExistingItem existing,
                            FileError* error) {
  auto failed = SingleCopy(_folders, _changes, from, to, existing).run();
  if (failed && error != nullptr) *error = std::move(*failed);
  return !failed;
}

bool PosixFileManager::hasContent(const CopySource& source) {
  if (!source.within || !isUsablePath(source.path)) return true;
  const auto status = _folders.entry(source.path).status();
  return !isLink(status) || openLinkedContent(_folders, source.path, *source.within).usable();
}

void PosixFileManager::merge(const std::string& from, const std::string& to,
                             const std::string& boundary) {
  TreeMerge(_folders, _changes, boundary).run(from, to);
}

bool PosixFileManager::remove(const std::string& path, FileError* error) {
  return answerWithItem(removeAt(path), path, "removed", error);
}

int PosixFileManager::removeAt(const std::string& path) {
  const Place place = _folders.place(path);
  if (!place.usable()) return place.error;
  if (place.name == "." || place.name == "..") return EINVAL;
  return removeEntry(_changes, place.folder.get(), place.name, Heed::yes);
}

void PosixFileManager::removeLeftOvers(const std::string& folder, LeftOvers which) {
  LeftOverRemoval(_changes, _users, which).run(_folders.item(folder).openFolder());
}

bool PosixFileManager::createDirectory(const std::string& path, Intermediates intermediates,
                                       const std::optional<FileAttributes>& attributes,
                                       FileError* error) {
  const bool create = intermediates == Intermediates::create;
  if (create && isDirectory(path)) return true;
  const int result = makeFolder(path, create, attributes);
  if (result == EEXIST && create && isDirectory(path)) return true;
  return answer(result, path, "created", error);
}

int PosixFileManager::makeFolder(const std::string& path, bool withFoldersAbove,
                                 const std::optional<FileAttributes>& attributes) {
  if (!isUsablePath(path)) return ENOENT;
  if (withFoldersAbove) {
    if (const int error = makeFoldersAbove(_folders, _changes, withoutTrailingSlashes(path)))
      return error;
  }
  const Place place = _folders.place(path);
  if (!place.usable()) return place.error == EISDIR ? EEXIST : place.error;  // the root is there
  if (!attributes) return _changes.makeFolder(place.folder.get(), place.name, kDefaultFolderMode);
  return makeOwnedFolder(_changes, place, resolveOwnership(_users, *attributes), attributes->mode);
}

bool PosixFileManager::createFile(const std::string& path, std::string_view bytes,
                                  const FileAttributes& attributes) {
  const Place place = _folders.place(path);
  if (!place.usable()) return false;
  const NewFile file{bytes, attributes.mode, resolveOwnership(_users, attributes)};
  return replaceFile(_changes, place, file) == 0;
}

bool PosixFileManager::flush(const std::string& folder, FileError* error) {
  const Descriptor opened = _folders.item(folder).openFolder();
  const int result = opened.valid() ? _changes.flushFileSystem(opened.get()) : errno;
  return answer(result, folder, "flushed", error);
}

bool PosixFileManager::mayEnter(const std::string& path) {
  std::set<FileIdentity> links;
  return _folders.openNamedFolder(path, links).valid();
}

bool PosixFileManager::changeAttributesBelowAll(const std::vector<std::string>& folders,
                                                const FileAttributes& attributes) {
  std::set<FileIdentity> links;
  std::vector<NamedFolder> opened;
  bool succeeded = true;
  for (const std::string& path : folders) {
    Descriptor folder = _folders.openNamedFolder(path, links);
    if (folder.valid() && isBelowOne(path, folder, opened)) continue;  // comes with that one
    if (folder.valid())
      opened.push_back({path, std::move(folder)});
    else if (!exists(path) || isDirectory(path))
      succeeded = false;  // while nothing is below a file
  }
  const Ownership ownership = resolveOwnership(_users, attributes);
  for (auto& [path, folder] : opened) {
    AttributeWalk walk(_changes, ownership, attributes.mode, links);
    if (!walk.changeBelow(std::move(folder))) succeeded = false;
  }
  return succeeded;
}

int PosixFileManager::openLog(const std::string& path) {
  const Place place = _folders.place(path);
  return place.usable() ? openLogFile(_changes, place) : -1;
}

void PosixFileManager::closeLog(int descriptor) {
  const Descriptor closed(descriptor);
}

LockAttempt PosixFileManager::tryLock(const std::string& folder, FileError* error) {
  LockAttempt attempt = tryLockFolder(_folders.item(folder).openFolder());
  if (!attempt.busy && !attempt.hold && error != nullptr) *error = lockFailure(folder, errno);
  return attempt;
}

}  // namespace installer
