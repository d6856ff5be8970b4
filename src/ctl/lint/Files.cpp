#include "ctl/lint/Files.h"

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

std::vector<SeenEntry> entriesOf(const std::string& folder) {
  auto seen = lookBelow(folder, {kMostEntries, 1});
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
