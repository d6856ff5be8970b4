#pragma once

#include <optional>
#include <string>

#include "platform/FileManager.h"
#include "platform/files/FileChanges.h"
#include "platform/files/HeldFolders.h"
#include "platform/files/Opening.h"
#include "platform/files/TemporaryItem.h"

namespace installer {

// One copy of an item to a new place, as FileManager::copy promises.
class SingleCopy {
 public:
  SingleCopy(HeldFolders& folders, FileChanges& changes, const CopySource& from,
             const std::string& to, ExistingItem existing);

  // nullopt when the copy counts as done.
  [[nodiscard]] std::optional<FileError> run();

 private:
  using Failure = std::optional<FileError>;

  void findSource();
  Failure copyItem();
  Failure copy(const struct stat& source);
  Failure giveName(TemporaryItem& temporary, bool isFolder);
  [[nodiscard]] int rename(const std::string& temporary);

  std::optional<struct stat> old() const;

  [[nodiscard]] int clearTheWay();
  bool isInTheWay(const struct stat& old);
  bool isOwnPlace(const struct stat& source, const struct stat& old) const;
  void removeOld();

  Failure answerExisting() const;
  Failure failure(int code, const std::string& item, const std::string& reason) const;

  HeldFolders& _folders;
  FileChanges& _changes;
  const CopySource& _from;
  const std::string& _to;
  ExistingItem _existing;
  FoundEntry _source;  // what is copied: the item itself, or the file behind a link
  bool _isBehindLink = false;
  Place _place;           // where it is copied to
  bool _isNamed = false;  // the copy, or what there is of it, stands at `_to`
};

}  // namespace installer
