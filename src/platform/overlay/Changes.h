#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/overlay/Tree.h"

namespace installer::overlay {

// How one path would differ from what is on the disk.
struct Change {
  enum class Kind {
    created,
    removed,
    replaced,    // by something with other content, or of another kind
    attributes,  // owner, group or mode
    rewritten,   // all is as before
  };

  std::string path;
  Kind kind = Kind::created;
  std::optional<Status> before;  // absent for what is created
  std::optional<Status> after;   // absent for what is removed
  NodePtr old;                   // for its content; null where `before` is absent
  NodePtr now;                   // likewise

  // Whether it is known what would be in it.
  bool isForeseen() const { return !now || now->content.isForeseen; }
};

// Everything that has changed in the tree, by path, a folder before what is in it. Folders that are
// there before and after are told only for their attributes.
std::vector<Change> changesIn(Tree& tree);

}  // namespace installer::overlay
