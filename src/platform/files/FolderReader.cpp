#include "platform/files/FolderReader.h"

#include <cerrno>
#include <string_view>

#include "platform/posix/Memory.h"

namespace installer {

FolderReader::FolderReader(Descriptor folder) {
  if (folder.valid()) _stream = ::fdopendir(folder.get());
  if (_stream == nullptr) {
    _error = errno;
    checkMemory(_error);
    return;
  }
  (void)folder.release();  // the stream owns it now
}

FolderReader::~FolderReader() {
  if (_stream != nullptr) (void)::closedir(_stream);  // nothing was written
}

std::optional<std::string> FolderReader::next() {
  while (_stream != nullptr) {
    errno = 0;
    const dirent* entry = ::readdir(_stream);
    if (entry == nullptr) {
      _error = errno;
      return std::nullopt;
    }
    const std::string_view name = entry->d_name;
    if (name == "." || name == "..") continue;
    _mayBeFolder = entry->d_type == DT_DIR || entry->d_type == DT_UNKNOWN;
    return std::string(name);
  }
  return std::nullopt;
}

void FolderReader::rewind() {
  if (_stream != nullptr) ::rewinddir(_stream);
}

int FolderReader::descriptor() const {
  return _stream == nullptr ? -1 : ::dirfd(_stream);
}

}  // namespace installer
