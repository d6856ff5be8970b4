#include "platform/overlay/Attributes.h"

#include <sys/stat.h>

#include "platform/Interruption.h"
#include "platform/files/FolderReader.h"
#include "platform/overlay/HeldNodes.h"

namespace installer::overlay {

namespace {

class AttributeWalk {
 public:
  AttributeWalk(Tree& tree, const Ownership& ownership, mode_t mode,
                const std::set<FileIdentity>& spared)
      : _tree(tree), _ownership(ownership), _mode(mode), _spared(spared) {}

  bool run(const NodePtr& folder) {
    walk(folder, 0);
    return _succeeded;
  }

 private:
  void walk(const NodePtr& folder, int depth) {
    const auto names = _tree.names(folder);
    check(names.has_value());
    for (const std::string& name : names.value_or(std::vector<std::string>())) {
      checkInterruption();
      const Look entry = _tree.look(folder, name);
      if (entry.node)
        visit(folder, entry.node, depth);
      else
        check(false);
    }
  }

  void visit(const NodePtr& folder, const NodePtr& node, int depth) {
    if (_spared.contains(node->identity)) return;
    check(_ownership.isComplete());
    if (!isRight(node->now)) change(folder, *node);
    if (!node->isFolder()) return;
    if (depth + 1 >= kMaximumDepth) return check(false);
    walk(node, depth + 1);
  }

  // Nobody is the owner that is not known.
  void change(const NodePtr& folder, Node& node) {
    if (!node.isFolder() && isBorrowed(node, _ownership.ownerOrSame())) return check(false);
    if (_tree.refusal(folder) != 0) return check(false);
    Status& now = node.now;
    now.owner = _ownership.owner.value_or(now.owner);
    now.group = _ownership.group.value_or(now.group);
    if (!node.isLink()) now.mode = _mode;
  }

  bool isRight(const Status& now) const {
    return _ownership.owner.value_or(now.owner) == now.owner &&
           _ownership.group.value_or(now.group) == now.group &&
           (now.kind == EntryKind::link || now.mode == _mode);
  }

  void check(bool succeeded) { _succeeded = _succeeded && succeeded; }

  Tree& _tree;
  const Ownership& _ownership;
  const mode_t _mode;
  const std::set<FileIdentity>& _spared;
  bool _succeeded = true;
};

}  // namespace

bool changeAttributesBelow(Tree& tree, const NodePtr& folder, const Ownership& ownership,
                           mode_t mode, const std::set<FileIdentity>& spared) {
  return AttributeWalk(tree, ownership, mode, spared).run(folder);
}

}  // namespace installer::overlay
