#include "platform/files/EntryKind.h"

#include <dirent.h>

namespace installer {

EntryKind kindOf(const struct stat& status) {
  if (S_ISREG(status.st_mode)) return EntryKind::file;
  if (S_ISDIR(status.st_mode)) return EntryKind::folder;
  return S_ISLNK(status.st_mode) ? EntryKind::link : EntryKind::other;
}

EntryKind kindOfListed(unsigned char type) {
  switch (type) {
    case DT_REG:
      return EntryKind::file;
    case DT_DIR:
      return EntryKind::folder;
    case DT_LNK:
      return EntryKind::link;
    case DT_UNKNOWN:
      return EntryKind::unknown;
    default:
      return EntryKind::other;
  }
}

}  // namespace installer
