#pragma once

#include <memory>
#include <optional>
#include <string>

#include "platform/files/FolderStream.h"
#include "platform/posix/Descriptor.h"

namespace installer {

// How many folders deep a walk goes. Each level costs descriptors and stack; an item further down
// fails with ELOOP.
constexpr int kMaximumDepth = 1000;

// Reads the names of an open folder one by one, so that a folder of any size costs one buffer.
class FolderReader {
 public:
  // An invalid descriptor gives a reader without names and with errno's error.
  explicit FolderReader(Descriptor folder);

  // The next name other than "." and ".."; nullopt at the end or after an error.
  [[nodiscard]] std::optional<std::string> next();

  // That of the entry with the name just answered.
  EntryKind kind() const { return _kind; }
  // Whether that entry can be a folder. What is none costs no look then.
  bool mayBeFolder() const { return _kind == EntryKind::folder || _kind == EntryKind::unknown; }

  // Begins again at the first name.
  void rewind();

  // 0 unless the folder could not be opened or read.
  int error() const { return _error; }

  int descriptor() const;

 private:
  std::unique_ptr<FolderStream> _stream;  // null when there is nothing to read
  int _error = 0;
  EntryKind _kind = EntryKind::unknown;
};

}  // namespace installer
