#include "platform/files/LinkWalk.h"

#include <fcntl.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <optional>
#include <utility>

#include "platform/files/FileSystemCalls.h"

namespace installer {

namespace {

constexpr int kMaximumLinks = 40;  // as many as the system itself follows
constexpr uid_t kRoot = 0;

std::optional<std::string> targetOf(const Descriptor& link) {
  std::array<char, PATH_MAX> target;
  const ssize_t length = syscalls::readLink(link.get(), target.data(), target.size());
  if (length == -1) return std::nullopt;
  return std::string(target.data(), static_cast<std::size_t>(length));
}

class LinkWalk {
 public:
  explicit LinkWalk(const LinkJudge& mayFollow) : _mayFollow(mayFollow) {}

  Place run(const std::string& path) {
    Place place;
    place.error = setOut(path);
    while (place.error == 0 && !_rest.empty()) place.error = step();
    if (place.error != 0) return place;
    place.name = _item.valid() ? _name : ".";
    place.folder = std::move(_folder);
    return place;
  }

 private:
  // From the root, or from the folder that has been reached.
  int setOut(const std::string& path) {
    _rest = path;
    if (path.starts_with('/')) return hold(_folder, syscalls::openItem(AT_FDCWD, "/"));
    return _folder.valid() ? 0 : hold(_folder, syscalls::openItem(AT_FDCWD, "."));
  }

  int step() {
    if (_item.valid()) _folder = std::exchange(_item, Descriptor());
    _name = takeComponent();
    if (_name.empty() || _name == ".") return 0;
    if (_name == "..") return hold(_folder, syscalls::openFolderAbove(_folder.get()));
    if (const int error = hold(_item, syscalls::openItem(_folder.get(), _name.c_str())))
      return error;
    const auto status = statusOf(_item);
    return status && S_ISLNK(status->st_mode) ? follow(*status) : 0;
  }

  std::string takeComponent() {
    const std::size_t end = std::min(_rest.find('/'), _rest.size());
    std::string component = _rest.substr(0, end);
    _rest.erase(0, end + 1);
    return component;
  }

  int follow(const struct stat& link) {
    if (++_links > kMaximumLinks) return ELOOP;
    if (!_mayFollow(link)) return EPERM;
    const auto target = targetOf(_item);
    if (!target) return errno;
    _item = Descriptor();
    return setOut(_rest.empty() ? *target : *target + "/" + _rest);
  }

  static int hold(Descriptor& place, int descriptor) {
    if (descriptor == -1) return errno;
    place = Descriptor(descriptor);
    return 0;
  }

  const LinkJudge& _mayFollow;
  Descriptor _folder;
  Descriptor _item;  // the entry `_name` of the folder; none when the walk stands at the folder
  std::string _name;
  std::string _rest;  // of the path, behind that
  int _links = 0;
};

// The folders' identities, but for missing ones and the root, which would hold everything.
std::set<FileIdentity> identitiesOf(const std::vector<std::string>& folders) {
  std::set<FileIdentity> identities;
  for (const std::string& folder : folders) {
    const auto status =
        isUsablePath(folder) ? statusFollowingLinks(AT_FDCWD, folder) : std::nullopt;
    if (status) identities.insert(identityOf(*status));
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

Place openPlaceBehindLinks(const std::string& path, const LinkJudge& mayFollow) {
  return LinkWalk(mayFollow).run(withoutTrailingSlashes(path));
}

Descriptor openNamedFolder(const std::string& path, uid_t user, std::set<FileIdentity>& links) {
  const std::string named = withoutTrailingSlashes(path);
  const auto status = statusOf(AT_FDCWD, named);
  if (!status) return {};
  if (!S_ISLNK(status->st_mode)) return openFolder(AT_FDCWD, named);
  const Place place = openPlaceBehindLinks(named, [&](const struct stat& link) {
    // One with a second name can have been made for another place.
    const bool trusted = (link.st_uid == kRoot || link.st_uid == user) && link.st_nlink == 1;
    if (trusted) links.insert(identityOf(link));
    return trusted;
  });
  errno = place.error;
  return place.usable() ? openFolder(place.folder.get(), place.name) : Descriptor();
}

Place openFileWithin(const std::string& path, const std::vector<std::string>& within) {
  const std::string link = withoutTrailingSlashes(path);
  Place file = openPlaceBehindLinks(link, [](const struct stat&) { return true; });
  if (!file.usable()) return file;
  std::vector<std::string> folders = within;
  folders.push_back(folderOf(link));
  if (isRegularFile(file) && isBelowOne(file.folder, identitiesOf(folders))) return file;
  Place none;
  none.error = EPERM;
  return none;
}

}  // namespace installer
