#include "platform/files/FolderReader.h"

#include <cerrno>
#include <string_view>
#include <utility>

#include "platform/posix/Memory.h"

namespace installer {

FolderReader::FolderReader(Descriptor folder) {
  if (folder.valid()) _stream = openFolderStream(std::move(folder));
  if (_stream) return;
  _error = errno;
  checkMemory(_error);
}

std::optional<std::string> FolderReader::next() {
  while (_stream) {
    const ListedEntry entry = _stream->next();
    if (entry.name == nullptr) {
      _error = errno;
      return std::nullopt;
    }
    const std::string_view name = entry.name;
    if (name == "." || name == "..") continue;
    _kind = entry.kind;
    return std::string(name);
  }
  return std::nullopt;
}

void FolderReader::rewind() {
  if (_stream) _stream->rewind();
}

int FolderReader::descriptor() const {
  return _stream ? _stream->descriptor() : -1;
}

}  // namespace installer
