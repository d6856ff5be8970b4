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

// The new file under its temporary name.
struct MadeFile {
  std::optional<TemporaryItem> item;
  Descriptor file;
  std::optional<struct stat> status;  // when it was empty; absent when it was not looked at
};

// Owner first: giving a file away clears mode bits.
int fill(FileChanges& changes, const MadeFile& made, const NewFile& file) {
  const int descriptor = made.file.get();
  if (const int error = changes.write(descriptor, file.bytes)) return error;
  giveOwnershipIfPossible(changes, descriptor, file.ownership, made.status);
  if (file.mode) {
    if (const int error = changes.changeMode(descriptor, *file.mode)) return error;
  }
  return changes.flush(descriptor);
}

int putInPlace(FileChanges& changes, const Place& place, const NewFile& file,
               const MadeFile& made) {
  if (const int error = fill(changes, made, file)) return error;
  return changes.rename(place.folder.get(), made.item->name(), place.name);
}

// Whoever looked for left-overs before the file was claimed takes it for one: the next one has
// another name. In the end a file will do that somebody else keeps from being claimed.
int createClaimed(FileChanges& changes, int folder, mode_t mode, MadeFile& made) {
  for (int attempt = 1;; ++attempt) {
    made.item.emplace(changes, folder);
    if (const int error = changes.createFile(folder, made.item->name(), mode, made.file)) {
      made.item->forget();
      return error;
    }
    if (claim(made.file, &made.status) || attempt == kMaximumAttempts) return 0;
  }
}

}  // namespace

int replaceFile(FileChanges& changes, const Place& place, const NewFile& file) {
  const int folder = place.folder.get();
  const mode_t mode = file.mode ? kPrivateMode : kDefaultMode;
  MadeFile made;
  if (const int error = createClaimed(changes, folder, mode, made)) return error;
  if (const int error = putInPlace(changes, place, file, made)) return error;
  made.item->forget();
  return changes.flushFolder(folder);
}

}  // namespace installer
