#include "platform/files/TreeRemoval.h"

#include <cerrno>
#include <utility>

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
    return removeFolder(folder, name, openFolder(folder, name), depth);
  }

  int removeFolder(int folder, const std::string& name, Descriptor opened, int depth) {
    if (depth >= kMaximumDepth) return ELOOP;
    FolderReader reader(std::move(opened));
    for (int pass = 1;; ++pass) {
      const bool progress = empty(reader, depth);
      // Tried whatever happened: a folder that cannot be listed can be empty.
      const int error = _changes.removeEmptyFolder(folder, name);
      if (error == 0 || !progress || pass == kMaximumPasses) return error;
      // Some file systems skip entries of a folder that shrinks while it is read.
      reader.rewind();
    }
  }

 private:
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

int removeFolder(FileChanges& changes, int folder, const std::string& name,
                 const FileIdentity& which) {
  Descriptor opened = openFolder(folder, name);
  if (!opened.valid()) return errno;
  if (identityOf(opened.get()) != which) return ESTALE;
  return TreeRemoval(changes, Heed::no).removeFolder(folder, name, std::move(opened), 0);
}

}  // namespace installer
