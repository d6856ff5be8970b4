#pragma once

#include <sys/types.h>

#include <functional>
#include <optional>
#include <string>
#include <utility>

#include "platform/overlay/Tree.h"

namespace installer::overlay {

// Copies a file, a link (as a link) or a whole tree, which gets no name yet. The bytes of a file
// are shared, so that its size costs nothing. Rules and words are those of
// platform/files/ItemCopy.h.
class NodeCopy {
 public:
  // `owner` and `mayOwn` as there.
  explicit NodeCopy(Tree& tree, std::optional<uid_t> owner = std::nullopt,
                    std::function<bool(uid_t)> mayOwn = {})
      : _tree(tree), _owner(owner), _mayOwn(std::move(mayOwn)) {}

  // The copy for a place in the folder `to`, as far as it got before the first item that cannot be
  // copied; null when nothing could. whole() tells.
  NodePtr build(const std::string& name, const NodePtr& source, const NodePtr& to);

  bool whole() const { return _reason.empty(); }
  // After a failure: the path of the item, beginning with the source's name, and why.
  const std::string& failedItem() const { return _failedItem; }
  const std::string& reason() const { return _reason; }

 private:
  NodePtr copyItem(const NodePtr& source, const NodePtr& to, int depth);
  NodePtr copyFile(const Node& source, const NodePtr& to);
  NodePtr copyLink(const Node& source, const NodePtr& to);
  NodePtr copyFolder(const NodePtr& source, const NodePtr& to, int depth);
  bool copyEntries(const NodePtr& source, const NodePtr& copy, int depth);
  bool mayTake(const Node& source);
  NodePtr fail(int error);
  NodePtr fail(const std::string& reason);

  Tree& _tree;
  std::optional<uid_t> _owner;
  std::function<bool(uid_t)> _mayOwn;  // until it was asked
  std::string _item;                   // under way
  std::string _failedItem;
  std::string _reason;
};

}  // namespace installer::overlay
