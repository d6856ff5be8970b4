#include "platform/overlay/Changes.h"

#include <set>

#include "platform/FileManager.h"

namespace installer::overlay {

namespace {

class Comparison {
 public:
  explicit Comparison(Tree& tree) : _tree(tree) {}

  std::vector<Change> run() {
    compare(_tree.root(), _tree.root());
    return std::move(_changes);
  }

 private:
  // At least one of the two is there. Both are the same where nothing was put in place of it.
  void compare(const NodePtr& old, const NodePtr& now) {
    if (const auto kind = kindOf(old, now)) tell(*kind, old, now);
    std::set<std::string> names;
    collect(old, names);
    if (now != old) collect(now, names);
    const std::size_t length = _path.size();
    for (const std::string& name : names) {
      const NodePtr oldEntry = realEntry(old, name);
      const NodePtr newEntry = entryNow(now, name);
      if (!oldEntry && !newEntry) continue;
      _path.append("/").append(name);
      compare(oldEntry, newEntry);
      _path.resize(length);
    }
  }

  // Names that nobody has looked at are as they were.
  static void collect(const NodePtr& node, std::set<std::string>& names) {
    if (!node || !node->isFolder()) return;
    for (const auto& [name, entry] : node->folder->entries)
      if (entry.isSeen) names.insert(name);
  }

  static const Entry* entryOf(const NodePtr& folder, const std::string& name) {
    if (!folder || !folder->isFolder()) return nullptr;
    const auto found = folder->folder->entries.find(name);
    return found == folder->folder->entries.end() ? nullptr : &found->second;
  }

  static NodePtr realEntry(const NodePtr& folder, const std::string& name) {
    const Entry* const entry = entryOf(folder, name);
    return entry != nullptr ? entry->real : nullptr;
  }

  static NodePtr entryNow(const NodePtr& folder, const std::string& name) {
    const Entry* const entry = entryOf(folder, name);
    return entry != nullptr ? entry->now : nullptr;
  }

  // nullopt when there is nothing to tell.
  std::optional<Change::Kind> kindOf(const NodePtr& old, const NodePtr& now) {
    if (!old) return Change::Kind::created;
    if (!now) return Change::Kind::removed;
    if (old != now && differs(*old, *now)) return Change::Kind::replaced;
    const Status& before = *old->seen;
    const bool hasOthers = before.owner != now->now.owner || before.group != now->now.group ||
                           before.mode != now->now.mode;
    if (hasOthers) return Change::Kind::attributes;
    if (old == now || now->isFolder()) return std::nullopt;
    return Change::Kind::rewritten;
  }

  // What cannot be read, or is too long to be, counts as different unless it is the very file. So
  // does what is not foreseen.
  bool differs(const Node& old, const Node& now) {
    if (old.now.kind != now.now.kind) return true;
    if (now.isLink()) return old.target != now.target;
    if (!now.isFile()) return false;
    if (!now.content.isForeseen) return true;
    if (!now.content.bytes && now.content.realPath() == old.content.realPath()) return false;
    const auto bytes = _tree.read(now, FileManager::kMaximumRead);
    return !bytes || bytes != _tree.read(old, FileManager::kMaximumRead);
  }

  void tell(Change::Kind kind, const NodePtr& old, const NodePtr& now) {
    Change change;
    change.path = _path;
    change.kind = kind;
    if (old) change.before = old->seen;
    if (now) change.after = now->now;
    change.old = old;
    change.now = now;
    _changes.push_back(std::move(change));
  }

  Tree& _tree;
  std::string _path;
  std::vector<Change> _changes;
};

}  // namespace

std::vector<Change> changesIn(Tree& tree) {
  return Comparison(tree).run();
}

}  // namespace installer::overlay
