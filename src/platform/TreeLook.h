#pragma once

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <ctime>
#include <optional>
#include <string>
#include <vector>

namespace installer {

enum class SeenKind { file, folder, link, other };

// One entry as it is itself, not what a link leads to.
struct SeenEntry {
  std::string path;  // below the folder that was looked at
  SeenKind kind = SeenKind::other;
  std::uint64_t size = 0;  // of a file, bytes
  std::string target;      // of a link
  mode_t mode = 0;         // permission bits
  uid_t owner = 0;
  gid_t group = 0;
  std::time_t modified = 0;
};

struct TreeLook {
  std::vector<SeenEntry> entries;  // sorted by path, byte by byte
  bool isWhole = true;             // false when there was more than could or should be looked at
};

// How far a look goes.
struct LookLimits {
  std::size_t entries = 0;
  int depth = 1;                                  // 1 for what lies in the folder itself
  std::size_t pathBytes = std::size_t{16} << 20;  // of all paths together
};

// Looks at what is below the folder (a link to one is followed, links below it are not). Opens
// nothing but folders and changes nothing. nullopt when the folder itself cannot be listed.
[[nodiscard]] std::optional<TreeLook> lookBelow(const std::string& folder,
                                                const LookLimits& limits);
// The same for a folder further down, the way to which leads over no link: `below` is relative.
[[nodiscard]] std::optional<TreeLook> lookBeneath(const std::string& folder,
                                                  const std::string& below,
                                                  const LookLimits& limits);

}  // namespace installer
