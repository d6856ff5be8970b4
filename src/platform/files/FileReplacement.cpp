#include "platform/files/FileReplacement.h"

#include <cerrno>

namespace installer {

namespace {

constexpr mode_t kPrivateMode = 0600;
constexpr mode_t kDefaultMode = 0666;

// Owner first: giving a file away clears mode bits.
int fill(FileChanges& changes, int descriptor, const NewFile& file) {
  if (const int error = changes.write(descriptor, file.bytes)) return error;
  giveOwnershipIfPossible(changes, descriptor, file.ownership);
  if (file.mode) {
    if (const int error = changes.changeMode(descriptor, *file.mode)) return error;
  }
  return changes.flush(descriptor);
}

int putInPlace(FileChanges& changes, const Place& place, const NewFile& file, int descriptor,
               const std::string& temporary) {
  if (const int error = fill(changes, descriptor, file)) return error;
  return changes.rename(place.folder.get(), temporary, place.name);
}

}  // namespace

int replaceFile(FileChanges& changes, const Place& place, const NewFile& file) {
  const int folder = place.folder.get();
  if (isFolder(folder, place.name)) return EISDIR;
  const std::string temporary = FileChanges::freeTemporaryName(folder);
  const mode_t mode = file.mode ? kPrivateMode : kDefaultMode;
  Descriptor descriptor;
  if (const int error = changes.createFile(folder, temporary, mode, descriptor)) return error;
  if (const int error = putInPlace(changes, place, file, descriptor.get(), temporary)) {
    (void)changes.unlink(folder, temporary);  // the first error is the one to tell
    return error;
  }
  return changes.flushFolder(folder);
}

}  // namespace installer
