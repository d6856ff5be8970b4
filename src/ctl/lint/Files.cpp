#include "ctl/lint/Files.h"

#include <algorithm>
#include <cstddef>

#include "hotfix/util/InstallUtil.h"
#include "platform/Exists.h"
#include "platform/FileManager.h"
#include "platform/Platform.h"

namespace installer::ctl::lint {

bool exists(const std::string& path) {
  return installer::exists(path);
}

bool isFolder(const std::string& path) {
  return Platform::current().files->isDirectory(path);
}

bool isFile(const std::string& path) {
  return exists(path) && !isFolder(path);
}

bool hasContent(const PackageView& package, const std::string& file) {
  return Platform::current().files->hasContent({file, {package.path, package.deploy()}});
}

bool reachesLimits(const TreeLook& seen, const LookLimits& limits) {
  constexpr std::size_t kLongestName = 1024;  // of one more entry, bytes
  std::size_t bytes = kLongestName;
  std::ptrdiff_t deepest = 0;
  for (const SeenEntry& entry : seen.entries) {
    bytes += entry.path.size();
    if (entry.kind == SeenKind::folder)
      deepest = std::max(deepest, 1 + std::count(entry.path.begin(), entry.path.end(), '/'));
  }
  return seen.entries.size() >= limits.entries || bytes > limits.pathBytes ||
         deepest >= limits.depth;
}

std::vector<SeenEntry> entriesOf(const std::string& folder) {
  auto seen = lookBelow(folder, kFolderLook);
  if (!seen) return {};
  return std::move(seen->entries);
}

std::vector<std::string> keyStoresIn(const std::string& folder) {
  std::vector<std::string> names;
  for (const SeenEntry& entry : entriesOf(folder))
    if (InstallUtil::hasPrefixCaseInsensitive(entry.path, ".keystore")) names.push_back(entry.path);
  return names;
}

}  // namespace installer::ctl::lint
