#include "platform/files/FileReplacement.h"

#include <cerrno>
#include <string>

#include "platform/files/Claim.h"
#include "platform/files/TemporaryItem.h"

namespace installer {

namespace {

constexpr mode_t kPrivateMode = 0600;
constexpr mode_t kDefaultMode = 0666;
constexpr int kMaximumAttempts = 8;

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

// Whoever looked for left-overs before the file was claimed takes it for one: the next one has
// another name. In the end a file will do that somebody else keeps from being claimed.
int createClaimed(FileChanges& changes, int folder, mode_t mode, std::optional<TemporaryItem>& item,
                  Descriptor& file) {
  for (int attempt = 1;; ++attempt) {
    item.emplace(changes, folder);
    if (const int error = changes.createFile(folder, item->name(), mode, file)) {
      item->forget();
      return error;
    }
    if (claim(file) || attempt == kMaximumAttempts) return 0;
  }
}

}  // namespace

int replaceFile(FileChanges& changes, const Place& place, const NewFile& file) {
  const int folder = place.folder.get();
  if (isFolder(folder, place.name)) return EISDIR;
  const mode_t mode = file.mode ? kPrivateMode : kDefaultMode;
  std::optional<TemporaryItem> temporary;
  Descriptor descriptor;
  if (const int error = createClaimed(changes, folder, mode, temporary, descriptor)) return error;
  if (const int error = putInPlace(changes, place, file, descriptor.get(), temporary->name()))
    return error;
  temporary->forget();
  return changes.flushFolder(folder);
}

}  // namespace installer
