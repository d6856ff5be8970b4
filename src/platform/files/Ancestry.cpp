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

namespace {

// Asks of the folder and of each one above it, until one is what is looked for or the root has been
// asked for. False when the way up is barred before.
template <class IsFound>
bool climb(int folder, IsFound isFound) {
  std::optional<FileIdentity> below;
  Descriptor above;
  int current = folder;
  for (;;) {
    const auto identity = identityOf(current);
    if (!identity) return false;
    if (identity == below || isFound(*identity)) return true;  // the root is above itself
    below = identity;
    above = Descriptor(syscalls::openFolderAbove(current));
    current = above.get();
  }
}

}  // namespace

std::optional<std::set<FileIdentity>> ancestryOf(int folder) {
  std::set<FileIdentity> ancestry;
  const auto collect = [&](const FileIdentity& item) { return !ancestry.insert(item).second; };
  if (!climb(folder, collect)) return std::nullopt;
  return ancestry;
}

std::optional<bool> isInside(int folder, const FileIdentity& other) {
  bool isFound = false;
  const auto isOther = [&](const FileIdentity& item) { return isFound = item == other; };
  if (!climb(folder, isOther)) return std::nullopt;
  return isFound;
}

}  // namespace installer
