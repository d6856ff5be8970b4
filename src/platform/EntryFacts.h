#pragma once

#include <sys/types.h>

#include <ctime>
#include <optional>
#include <string>

namespace installer {

// What a folder's entry itself is, links not followed.
struct EntryFacts {
  bool isLink = false;
  uid_t owner = 0;
  std::time_t modified = 0;
  bool isFolder = false;
  bool isFile = false;  // a regular one
  mode_t mode = 0;      // permission bits
};

// nullopt when nothing is there, or it cannot be looked at.
[[nodiscard]] std::optional<EntryFacts> entryAt(const std::string& path);

// Whether the paths lead to one and the same item, links followed; two of which nothing can be seen
// do not.
[[nodiscard]] bool isSameItem(const std::string& path, const std::string& other);

}  // namespace installer
