#pragma once

#include <sys/types.h>

#include <map>
#include <ostream>
#include <string>
#include <vector>

namespace installer::test {

// What one entry was when the snapshot was taken.
struct TreeEntry {
  std::string kind;  // "file", "folder", "link", "pipe", "socket" or "device"
  mode_t mode = 0;   // permission bits; 0 for links
  uid_t owner = 0;
  gid_t group = 0;
  std::string content;  // a file's bytes, a link's target

  bool operator==(const TreeEntry&) const = default;
};

std::ostream& operator<<(std::ostream& stream, const TreeEntry& entry);

// Everything below a folder (links not followed) by relative path; the folder itself as ".". A
// single file or link is "." alone; a missing path gives an empty snapshot.
using TreeSnapshot = std::map<std::string, TreeEntry>;

TreeSnapshot snapshotOf(const std::string& path);

// The relative paths alone, without ".".
std::vector<std::string> pathsIn(const TreeSnapshot& snapshot);

// The lines in which two snapshots differ, for people and for expectations: "added <path>",
// "removed <path>", "changed <path>: <what> <old> -> <new>". Empty when they are equal.
class TreeDiff {
 public:
  TreeDiff(const TreeSnapshot& before, const TreeSnapshot& after);

  bool empty() const { return _lines.empty(); }
  const std::vector<std::string>& lines() const { return _lines; }

 private:
  void compare(const std::string& path, const TreeEntry& before, const TreeEntry& after);

  std::vector<std::string> _lines;
};

std::ostream& operator<<(std::ostream& stream, const TreeDiff& diff);

}  // namespace installer::test
