#include "platform/overlay/HeldNodes.h"

#include <cerrno>
#include <utility>

#include "platform/files/Failure.h"
#include "platform/files/Opening.h"
#include "platform/files/PathBelow.h"

namespace installer::overlay {

namespace {

Found notFound(int error) {
  Found found;
  found.error = error;
  return found;
}

Found foundFolder(const NodePtr& folder) {
  return {.folder = folder, .name = ".", .node = folder, .error = 0, .owner = {}};
}

// Of two who get files with several names neither may see what is the other's.
std::optional<uid_t> stricter(std::optional<uid_t> one, std::optional<uid_t> other) {
  constexpr auto kNobody = static_cast<uid_t>(-1);
  if (!one || !other || *one == *other) return one ? one : other;
  return kNobody;
}

bool anyLink(const Node&) {
  return true;
}

}  // namespace

bool isBorrowed(const Node& file, std::optional<uid_t> owner) {
  return owner && file.now.names > 1 && (file.now.owner != *owner || *owner == kRoot);
}

std::shared_ptr<const void> HeldNodes::hold(const std::string& path,
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
  const auto held = std::make_shared<HeldNode>();
  held->path = withoutIdleEnd(path);  // else it would be below itself
  held->newOwner = newOwner;
  openAnew(*held);
  _held.push_back(held);
  return held;
}

std::optional<HeldNodes::Below> HeldNodes::find(const std::string& path, Itself itself) {
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

bool HeldNodes::open(HeldNode& held) {
  if (!held.folder && tellsMissing(held.error)) openAnew(held);
  return held.folder != nullptr;
}

void HeldNodes::openAnew(HeldNode& held) {
  held.links.clear();
  if (openWithoutLinks(held)) {
    held.error = 0;
    held.mayEnter = true;
  } else {
    openJudgingLinks(held);
  }
}

bool HeldNodes::openWithoutLinks(HeldNode& held) {
  const auto below = find(held.path, Itself::doesNot);
  if (below && !open(*below->held)) return false;
  const LinkJudge noLink = [](const Node&) { return false; };
  const Look start = below ? Look{below->held->folder, 0} : startOf(held.path);
  if (!start.node) return false;
  const Found found =
      walk(_tree, start.node, below ? below->rest : held.path, LastLink::follow, noLink);
  if (found.node && found.node->isFolder()) held.folder = found.node;
  return held.folder != nullptr;
}

void HeldNodes::openJudgingLinks(HeldNode& held) {
  std::set<uid_t> strangers;
  const Found named = entry(held.path);
  const Found found = behindLinks(held.path, [&](const Node& link) {
    held.links.insert(link.identity);
    if (!isTrusted(link)) strangers.insert(link.now.owner);
    return link.now.names == 1;  // with a second name it can have been made for another place
  });
  held.error = found.error;
  if (held.error == 0 && !found.node->isFolder()) held.error = ENOTDIR;
  if (held.error != 0) return;
  const bool isNamed = named.node && named.node->isLink();
  if (!isNamed) held.links.clear();
  held.mayEnter = !isNamed || strangers.empty();
  strangers.erase(found.node->now.owner);
  held.error = strangers.empty() ? 0 : EPERM;
  if (held.error == 0) held.folder = found.node;
}

bool HeldNodes::isTrusted(const Node& link) {
  return link.now.names == 1 && _users.isOwn(link.now.owner);
}

Look HeldNodes::openBeneath(const HeldNode& held, const std::string& rest) {
  const Found found = walk(_tree, held.folder, rest, LastLink::follow);
  if (!found.node) return {nullptr, found.error};
  if (!found.node->isFolder()) return {nullptr, ENOTDIR};
  if (!isInside(found.node, *held.folder)) return {nullptr, EPERM};
  return {found.node, 0};
}

// An absolute path asks nothing of the working folder, which can be closed or gone.
Look HeldNodes::startOf(const std::string& path) {
  return path.starts_with('/') ? Look{_tree.root(), 0} : _tree.workingFolder();
}

Found HeldNodes::fromStart(const std::string& path, LastLink last, const LinkJudge& mayFollow) {
  const Look start = startOf(path);
  if (!start.node) return notFound(start.error);
  return walk(_tree, start.node, path, last, mayFollow);
}

Found HeldNodes::place(const std::string& path) {
  if (!isUsablePath(path)) return notFound(ENOENT);
  if (const auto below = find(path, Itself::doesNot)) return placeBelow(*below);
  const std::string whole = withoutTrailingSlashes(path);
  const auto slash = whole.rfind('/');
  const bool hasFolder = slash != std::string::npos;
  Found place;
  place.name = hasFolder ? whole.substr(slash + 1) : whole;
  if (place.name.empty()) return notFound(EISDIR);  // the root
  const Found folder = fromStart(hasFolder ? whole.substr(0, slash + 1) : ".", LastLink::follow);
  place.error = folder.error;
  if (folder.node && !folder.node->isFolder()) place.error = ENOTDIR;
  if (place.error == 0) place.folder = folder.node;
  return place;
}

Found HeldNodes::placeBelow(const Below& below) {
  if (!open(*below.held)) return notFound(below.held->error);
  const std::string rest = withoutTrailingSlashes(below.rest);
  const std::size_t slash = rest.rfind('/');
  const bool isDirect = slash == std::string::npos;
  Found place;
  place.name = isDirect ? rest : rest.substr(slash + 1);
  if (place.name == "..") return notFound(EPERM);
  Look folder = openBeneath(*below.held, isDirect ? "." : rest.substr(0, slash));
  place.folder = std::move(folder.node);
  place.error = folder.error;
  return place;
}

Found HeldNodes::entry(const std::string& path) {
  if (!isUsablePath(path)) return notFound(ENOENT);
  const auto below = find(path, Itself::doesNot);
  return below ? entryBelow(*below) : fromStart(withoutTrailingSlashes(path), LastLink::keep);
}

Found HeldNodes::entryBelow(const Below& below) {
  Found found = placeBelow(below);
  found.owner = below.held->newOwner;
  if (!found.folder) return found;
  Look look = _tree.look(found.folder, found.name);
  found.node = std::move(look.node);
  found.error = look.error;
  return found;
}

Found HeldNodes::item(const std::string& path) {
  if (!isUsablePath(path)) return notFound(ENOENT);
  const auto below = find(path, Itself::counts);
  return below ? itemBelow(*below, path) : fromStart(path, LastLink::follow);
}

Found HeldNodes::itemBelow(const Below& below, const std::string& path) {
  if (!open(*below.held)) return notFound(below.held->error);
  if (below.rest.empty()) return foundFolder(below.held->folder);
  Found found = entryBelow(below);
  if (found.node && found.node->isLink()) {
    Found behind = behindLinks(path, anyLink);
    if (!behind.node) return notFound(behind.error);
    if (heldAround(behind).empty()) return notFound(EPERM);
    found = behindLink(below.held->newOwner, std::move(behind));
  }
  const bool isFolder = found.node && found.node->isFolder();
  if (found.folder && path.ends_with('/') && !isFolder) return notFound(ENOTDIR);
  return found;
}

// What is further down in a held folder and reached without leaving it.
Found HeldNodes::inside(const std::string& path) {
  const auto below = path.ends_with('/') ? std::nullopt : find(path, Itself::doesNot);
  if (!below || below->rest.find('/') == std::string::npos || !open(*below->held)) return {};
  return walkBeneath(_tree, below->held->folder, below->rest);
}

Found HeldNodes::glimpse(const std::string& path) {
  if (!isUsablePath(path)) return notFound(ENOENT);
  if (Found found = inside(path); found.node) return found;
  const auto below = find(path, Itself::counts);
  const bool isRefused = below && !open(*below->held) && !tellsMissing(below->held->error);
  if (!below || isRefused) return fromStart(path, LastLink::follow);
  if (below->rest.empty())
    return open(*below->held) ? itemBelow(*below, path) : fromStart(path, LastLink::follow);
  const Found found = entryBelow(*below);
  if (!found.node) return found;
  const std::string name = path.ends_with('/') ? found.name + "/" : found.name;
  return walk(_tree, found.folder, name, LastLink::follow);
}

Found HeldNodes::behindLinks(const std::string& path, const LinkJudge& mayFollow) {
  if (!isUsablePath(path)) return notFound(ENOENT);
  const auto below = find(path, Itself::doesNot);
  if (!below) return fromStart(withoutTrailingSlashes(path), LastLink::follow, mayFollow);
  const Found found = entryBelow(*below);
  if (!found.node) return notFound(found.error);
  return walk(_tree, found.folder, found.name, LastLink::follow, mayFollow);
}

std::vector<std::shared_ptr<HeldNode>> HeldNodes::heldAround(const Found& item) const {
  std::vector<std::shared_ptr<HeldNode>> found;
  if (!item.node) return found;
  for (const auto& known : _held) {
    auto held = known.lock();
    if (!held || !held->folder) continue;
    if (isInside(item.folder, *held->folder) || item.node == held->folder)
      found.push_back(std::move(held));
  }
  return found;
}

Found HeldNodes::behindLink(std::optional<uid_t> owner, Found place) const {
  for (const auto& held : heldAround(place)) owner = stricter(owner, held->newOwner);
  place.owner = owner;
  return place;
}

Look HeldNodes::namedFolder(const std::string& path, std::set<FileIdentity>& links) {
  if (!isUsablePath(path)) return {nullptr, ENOENT};
  const auto below = find(path, Itself::counts);
  if (below && below->rest.empty()) {
    HeldNode& held = *below->held;
    if (!open(held) || !held.mayEnter) return {nullptr, held.error == 0 ? EPERM : held.error};
    links.insert(held.links.begin(), held.links.end());
    return {held.folder, 0};
  }
  const Found named = entry(path);
  Found found = named;
  if (named.node && named.node->isLink())
    found = behindLinks(path, [&](const Node& link) {
      if (isTrusted(link)) links.insert(link.identity);
      return isTrusted(link);
    });
  if (!found.node) return {nullptr, found.error};
  return found.node->isFolder() ? Look{found.node, 0} : Look{nullptr, ENOTDIR};
}

}  // namespace installer::overlay
