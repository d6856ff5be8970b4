#include "platform/files/SingleCopy.h"

#include <fcntl.h>
#include <fmt/format.h>

#include <cerrno>

#include "platform/files/Failure.h"
#include "platform/files/TreeRemoval.h"

namespace installer {

SingleCopy::SingleCopy(FileChanges& changes, const std::string& from, const std::string& to,
                       ExistingItem existing)
    : _changes(changes), _from(from), _to(to), _existing(existing) {}

std::optional<FileError> SingleCopy::run() {
  if (!isUsablePath(_from)) return failure(FileError::kMissing, _from, reasonOf(ENOENT));
  const auto source = statusOf(AT_FDCWD, withoutTrailingSlashes(_from));
  if (!source) {
    const int error = errno;
    return failure(tellsMissing(error) ? FileError::kMissing : FileError::kOther, _from,
                   reasonOf(error));
  }
  if (isUsablePath(_to) && statusOf(AT_FDCWD, withoutTrailingSlashes(_to))) {
    return answerExisting();
  }
  return copy(S_ISDIR(source->st_mode));
}

// A tree is flushed once; a part of one gets its name all the same and the first error is told.
std::optional<FileError> SingleCopy::copy(bool isFolder) {
  const Place place = openPlace(_to);
  if (!place.usable()) return failure(FileError::kOther, _from, reasonOf(place.error));
  ItemCopy item(_changes, isFolder ? Flush::later : Flush::eachFile);
  std::string temporary;
  const bool whole =
      item.build({AT_FDCWD, withoutTrailingSlashes(_from)}, place.folder.get(), temporary);
  Failure named;
  if (!temporary.empty()) named = giveName(place, temporary, isFolder);
  if (!whole) return failure(FileError::kOther, item.failedItem(), item.reason());
  return named;
}

std::optional<FileError> SingleCopy::giveName(const Place& place, const std::string& temporary,
                                              bool isFolder) {
  const int folder = place.folder.get();
  const int flushed = isFolder ? _changes.flushFileSystem(folder) : 0;
  const int named = _changes.renameKeepingExisting(folder, temporary, place.name);
  if (named != 0) (void)removeEntry(_changes, folder, temporary);
  if (named == EEXIST) return answerExisting();  // somebody was quicker
  int error = named;
  if (error == 0) error = flushed;
  if (error == 0) error = _changes.flushFolder(folder);
  if (error == 0) return std::nullopt;
  return failure(FileError::kOther, _from, reasonOf(error));
}

std::optional<FileError> SingleCopy::answerExisting() const {
  if (_existing == ExistingItem::keep) return std::nullopt;
  return failure(FileError::kExists, _from, reasonOf(EEXIST));
}

std::optional<FileError> SingleCopy::failure(int code, const std::string& item,
                                             const std::string& reason) const {
  return installer::failure(code, item, fmt::format("copied to \"{}\"", _to), reason);
}

}  // namespace installer
