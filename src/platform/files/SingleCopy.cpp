#include "platform/files/SingleCopy.h"

#include <fmt/format.h>

#include <cerrno>

#include "platform/files/Ancestry.h"
#include "platform/files/Failure.h"
#include "platform/files/ItemCopy.h"
#include "platform/files/LinkedContent.h"
#include "platform/files/TreeRemoval.h"

namespace installer {

SingleCopy::SingleCopy(HeldFolders& folders, FileChanges& changes, const CopySource& from,
                       const std::string& to, ExistingItem existing)
    : _folders(folders), _changes(changes), _from(from), _to(to), _existing(existing) {}

std::optional<FileError> SingleCopy::run() {
  findSource();
  _place = _folders.place(_to);
  if (_existing != ExistingItem::replace) return copyItem();
  if (const int error = clearTheWay())
    return failure(FileError::kOther, _from.path, reasonOf(error));
  Failure failed = copyItem();
  if (failed && !_isNamed) removeOld();
  return failed;
}

void SingleCopy::findSource() {
  _source = _folders.entry(_from.path);
  const auto status = _source.status();
  if (!_from.within || !isLink(status)) return;
  Place content = openLinkedContent(_folders, _from.path, *_from.within);
  _source = _folders.behindLink(_source.owner, std::move(content));
  _isBehindLink = true;
}

std::optional<FileError> SingleCopy::copyItem() {
  const auto source = _source.status();
  if (!source) {
    const int error = errno;
    return failure(tellsMissing(error) ? FileError::kMissing : FileError::kOther, _from.path,
                   reasonOf(error));
  }
  if (_existing != ExistingItem::replace && old()) return answerExisting();
  return copy(*source);
}

// What stands at the destination. The root has no place.
std::optional<struct stat> SingleCopy::old() const {
  return _place.usable() ? statusOf(_place.folder.get(), _place.name)
                         : _folders.entry(_to).status();
}

// A tree is flushed once; a part of one gets its name all the same and the first error is told.
std::optional<FileError> SingleCopy::copy(const struct stat& source) {
  if (!_place.usable()) return failure(FileError::kOther, _from.path, reasonOf(_place.error));
  const bool isFolder = S_ISDIR(source.st_mode);
  ItemCopy item(_changes, isFolder ? Flush::later : Flush::eachFile, _source.owner, _from.mayOwn);
  TemporaryItem temporary(_changes, _place.folder.get(), Claimed::yes);
  const bool whole = item.build({_source.folder, _source.name, kindOf(source)}, temporary);
  Failure named;
  if (temporary.exists()) named = giveName(temporary, isFolder);
  if (whole) return named;
  const std::string below = item.failedItem().substr(_source.name.size());
  return failure(FileError::kOther, withoutTrailingSlashes(_from.path) + below, item.reason());
}

std::optional<FileError> SingleCopy::giveName(TemporaryItem& temporary, bool isFolder) {
  const int folder = _place.folder.get();
  const int flushed = isFolder ? _changes.flushFileSystem(folder) : 0;
  const int named = rename(temporary.name());
  if (named == 0) temporary.forget();
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

int SingleCopy::rename(const std::string& temporary) {
  const int folder = _place.folder.get();
  return _existing == ExistingItem::replace
             ? _changes.rename(folder, temporary, _place.name)
             : _changes.renameKeepingExisting(folder, temporary, _place.name);
}

// Removes what a rename cannot replace. 0 when nothing of it is left.
int SingleCopy::clearTheWay() {
  const auto found = old();
  if (!found || !isInTheWay(*found)) return 0;
  if (!_place.usable()) return _place.error;
  const int error = removeEntry(_changes, _place.folder.get(), _place.name, Heed::yes);
  findSource();                        // it can have been the old item, or below it
  return error == ENOENT ? 0 : error;  // somebody was quicker
}

bool SingleCopy::isInTheWay(const struct stat& old) {
  if (S_ISDIR(old.st_mode)) return true;
  const auto source = _source.status();
  return source && (S_ISDIR(source->st_mode) || isOwnPlace(*source, old));
}

// Another name of the same file is another place.
bool SingleCopy::isOwnPlace(const struct stat& source, const struct stat& old) const {
  if (identityOf(source) != identityOf(old)) return false;
  if (old.st_nlink == 1) return true;
  const Place named = _folders.place(_from.path);
  const int folder = _isBehindLink ? _source.folder : named.folder.get();
  const std::string& name = _isBehindLink ? _source.name : named.name;
  return _place.usable() && name == _place.name &&
         identityOf(folder) == identityOf(_place.folder.get());
}

void SingleCopy::removeOld() {
  if (!_place.usable()) return;
  (void)removeEntry(_changes, _place.folder.get(), _place.name);  // the failure is told already
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
