#include "platform/overlay/Removal.h"

#include <sys/stat.h>

#include <cerrno>

#include "platform/Interruption.h"
#include "platform/files/FolderReader.h"
#include "platform/files/TemporaryNames.h"

namespace installer::overlay {

namespace {

int removeAtDepth(Tree& tree, const NodePtr& folder, const std::string& name, int depth) {
  checkInterruption();
  const Look entry = tree.look(folder, name);
  if (!entry.node) return entry.error;
  if (!entry.node->isFolder()) return tree.drop(folder, name);
  if (depth >= kMaximumDepth) return ELOOP;
  int left = 0;
  const auto names = tree.names(entry.node);
  for (const std::string& below : names.value_or(std::vector<std::string>()))
    if (removeAtDepth(tree, entry.node, below, depth + 1) != 0) left = ENOTEMPTY;
  return left != 0 ? left : tree.drop(folder, name);
}

class LeftOverWalk {
 public:
  LeftOverWalk(Tree& tree, UserContext& users, LeftOvers which)
      : _tree(tree), _users(users), _which(which) {}

  void run(const NodePtr& folder, int depth) {
    const auto names = _tree.names(folder);
    for (const std::string& name : names.value_or(std::vector<std::string>())) {
      checkInterruption();
      if (TemporaryNames::canBeOne(name))
        removeIfLeftOver(folder, name);
      else if (_which == LeftOvers::below && depth + 1 < kMaximumDepth &&
               _tree.kindOf(folder, name) == EntryKind::folder)
        enter(folder, name, depth + 1);
    }
  }

 private:
  void enter(const NodePtr& folder, const std::string& name, int depth) {
    const Look found = _tree.look(folder, name);
    if (found.node && found.node->isFolder()) run(found.node, depth);
  }

  void removeIfLeftOver(const NodePtr& folder, const std::string& name) {
    const Look entry = _tree.look(folder, name);
    if (!entry.node || !_users.trusts(entry.node->now.owner)) return;
    if (_which == LeftOvers::within && !mayBeOurs(*folder, *entry.node)) return;
    (void)removeEntry(_tree, folder, name);  // what stays, the next run tries again
  }

  // Of a folder where others work: links and pipes are none, and folders only where nobody else can
  // have given them the name.
  bool mayBeOurs(const Node& folder, const Node& entry) {
    if (entry.isFile()) return true;
    const mode_t mode = folder.now.mode;
    return entry.isFolder() && _users.isOwn(folder.now.owner) &&
           ((mode & S_IWOTH) == 0 || (mode & S_ISVTX) != 0);
  }

  Tree& _tree;
  UserContext& _users;
  const LeftOvers _which;
};

}  // namespace

int removeEntry(Tree& tree, const NodePtr& folder, const std::string& name) {
  return removeAtDepth(tree, folder, name, 0);
}

void removeLeftOversFrom(Tree& tree, UserContext& users, const NodePtr& folder, LeftOvers which) {
  if (folder->isFolder()) LeftOverWalk(tree, users, which).run(folder, 0);
}

}  // namespace installer::overlay
