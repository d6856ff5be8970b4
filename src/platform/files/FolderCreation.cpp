#include "platform/files/FolderCreation.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "platform/files/Opening.h"

namespace installer {

namespace {

constexpr mode_t kDefaultMode = 0777;
constexpr mode_t kPrivateMode = 0700;

int makeFolderUnlessThere(HeldFolders& folders, FileChanges& changes, const std::string& path) {
  if (isFolder(folders.item(path).status())) return 0;
  const Place place = folders.place(path);
  if (!place.usable()) return place.error;
  const int error = changes.makeFolder(place.folder.get(), place.name, kDefaultMode);
  // Somebody else may have made it in between.
  return error == EEXIST && isFolder(folders.item(path).status()) ? 0 : error;
}

// Who may write into the folder above can have put another folder in the place of the new one.
bool isOurs(int folder) {
  struct stat status {};
  return ::fstat(folder, &status) == 0 && status.st_uid == ::geteuid();
}

int applyAttributes(FileChanges& changes, int folder, const Ownership& ownership, mode_t mode) {
  if (!ownership.isComplete()) return EINVAL;
  if (!isOurs(folder)) return EPERM;
  if (const int error = changes.changeOwner(folder, *ownership.owner, *ownership.group)) {
    return error;
  }
  return changes.changeMode(folder, mode);
}

}  // namespace

int makeFoldersAbove(HeldFolders& folders, FileChanges& changes, const std::string& path) {
  for (auto slash = path.find('/', 1); slash != std::string::npos;
       slash = path.find('/', slash + 1)) {
    const std::string above = path.substr(0, slash);
    if (const int error = makeFolderUnlessThere(folders, changes, above)) return error;
  }
  return 0;
}

int makeOwnedFolder(FileChanges& changes, const Place& place, const Ownership& ownership,
                    mode_t mode) {
  const int parent = place.folder.get();
  if (const int error = changes.makeFolder(parent, place.name, kPrivateMode)) return error;
  const Descriptor folder = openFolder(parent, place.name);
  const int error =
      folder.valid() ? applyAttributes(changes, folder.get(), ownership, mode) : errno;
  if (error != 0) (void)changes.removeEmptyFolder(parent, place.name);  // the first error counts
  return error;
}

}  // namespace installer
