#pragma once

#include <string>
#include <vector>

#include "ctl/lint/PackageView.h"
#include "platform/TreeLook.h"

// What is on the disk, as the installer would meet it.
namespace installer::ctl::lint {

inline constexpr std::size_t kMostEntries = 100'000;
inline constexpr int kMostFolders = 100;  // one in another
inline constexpr LookLimits kFolderLook{kMostEntries, 1};
inline constexpr LookLimits kTreeLook{kMostEntries, kMostFolders};
// Whether the look came to its limits. One that has not and is not whole all the same has met what
// is kept from the caller.
bool reachesLimits(const TreeLook& seen, const LookLimits& limits);

bool exists(const std::string& path);
bool isFolder(const std::string& path);
bool isFile(const std::string& path);

// Whether the installer takes the file for the package's own: it is no link, or one that leads to
// a file of the package, of deploy beside it, or of the folder that holds the link.
bool hasContent(const PackageView& package, const std::string& file);

// The entries of the folder itself; none when it cannot be listed.
std::vector<SeenEntry> entriesOf(const std::string& folder);

// The names of the key stores among them, sorted.
std::vector<std::string> keyStoresIn(const std::string& folder);

}  // namespace installer::ctl::lint
