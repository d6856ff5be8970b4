#pragma once

#include <optional>
#include <string>

#include "platform/FileManager.h"
#include "platform/files/FileChanges.h"
#include "platform/files/ItemCopy.h"
#include "platform/files/Opening.h"

namespace installer {

// One copy of an item to a new place, as FileManager::copy promises.
class SingleCopy {
 public:
  SingleCopy(FileChanges& changes, const CopySource& from, const std::string& to,
             ExistingItem existing);

  // nullopt when the copy counts as done.
  [[nodiscard]] std::optional<FileError> run();

 private:
  using Failure = std::optional<FileError>;

  void findSource();
  [[nodiscard]] std::optional<struct stat> sourceStatus()
      const;  // with errno set when there is none
  Failure copyItem();
  Failure copy(bool isFolder);
  Failure giveName(const Place& place, const std::string& temporary, bool isFolder);
  [[nodiscard]] int rename(const Place& place, const std::string& temporary);

  [[nodiscard]] int clearTheWay();
  bool isInTheWay(const struct stat& old) const;
  bool isOwnPlace(const struct stat& source, const struct stat& old) const;
  void removeOld();

  Failure answerExisting() const;
  Failure failure(int code, const std::string& item, const std::string& reason) const;

  FileChanges& _changes;
  const CopySource& _from;
  const std::string& _to;
  ExistingItem _existing;
  Entry _source;          // what is copied: the item itself, or the file behind a link
  Place _behindLink;      // holds that file's folder open
  int _sourceError = 0;   // why there is nothing to copy
  bool _isNamed = false;  // the copy, or what there is of it, stands at `_to`
};

}  // namespace installer
