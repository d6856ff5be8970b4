#pragma once

#include <sys/types.h>

#include <cstddef>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "platform/files/Opening.h"
#include "platform/overlay/Node.h"

namespace installer::overlay {

// Whose new items are, and what the creation mask takes from their modes.
struct Maker {
  uid_t user = 0;
  gid_t group = 0;
  mode_t mask = 022;
};

// What was found, or why nothing was.
struct Look {
  NodePtr node;
  int error = 0;
};

// The file system as it would be: filled from the disk where somebody looks, changed in memory
// alone. The disk is only ever looked at, listed and read. What rights keep the process from is
// noted, for whoever predicts what root would do cannot know it.
//
// Changes answer 0 or the error number that the system would give.
class Tree {
 public:
  explicit Tree(const Maker& maker);

  const Maker& maker() const { return _maker; }
  const NodePtr& root() const { return _root; }
  // The process's own.
  Look workingFolder();

  // The entry itself, a link as a link; "." is the folder and ".." the one above it.
  Look look(const NodePtr& folder, std::string_view name);
  static NodePtr above(const NodePtr& folder);

  // The names in the folder in the order of the disk's listing, new ones behind them; nullopt with
  // errno set.
  std::optional<std::vector<std::string>> names(const NodePtr& folder);
  // What the entry is, from the listing where nobody has looked closer.
  EntryKind kindOf(const NodePtr& folder, const std::string& name);

  // The file's bytes; nullopt with errno set, EFBIG when there are more than that.
  std::optional<std::string> read(const Node& file, std::size_t maximum);
  // So many of its first bytes, or all where there are fewer; nullopt with errno set.
  std::optional<std::string> beginning(const Node& file, std::size_t count);

  // New items that have no name yet, as they would be made in the folder.
  NodePtr newFile(const NodePtr& folder, mode_t mode, Content content) const;
  NodePtr newFolder(const NodePtr& folder, mode_t mode) const;
  NodePtr newLink(const NodePtr& folder, std::string target) const;

  // Gives the item the name, in place of whatever has it.
  [[nodiscard]] int put(const NodePtr& folder, const std::string& name, NodePtr node);
  // Takes the name away, with all that is below it.
  [[nodiscard]] int drop(const NodePtr& folder, const std::string& name);
  // 0 unless nothing can be changed in the folder.
  [[nodiscard]] int refusal(const NodePtr& folder);

  // Paths that only others may look at, list or read, in the order of their names; and in words
  // what has no path.
  const std::set<std::string>& unknown() const { return _unknown; }
  void noteUnknown(const std::string& what) { _unknown.insert(what); }

 private:
  Entry& entryOf(Folder& folder, std::string_view name);
  NodePtr nodeOf(const NodePtr& folder, const std::string& name, const struct stat& status);
  void fillFromDisk(Folder& folder);
  RegularFile openReal(const Content& content);
  void noteIfClosed(int error, const std::string& path);
  NodePtr newNode(const NodePtr& folder, EntryKind kind, mode_t mode) const;

  const Maker _maker;
  NodePtr _root;
  std::map<FileIdentity, NodePtr> _linked;  // files that have several names
  std::set<std::string> _unknown;
};

// A folder or one above it.
bool isInside(const NodePtr& folder, const Node& other);

}  // namespace installer::overlay
