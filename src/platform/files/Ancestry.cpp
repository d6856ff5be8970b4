#include "platform/files/Ancestry.h"

#include "platform/UserContext.h"
#include "platform/files/FileSystemCalls.h"
#include "platform/posix/Descriptor.h"

namespace installer {

FileIdentity identityOf(const struct stat& status) {
  return {status.st_dev, status.st_ino};
}

std::optional<FileIdentity> identityOf(int file) {
  struct stat status {};
  if (::fstat(file, &status) != 0) return std::nullopt;
  return identityOf(status);
}

bool isBorrowed(const struct stat& file, std::optional<uid_t> owner) {
  return owner && file.st_nlink > 1 && (file.st_uid != *owner || *owner == kRoot);
}

std::optional<std::set<FileIdentity>> ancestryOf(int folder) {
  std::set<FileIdentity> ancestry;
  Descriptor above;
  int current = folder;
  for (;;) {
    const auto identity = identityOf(current);
    if (!identity) return std::nullopt;
    if (!ancestry.insert(*identity).second) return ancestry;  // the root is above itself
    above = Descriptor(syscalls::openFolderAbove(current));
    current = above.get();
  }
}

std::optional<bool> isInside(int folder, const FileIdentity& other) {
  const auto ancestry = ancestryOf(folder);
  if (!ancestry) return std::nullopt;
  return ancestry->contains(other);
}

}  // namespace installer
