#pragma once

#include <memory>

#include "platform/files/EntryKind.h"
#include "platform/posix/Descriptor.h"

namespace installer {

struct ListedEntry {
  const char* name = nullptr;  // until the next entry is asked for
  EntryKind kind = EntryKind::unknown;
};

// The listing of one open folder as the system tells it, with "." and "..".
class FolderStream {
 public:
  FolderStream() = default;
  FolderStream(const FolderStream&) = delete;
  FolderStream& operator=(const FolderStream&) = delete;
  virtual ~FolderStream() = default;

  // Without a name at the end, where errno is 0, and after an error.
  [[nodiscard]] virtual ListedEntry next() = 0;
  // Begins again at the first entry.
  virtual void rewind() = 0;
  virtual int descriptor() const = 0;
};

// Owns the folder, which must be valid; null with errno set.
std::unique_ptr<FolderStream> openFolderStream(Descriptor folder);

}  // namespace installer
