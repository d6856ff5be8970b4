#include "platform/posix/TreeRemoval.h"

#include <cerrno>

#include "platform/posix/FolderReader.h"
#include "platform/posix/Opening.h"

namespace installer {

namespace {

class TreeRemoval {
 public:
  explicit TreeRemoval(FileChanges& changes) : _changes(changes) {}

  int remove(int folder, const std::string& name, int depth) {
    const auto status = statusOf(folder, name);
    if (!status) return errno;
    if (!S_ISDIR(status->st_mode)) return _changes.unlink(folder, name);
    return removeFolder(folder, name, depth);
  }

 private:
  int removeFolder(int folder, const std::string& name, int depth) {
    const int error = depth < kMaximumDepth ? empty(folder, name, depth) : ELOOP;
    // Tried all the same: a folder that cannot be listed can be empty.
    const int ownError = _changes.removeEmptyFolder(folder, name);
    return ownError != 0 && error != 0 ? error : ownError;
  }

  int empty(int folder, const std::string& name, int depth) {
    FolderReader reader(openFolder(folder, name));
    // Some file systems skip entries of a folder that shrinks while it is read.
    while (removeOnce(reader, depth)) reader.rewind();
    return reader.error() != 0 ? reader.error() : _error;
  }

  // One pass over the folder; true when it removed something and another one is worth it.
  bool removeOnce(FolderReader& reader, int depth) {
    bool removed = false;
    while (const auto name = reader.next()) {
      const int error = remove(reader.descriptor(), *name, depth + 1);
      if (error == 0) removed = true;
      if (error != 0 && _error == 0) _error = error;
    }
    return removed && reader.error() == 0;
  }

  FileChanges& _changes;
  int _error = 0;  // the first one below
};

}  // namespace

int removeEntry(FileChanges& changes, int folder, const std::string& name) {
  return TreeRemoval(changes).remove(folder, name, 0);
}

}  // namespace installer
