#include "platform/files/SingleCopy.h"

#include <fcntl.h>
#include <fmt/format.h>

#include <cerrno>

#include "platform/files/Ancestry.h"
#include "platform/files/Failure.h"
#include "platform/files/LinkWalk.h"
#include "platform/files/TreeRemoval.h"

namespace installer {

SingleCopy::SingleCopy(FileChanges& changes, const CopySource& from, const std::string& to,
                       ExistingItem existing)
    : _changes(changes),
      _from(from),
      _to(to),
      _existing(existing),
      _source{AT_FDCWD, withoutTrailingSlashes(from.path)} {}

std::optional<FileError> SingleCopy::run() {
  findSource();
  if (_existing != ExistingItem::replace) return copyItem();
  if (const int error = clearTheWay())
    return failure(FileError::kOther, _from.path, reasonOf(error));
  Failure failed = copyItem();
  if (failed && !_isNamed) removeOld();
  return failed;
}

void SingleCopy::findSource() {
  if (!isUsablePath(_from.path)) {
    _sourceError = ENOENT;
  } else if (_from.within && isLink(_source.folder, _source.name)) {
    _behindLink = openFileWithin(_source.name, *_from.within);
    _sourceError = _behindLink.error;
    _source = {_behindLink.folder.get(), _behindLink.name};
  }
}

std::optional<struct stat> SingleCopy::sourceStatus() const {
  if (_sourceError == 0) return statusOf(_source.folder, _source.name);
  errno = _sourceError;
  return std::nullopt;
}

std::optional<FileError> SingleCopy::copyItem() {
  const auto source = sourceStatus();
  if (!source) {
    const int error = errno;
    return failure(tellsMissing(error) ? FileError::kMissing : FileError::kOther, _from.path,
                   reasonOf(error));
  }
  if (_existing != ExistingItem::replace && isUsablePath(_to) &&
      statusOf(AT_FDCWD, withoutTrailingSlashes(_to))) {
    return answerExisting();
  }
  return copy(S_ISDIR(source->st_mode));
}

// A tree is flushed once; a part of one gets its name all the same and the first error is told.
std::optional<FileError> SingleCopy::copy(bool isFolder) {
  const Place place = openPlace(_to);
  if (!place.usable()) return failure(FileError::kOther, _from.path, reasonOf(place.error));
  ItemCopy item(_changes, isFolder ? Flush::later : Flush::eachFile);
  std::string temporary;
  const bool whole = item.build(_source, place.folder.get(), temporary);
  Failure named;
  if (!temporary.empty()) named = giveName(place, temporary, isFolder);
  // Behind a link the item has but its name.
  const std::string& failed = _behindLink.usable() ? _from.path : item.failedItem();
  if (!whole) return failure(FileError::kOther, failed, item.reason());
  return named;
}

std::optional<FileError> SingleCopy::giveName(const Place& place, const std::string& temporary,
                                              bool isFolder) {
  const int folder = place.folder.get();
  const int flushed = isFolder ? _changes.flushFileSystem(folder) : 0;
  const int named = rename(place, temporary);
  if (named != 0) (void)removeEntry(_changes, folder, temporary);  // the first error counts
  if (named == EEXIST && _existing != ExistingItem::replace) {
    return answerExisting();  // somebody was quicker
  }
  _isNamed = named == 0;
  int error = named;
  if (error == 0) error = flushed;
  if (error == 0) error = _changes.flushFolder(folder);
  if (error == 0) return std::nullopt;
  return failure(FileError::kOther, _from.path, reasonOf(error));
}

int SingleCopy::rename(const Place& place, const std::string& temporary) {
  const int folder = place.folder.get();
  return _existing == ExistingItem::replace
             ? _changes.rename(folder, temporary, place.name)
             : _changes.renameKeepingExisting(folder, temporary, place.name);
}

// Removes what a rename cannot replace. 0 when nothing of it is left.
int SingleCopy::clearTheWay() {
  if (!isUsablePath(_to)) return 0;
  const auto old = statusOf(AT_FDCWD, withoutTrailingSlashes(_to));
  if (!old || !isInTheWay(*old)) return 0;
  const Place place = openPlace(_to);
  if (!place.usable()) return place.error;
  const int error = removeEntry(_changes, place.folder.get(), place.name);
  return error == ENOENT ? 0 : error;  // somebody was quicker
}

bool SingleCopy::isInTheWay(const struct stat& old) const {
  if (S_ISDIR(old.st_mode)) return true;
  const auto source = sourceStatus();
  return source && (S_ISDIR(source->st_mode) || isOwnPlace(*source, old));
}

// Another name of the same file is another place.
bool SingleCopy::isOwnPlace(const struct stat& source, const struct stat& old) const {
  if (identityOf(source) != identityOf(old)) return false;
  if (old.st_nlink == 1) return true;
  const Place named = openPlace(_from.path);
  const Place& from = _behindLink.usable() ? _behindLink : named;
  const Place to = openPlace(_to);
  return from.usable() && to.usable() && from.name == to.name &&
         identityOf(from.folder.get()) == identityOf(to.folder.get());
}

void SingleCopy::removeOld() {
  const Place place = openPlace(_to);
  if (!place.usable()) return;
  (void)removeEntry(_changes, place.folder.get(), place.name);  // the failure is told already
}

std::optional<FileError> SingleCopy::answerExisting() const {
  if (_existing == ExistingItem::keep) return std::nullopt;
  return failure(FileError::kExists, _from.path, reasonOf(EEXIST));
}

std::optional<FileError> SingleCopy::failure(int code, const std::string& item,
                                             const std::string& reason) const {
  return installer::failure(code, item, fmt::format("copied to \"{}\"", _to), reason);
}

}  // namespace installer
