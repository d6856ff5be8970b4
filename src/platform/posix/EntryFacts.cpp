#include "platform/EntryFacts.h"

#include <fcntl.h>

#include "platform/files/Opening.h"

namespace installer {

std::optional<EntryFacts> entryAt(const std::string& path) {
  const auto status = statusOf(AT_FDCWD, path);
  if (!status) return std::nullopt;
  return EntryFacts{isLink(status), status->st_uid, status->st_mtime};
}

}  // namespace installer
