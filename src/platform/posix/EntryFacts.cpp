#include "platform/EntryFacts.h"

#include <fcntl.h>
#include <sys/stat.h>

#include "platform/files/Ancestry.h"
#include "platform/files/Opening.h"

namespace installer {

namespace {

constexpr mode_t kPermissions = 07777;

}  // namespace

std::optional<EntryFacts> entryAt(const std::string& path) {
  const auto status = statusOf(AT_FDCWD, path);
  if (!status) return std::nullopt;
  return EntryFacts{isLink(status),           status->st_uid,
                    status->st_mtime,         isFolder(status),
                    S_ISREG(status->st_mode), static_cast<mode_t>(status->st_mode & kPermissions)};
}

bool isSameItem(const std::string& path, const std::string& other) {
  const auto one = statusFollowingLinks(AT_FDCWD, path);
  const auto two = statusFollowingLinks(AT_FDCWD, other);
  return one && two && identityOf(*one) == identityOf(*two);
}

}  // namespace installer
