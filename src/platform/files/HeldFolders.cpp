#include "platform/files/HeldFolders.h"

#include <fcntl.h>

#include <cerrno>
#include <utility>

#include "platform/files/Failure.h"
#include "platform/files/FileSystemCalls.h"
#include "platform/files/PathBelow.h"

namespace installer {

namespace {

FoundEntry notFound(int error) {
  FoundEntry entry;
  entry.error = error;
  return entry;
}

// An entry of a held folder that is open.
FoundEntry foundIn(const HeldFolder& held, std::string name) {
  FoundEntry entry;
  entry.folder = held.folder.get();
  entry.name = std::move(name);
  return entry;
}

FoundEntry atPath(std::string path, bool follow) {
  FoundEntry entry;
  entry.folder = AT_FDCWD;
  entry.name = std::move(path);
  entry.follow = follow;
  return entry;
}

// Of two who get files with several names neither may see what is the other's.
std::optional<uid_t> stricter(std::optional<uid_t> one, std::optional<uid_t> other) {
  constexpr auto kNobody = static_cast<uid_t>(-1);
  if (!one || !other || *one == *other) return one ? one : other;
  return kNobody;
}

}  // namespace

Place FoundEntry::behindLinks(const LinkJudge& mayFollow) && {
  if (error != 0) return noPlace(error);
  if (!opened.valid() && folder != AT_FDCWD) opened = Descriptor(syscalls::openItem(folder, "."));
  if (!opened.valid() && folder != AT_FDCWD) return noPlace(errno);
  return openPlaceBehindLinks(std::move(opened), name, mayFollow);
}

FoundEntry foundAt(Place place) {
  FoundEntry entry;
  entry.error = place.error;
  entry.opened = std::move(place.folder);
  entry.folder = entry.opened.get();
  entry.name = std::move(place.name);
  return entry;
}

std::optional<struct stat> FoundEntry::status() {
  errno = error;
  if (error != 0 || _status) return _status;
  _status = follow ? statusFollowingLinks(folder, name) : statusOf(folder, name);
  return _status;
}

RegularFile FoundEntry::openFile() {
  errno = error;
  if (error != 0) return {};
  if (follow) return openRegularFileFollowingLinks(folder, name);
  const bool isSeen = _status && S_ISREG(_status->st_mode);
  return openRegularFile(folder, name, isSeen ? Seen::yes : Seen::no);
}

Descriptor FoundEntry::openFolder() const {
  errno = error;
  if (error != 0) return {};
  return follow ? openFolderFollowingLinks(folder, name) : installer::openFolder(folder, name);
}

std::shared_ptr<const void> HeldFolders::hold(const std::string& path,
                                              std::optional<uid_t> newOwner) {
  if (!isUsablePath(path) || hasNoComponents(path)) return nullptr;
  std::erase_if(_held, [](const auto& held) { return held.expired(); });
  for (const auto& known : _held) {
    const auto held = known.lock();
    const auto rest = restBelow(held->path, path);
    if (!rest || !hasNoComponents(*rest)) continue;
    held->newOwner = stricter(held->newOwner, newOwner);
    return held;
  }
  const auto held = std::make_shared<HeldFolder>();
  held->path = withoutIdleEnd(path);  // else it would be below itself
  held->newOwner = newOwner;
  openAnew(*held);
  _held.push_back(held);
  return held;
}

// The innermost held folder around the path.
std::optional<HeldFolders::Below> HeldFolders::find(const std::string& path, Itself itself) {
  std::optional<Below> innermost;
  for (const auto& known : _held) {
    const auto held = known.lock();
    if (!held) continue;
    auto rest = restBelow(held->path, path);
    if (!rest || (rest->empty() && itself == Itself::doesNot)) continue;
    if (!innermost || rest->size() < innermost->rest.size())
      innermost = Below{held.get(), std::move(*rest)};
  }
  return innermost;
}

// What was refused stays refused; what was missing can have been made meanwhile.
bool HeldFolders::open(HeldFolder& held) {
  if (!held.folder.valid() && tellsMissing(held.error)) openAnew(held);
  return held.folder.valid();
}

// Where there is no link there is nobody to judge.
bool HeldFolders::openWithoutLinks(HeldFolder& held) {
  const auto below = find(held.path, Itself::doesNot);
  if (below && !open(*below->held)) return false;
  const int start = below ? below->held->folder.get() : AT_FDCWD;
  const std::string& path = below ? below->rest : held.path;
  const auto beneath = below ? syscalls::Beneath::yes : syscalls::Beneath::no;
  held.folder = Descriptor(syscalls::openFolderWithoutLinks(start, path.c_str(), beneath));
  return held.folder.valid();
}

void HeldFolders::openAnew(HeldFolder& held) {
  held.links.clear();
  if (openWithoutLinks(held)) {
    held.error = 0;
    held.mayEnter = true;
  } else {
    openJudgingLinks(held);
  }
}

void HeldFolders::openJudgingLinks(HeldFolder& held) {
  std::set<uid_t> strangers;
  const Place place = entry(held.path).behindLinks([&](const struct stat& link) {
    held.links.insert(identityOf(link));
    if (!isTrusted(link)) strangers.insert(link.st_uid);
    return link.st_nlink == 1;  // with a second name it can have been made for another place
  });
  held.error = place.error;
  if (!place.usable()) return;
  Descriptor folder(syscalls::openItem(place.folder.get(), place.name.c_str()));
  const auto status = folder.valid() ? statusOf(folder) : std::nullopt;
  held.error = status ? (S_ISDIR(status->st_mode) ? 0 : ENOTDIR) : errno;
  if (held.error != 0) return;
  const bool isNamed = isLink(entry(held.path).status());
  if (!isNamed) held.links.clear();
  held.mayEnter = !isNamed || strangers.empty();
  strangers.erase(status->st_uid);
  held.error = strangers.empty() ? 0 : EPERM;
  if (held.error == 0) held.folder = std::move(folder);
}

bool HeldFolders::isTrusted(const struct stat& link) {
  return link.st_nlink == 1 && _users.isOwn(link.st_uid);
}

// A system without such a call, and a link that names the place inside by an absolute path, are
// judged by where they led.
Descriptor HeldFolders::openBeneath(const HeldFolder& held, const std::string& rest) {
  Descriptor folder(syscalls::openFolderBeneath(held.folder.get(), rest.c_str()));
  if (folder.valid() || (errno != EXDEV && errno != ENOSYS && errno != EPERM && errno != EAGAIN))
    return folder;
  folder = openFolderFollowingLinks(held.folder.get(), rest);
  const auto identity = identityOf(held.folder.get());
  if (!folder.valid() || (identity && isInside(folder.get(), *identity).value_or(false)))
    return folder;
  errno = EPERM;
  return {};
}

Place HeldFolders::place(const std::string& path) {
  const auto below = isUsablePath(path) ? find(path, Itself::doesNot) : std::nullopt;
  return below ? placeBelow(*below) : openPlace(path);
}

Place HeldFolders::placeBelow(const Below& below) {
  if (!open(*below.held)) return noPlace(below.held->error);
  const std::string rest = withoutTrailingSlashes(below.rest);
  const std::size_t slash = rest.rfind('/');
  const bool isDirect = slash == std::string::npos;
  Place place;
  place.name = isDirect ? rest : rest.substr(slash + 1);
  if (place.name == "..") return noPlace(EPERM);
  place.folder = openBeneath(*below.held, isDirect ? "." : rest.substr(0, slash));
  if (!place.usable()) place.error = errno;
  return place;
}

FoundEntry HeldFolders::entry(const std::string& path) {
  if (!isUsablePath(path)) return notFound(ENOENT);
  const auto below = find(path, Itself::doesNot);
  return below ? entryBelow(*below) : atPath(withoutTrailingSlashes(path), false);
}

FoundEntry HeldFolders::entryBelow(const Below& below) {
  FoundEntry found = foundBelow(below);
  found.owner = below.held->newOwner;
  return found;
}

// What lies in the held folder itself needs no other folder to be opened.
FoundEntry HeldFolders::foundBelow(const Below& below) {
  std::string name = withoutTrailingSlashes(below.rest);
  if (name.find('/') != std::string::npos || name == ".." || !open(*below.held))
    return foundAt(placeBelow(below));
  return foundIn(*below.held, std::move(name));
}

FoundEntry HeldFolders::item(const std::string& path) {
  if (!isUsablePath(path)) return notFound(ENOENT);
  const auto below = find(path, Itself::counts);
  return below ? itemBelow(*below, path) : atPath(path, true);
}

FoundEntry HeldFolders::itemBelow(const Below& below, const std::string& path) {
  if (!open(*below.held)) return notFound(below.held->error);
  if (below.rest.empty()) return foundIn(*below.held, ".");
  FoundEntry found = entryBelow(below);
  if (isLink(found.status())) {
    Place place = std::move(found).behindLinks([](const struct stat&) { return true; });
    if (place.usable() && heldAround(place).empty()) return notFound(EPERM);
    found = behindLink(below.held->newOwner, std::move(place));
  }
  if (found.error == 0 && path.ends_with('/') && !isFolder(found.folder, found.name))
    return notFound(ENOTDIR);
  return found;
}

bool HeldFolders::exists(const std::string& path) {
  return openAtOnce(path, syscalls::openItemBeneath).valid() || glimpse(path).status();
}

bool HeldFolders::isDirectory(const std::string& path) {
  return openAtOnce(path, syscalls::openFolderBeneath).valid() || isFolder(glimpse(path).status());
}

// What is further down in a held folder, in one call; what that does not find can be there all the
// same, for a link may lead to it.
Descriptor HeldFolders::openAtOnce(const std::string& path, OpenBeneath call) {
  if (!isUsablePath(path) || path.ends_with('/')) return {};
  const auto below = find(path, Itself::doesNot);
  if (!below || below->rest.find('/') == std::string::npos || !open(*below->held)) return {};
  return Descriptor(call(below->held->folder.get(), below->rest.c_str()));
}

// As item(), but for a link that leads elsewhere.
FoundEntry HeldFolders::glimpse(const std::string& path) {
  if (!isUsablePath(path)) return notFound(ENOENT);
  const auto below = find(path, Itself::counts);
  if (!below || isRefused(*below->held)) return atPath(path, true);
  if (below->rest.empty()) return open(*below->held) ? itemBelow(*below, path) : atPath(path, true);
  FoundEntry found = entryBelow(*below);
  found.follow = true;
  if (path.ends_with('/')) found.name += '/';
  return found;
}

// Of a folder that is held itself, it is the name that lies elsewhere.
std::vector<std::shared_ptr<HeldFolder>> HeldFolders::heldAround(const Place& place) const {
  std::vector<std::shared_ptr<HeldFolder>> found;
  if (_held.empty() || !place.usable()) return found;
  const auto around = ancestryOf(place.folder.get());
  const auto item = statusOf(place.folder.get(), place.name);
  if (!around || !item) return found;
  for (const auto& known : _held) {
    auto held = known.lock();
    const auto identity = held ? identityOf(held->folder.get()) : std::nullopt;
    if (identity && (around->contains(*identity) || identityOf(*item) == *identity))
      found.push_back(std::move(held));
  }
  return found;
}

FoundEntry HeldFolders::behindLink(std::optional<uid_t> owner, Place place) const {
  for (const auto& held : heldAround(place)) owner = stricter(owner, held->newOwner);
  FoundEntry found = foundAt(std::move(place));
  found.owner = owner;
  return found;
}

bool HeldFolders::isRefused(HeldFolder& held) {
  return !open(held) && !tellsMissing(held.error);
}

Descriptor HeldFolders::openNamedFolder(const std::string& path, std::set<FileIdentity>& links) {
  errno = ENOENT;
  if (!isUsablePath(path)) return {};
  const auto below = find(path, Itself::counts);
  if (below && below->rest.empty()) {
    const bool mayEnter = open(*below->held) && below->held->mayEnter;
    errno = below->held->error == 0 ? EPERM : below->held->error;
    if (!mayEnter) return {};
    links.insert(below->held->links.begin(), below->held->links.end());
    return openBeneath(*below->held, ".");
  }
  FoundEntry named = entry(path);
  if (!isLink(named.status())) return named.openFolder();
  const Place place = std::move(named).behindLinks([&](const struct stat& link) {
    if (isTrusted(link)) links.insert(identityOf(link));
    return isTrusted(link);
  });
  errno = place.error;
  return place.usable() ? openFolder(place.folder.get(), place.name) : Descriptor();
}

}  // namespace installer
