#include "platform/files/TreeRemoval.h"

#include <cerrno>

#include "platform/Interruption.h"
#include "platform/files/FolderReader.h"
#include "platform/files/Opening.h"

namespace installer {

namespace {

// Whoever goes on adding entries to a folder does not keep us there.
constexpr int kMaximumPasses = 8;

class TreeRemoval {
 public:
  TreeRemoval(FileChanges& changes, Heed signals) : _changes(changes), _signals(signals) {}

  int remove(int folder, const std::string& name, int depth) {
    if (_signals == Heed::yes) checkInterruption();
    const auto status = statusOf(folder, name);
    if (!status) return errno;
    if (!S_ISDIR(status->st_mode)) return _changes.unlink(folder, name);
    return removeFolder(folder, name, depth);
  }

 private:
  int removeFolder(int folder, const std::string& name, int depth) {
    if (depth >= kMaximumDepth) return ELOOP;
    FolderReader reader(openFolder(folder, name));
    for (int pass = 1;; ++pass) {
      const bool progress = empty(reader, depth);
      // Tried whatever happened: a folder that cannot be listed can be empty.
      const int error = _changes.removeEmptyFolder(folder, name);
      if (error == 0 || !progress || pass == kMaximumPasses) return error;
      // Some file systems skip entries of a folder that shrinks while it is read.
      reader.rewind();
    }
  }

  // One pass over the folder; true when it removed something.
  bool empty(FolderReader& reader, int depth) {
    bool progress = false;
    while (const auto name = reader.next()) {
      if (remove(reader.descriptor(), *name, depth + 1) == 0) progress = true;
    }
    return progress;
  }

  FileChanges& _changes;
  Heed _signals;
};

}  // namespace

int removeEntry(FileChanges& changes, int folder, const std::string& name, Heed signals) {
  return TreeRemoval(changes, signals).remove(folder, name, 0);
}

}  // namespace installer
