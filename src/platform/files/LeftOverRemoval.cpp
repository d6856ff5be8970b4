#include "platform/files/LeftOverRemoval.h"

#include <optional>
#include <utility>
#include <vector>

#include "platform/Interruption.h"
#include "platform/files/Ancestry.h"
#include "platform/files/Claim.h"
#include "platform/files/FolderReader.h"
#include "platform/files/Opening.h"
#include "platform/files/TemporaryNames.h"
#include "platform/files/TreeRemoval.h"

namespace installer {

// Removed when all names are read: some file systems skip entries of a folder that shrinks
// meanwhile.
void LeftOverRemoval::walk(Descriptor folder, int depth) {
  FolderReader reader(std::move(folder));
  std::vector<std::string> leftOvers;
  while (auto name = reader.next()) {
    checkInterruption();
    if (TemporaryNames::canBeOne(*name))
      leftOvers.push_back(std::move(*name));
    else if (_which == LeftOvers::below && reader.mayBeFolder() && depth + 1 < kMaximumDepth)
      walk(openFolder(reader.descriptor(), *name), depth + 1);
  }
  for (const std::string& name : leftOvers) {
    checkInterruption();
    removeIfLeftOver(reader.descriptor(), name);
  }
}

void LeftOverRemoval::removeIfLeftOver(int folder, const std::string& name) {
  const auto status = statusOf(folder, name);
  if (!status || !_users.trusts(status->st_uid)) return;
  Descriptor claimed;
  const bool isFolder = S_ISDIR(status->st_mode);
  if (_which == LeftOvers::within) {
    if (isFolder && !isNamedByUs(folder)) return;
    claimed = claimedEntry(folder, name, *status);
    if (!claimed.valid()) return;
  }
  // A folder that took a file's place meanwhile is none of ours. What stays, the next run tries
  // again.
  (void)(isFolder ? removeEntry(_changes, folder, name, Heed::yes) : _changes.unlink(folder, name));
}

// Whoever may rename in the folder could give a temporary name to a folder of root, which they
// could not remove themselves. A group that root lets write there is taken for root's own.
bool LeftOverRemoval::isNamedByUs(int folder) {
  const auto status = statusOf(folder, ".");
  return status && _users.isOwn(status->st_uid) &&
         ((status->st_mode & S_IWOTH) == 0 || (status->st_mode & S_ISVTX) != 0);
}

// What has the name must still be what was judged when it is claimed.
Descriptor LeftOverRemoval::claimedEntry(int folder, const std::string& name,
                                         const struct stat& status) {
  Descriptor entry =
      S_ISDIR(status.st_mode) ? openFolder(folder, name) : openRegularFile(folder, name).file;
  if (!entry.valid() || !claimLeftOver(entry)) return {};
  const auto now = statusOf(folder, name);
  const bool isSame = now && identityOf(*now) == identityOf(status) &&
                      identityOf(entry.get()) == identityOf(status);
  return isSame ? std::move(entry) : Descriptor();
}

}  // namespace installer
