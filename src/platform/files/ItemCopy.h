#pragma once

#include <sys/stat.h>

#include <functional>
#include <optional>
#include <string>
#include <utility>

#include "platform/files/FileChanges.h"
#include "platform/files/NewFileModes.h"
#include "platform/files/Opening.h"
#include "platform/files/TemporaryItem.h"
#include "platform/posix/Descriptor.h"

namespace installer {

// Who writes the bytes of a copied file down to the medium.
enum class Flush {
  eachFile,  // the copy, file by file
  later,     // the caller, for many at once
};

// Copies a file, a link (as a link) or a whole tree under a temporary name into an open folder.
// Permission bits without the set-id bits and modification times are kept, and what copies carry
// besides on this system (syscalls::copyAttributes); owners are the process's. No pipe, socket or
// device is opened.
class ItemCopy {
 public:
  // `owner`: who may own source files with several names; anybody when absent. `mayOwn`: whether
  // the item that is built may belong to a user; anybody when empty.
  ItemCopy(FileChanges& changes, Flush flush, std::optional<uid_t> owner = std::nullopt,
           std::function<bool(uid_t)> mayOwn = {})
      : _changes(changes), _flush(flush), _owner(owner), _mayOwn(std::move(mayOwn)) {}

  // Stops at the first item that cannot be copied and answers false. `temporary` is then what was
  // copied, be it a part of a tree, and does not exist when that is nothing.
  [[nodiscard]] bool build(const Entry& source, TemporaryItem& temporary);
  // The same into a folder of whose new files something is known.
  [[nodiscard]] bool build(const Entry& source, TemporaryItem& temporary, NewFileModes& modes);

  // After a failure: the path of the item, beginning with the entry's name, and why.
  const std::string& failedItem() const { return _failedItem; }
  const std::string& reason() const { return _reason; }

 private:
  // Where the copy appears.
  struct Target {
    int folder;
    const std::string& name;
    NewFileModes& modes;  // of the folder
  };

  [[nodiscard]] bool copyEntry(const Entry& source, const Target& copy, int depth);
  [[nodiscard]] bool copyFile(const Entry& source, const Target& copy);
  [[nodiscard]] bool copyLink(const Entry& source, const Target& copy);
  [[nodiscard]] bool copyFolder(const Entry& source, const Target& copy, int depth);
  [[nodiscard]] bool mayTake(const struct stat& opened);

  [[nodiscard]] int fillFile(const RegularFile& from, const Descriptor& to, NewFileModes& modes,
                             const std::optional<struct stat>& seen);
  [[nodiscard]] bool fillFolder(Descriptor from, const Target& copy, const struct stat& status,
                                int depth);
  [[nodiscard]] bool copyEntries(Descriptor from, int to, int depth);

  TemporaryItem* takeTemporary() { return std::exchange(_temporary, nullptr); }

  bool check(int error);
  [[nodiscard]] bool fail(const std::string& reason);

  FileChanges& _changes;
  Flush _flush;
  std::optional<uid_t> _owner;
  std::function<bool(uid_t)> _mayOwn;   // until it was asked
  TemporaryItem* _temporary = nullptr;  // until its maker has taken it
  std::string _item;                    // under way
  std::string _failedItem;
  std::string _reason;
};

}  // namespace installer
