#pragma once

#include <dirent.h>

#include <optional>
#include <string>

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
  FolderReader(const FolderReader&) = delete;
  FolderReader& operator=(const FolderReader&) = delete;
  ~FolderReader();

  // The next name other than "." and ".."; nullopt at the end or after an error.
  [[nodiscard]] std::optional<std::string> next();

  // Whether the entry with the name just answered can be a folder. What is none costs no look then;
  // not every file system tells.
  bool mayBeFolder() const { return _mayBeFolder; }

  // Begins again at the first name.
  void rewind();

  // 0 unless the folder could not be opened or read.
  int error() const { return _error; }

  int descriptor() const;

 private:
  DIR* _stream = nullptr;
  int _error = 0;
  bool _mayBeFolder = true;
};

}  // namespace installer
