#include "support/OverlaySnapshot.h"

#include <limits>

#include "platform/overlay/PathWalk.h"

namespace installer::test {

namespace {

using overlay::Node;
using overlay::NodePtr;
using overlay::Tree;

std::string kindOf(const Node& node) {
  if (node.isFile()) return "file";
  if (node.isFolder()) return "folder";
  return node.isLink() ? "link" : "pipe";
}

std::string contentOf(Tree& tree, const Node& node) {
  if (node.isLink()) return node.target;
  if (!node.isFile()) return {};
  return tree.read(node, std::numeric_limits<std::size_t>::max()).value_or("(unreadable)");
}

void collect(Tree& tree, const NodePtr& node, const std::string& relative, TreeSnapshot& snapshot) {
  const mode_t mode = node->isLink() ? 0 : node->now.mode;
  snapshot[relative] = {kindOf(*node), mode, node->now.owner, node->now.group,
                        contentOf(tree, *node)};
  const auto names = tree.names(node);
  if (!names) return;
  for (const std::string& name : *names)
    if (const NodePtr below = tree.look(node, name).node)
      collect(tree, below, relative == "." ? name : relative + "/" + name, snapshot);
}

}  // namespace

TreeSnapshot snapshotOf(overlay::Tree& tree, const std::string& path) {
  TreeSnapshot snapshot;
  const overlay::Found found = walk(tree, tree.root(), path, overlay::LastLink::keep);
  if (found.node) collect(tree, found.node, ".", snapshot);
  return snapshot;
}

}  // namespace installer::test
