#pragma once

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include "platform/files/Ancestry.h"
#include "platform/files/EntryKind.h"

namespace installer::overlay {

// What an entry is, but for its content.
struct Status {
  EntryKind kind = EntryKind::other;
  mode_t mode = 0;  // permission bits, with the set-id and sticky ones
  uid_t owner = 0;
  gid_t group = 0;
  std::uint64_t names = 1;  // of a file; a folder's do not count

  friend bool operator==(const Status&, const Status&) = default;
};

// A file's bytes. They never change: what is written is a new file.
struct Content {
  std::shared_ptr<const std::string> bytes;   // null for those of a real file, which are read late
  std::shared_ptr<const std::string> folder;  // the real file's, without a slash at the end
  std::string name;                           // there
  bool isForeseen = true;                     // false for a log: its lines come later

  std::string realPath() const { return folder ? *folder + "/" + name : std::string(); }
};

struct Folder;

// One item of the tree, whatever its names.
struct Node {
  Status now;
  std::optional<Status> seen;  // as the disk has it; nullopt for what is on no disk
  FileIdentity identity;
  Content content;                 // of files
  std::string target;              // of links
  std::unique_ptr<Folder> folder;  // null for what is none

  bool isFile() const { return now.kind == EntryKind::file; }
  bool isLink() const { return now.kind == EntryKind::link; }
  bool isFolder() const { return now.kind == EntryKind::folder; }
};

using NodePtr = std::shared_ptr<Node>;

// What a name in a folder stands for.
struct Entry {
  NodePtr now;  // null when nothing is there, or not looked at yet
  NodePtr real;
  bool isSeen = false;                    // whether the disk has been asked
  EntryKind listed = EntryKind::unknown;  // until then
  std::size_t position = 0;               // in the listing
};

struct Folder {
  std::shared_ptr<const std::string> real;  // its path on the disk; null where it has none
  std::weak_ptr<Node> above;                // the root is above itself
  std::map<std::string, Entry, std::less<>> entries;
  bool isListed = false;  // all names are in `entries`
  int error = 0;          // why they are not all there
  std::size_t nextPosition = 0;
  std::optional<bool> isReadOnly;  // nullopt until somebody asks
  bool isGone = false;             // nothing can be put into it any more
};

}  // namespace installer::overlay
