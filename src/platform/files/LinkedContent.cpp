#include "platform/files/LinkedContent.h"

#include <fcntl.h>

#include <algorithm>
#include <cerrno>
#include <set>
#include <utility>

#include "platform/files/Ancestry.h"

namespace installer {

namespace {

// The folders' identities, but for missing ones and the root, which would hold everything.
std::set<FileIdentity> identitiesOf(HeldFolders& held, const std::vector<std::string>& folders) {
  std::set<FileIdentity> identities;
  for (const std::string& folder : folders) {
    if (const auto status = held.item(folder).status()) identities.insert(identityOf(*status));
  }
  if (const auto root = statusFollowingLinks(AT_FDCWD, "/")) identities.erase(identityOf(*root));
  return identities;
}

bool isBelowOne(const Descriptor& folder, const std::set<FileIdentity>& others) {
  const auto ancestry = ancestryOf(folder.get());
  return ancestry && std::any_of(others.begin(), others.end(), [&](const FileIdentity& other) {
           return ancestry->contains(other);
         });
}

std::string folderOf(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  return slash == std::string::npos ? "." : path.substr(0, slash + 1);
}

bool isRegularFile(const Place& place) {
  const auto status = statusOf(place.folder.get(), place.name);
  return status && S_ISREG(status->st_mode);
}

}  // namespace

Place openLinkedContent(HeldFolders& folders, const std::string& path,
                        const std::vector<std::string>& within) {
  const std::string link = withoutTrailingSlashes(path);
  FoundEntry named = folders.entry(link);
  Place file = std::move(named).behindLinks([](const struct stat&) { return true; });
  if (!file.usable()) return file;
  std::vector<std::string> all = within;
  all.push_back(folderOf(link));
  const bool isContent = isRegularFile(file) && isBelowOne(file.folder, identitiesOf(folders, all));
  return isContent ? std::move(file) : noPlace(EPERM);
}

}  // namespace installer
