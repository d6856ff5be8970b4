#pragma once

#include <sys/types.h>

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "platform/overlay/Tree.h"

namespace installer::overlay {

// Where a path has led.
struct Found {
  NodePtr folder;    // that holds the item; null when there is no such folder
  std::string name;  // there; "." for the folder itself
  NodePtr node;      // null when nothing is there, or the way to it is barred
  int error = 0;     // why
  // Who may own it when it has several names, as HeldFolders.h tells; nullopt when anybody may.
  std::optional<uid_t> owner;
};

enum class LastLink { keep, follow };

// Says of each link on the way whether it may be followed.
using LinkJudge = std::function<bool(const Node& link)>;

// A relative path that does not leave the folder `start` on its way, be it for a moment; EXDEV when
// it does.
Found walkBeneath(Tree& tree, const NodePtr& start, std::string_view path);

// Walks the path through the tree as the system does, from `start` or from the root. A link that
// may not be followed is EPERM; without a judge all may. A slash at the end asks for a folder.
Found walk(Tree& tree, const NodePtr& start, std::string_view path, LastLink last,
           const LinkJudge& mayFollow = nullptr);

}  // namespace installer::overlay
