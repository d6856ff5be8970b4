#include "ctl/lint/Closed.h"

#include <algorithm>

#include "ctl/lint/Files.h"
#include "hotfix/base/Path.h"
#include "platform/FileManager.h"
#include "platform/Platform.h"

namespace installer::ctl::lint {

namespace {

// For the installer, too.
bool isTooLong(const std::string& file) {
  const std::string name = path::lastComponent(file);
  const auto entries = entriesOf(path::deletingLastComponent(file));
  return std::any_of(entries.begin(), entries.end(), [&](const SeenEntry& entry) {
    return entry.path == name && entry.size > FileManager::kMaximumRead;
  });
}

std::optional<std::string> whyClosedFile(const std::string& file) {
  FileError error;
  if (Platform::current().files->read(file, &error) || error.code != FileError::kOther ||
      isTooLong(file))
    return std::nullopt;
  return error.description;
}

std::optional<std::string> whyClosedTree(const std::string& folder, const LookLimits& limits) {
  FileError error;
  if (!Platform::current().files->exists(folder, &error))
    return error.code == FileError::kMissing ? std::nullopt : std::optional(error.description);
  if (!isFolder(folder)) return std::nullopt;
  const auto seen = lookBelow(folder, limits);
  if (!seen) return folder + ": the folder cannot be listed";
  if (limits.depth == 1 || seen->isWhole || reachesLimits(*seen, limits)) return std::nullopt;
  return folder + ": a folder below it cannot be listed";
}

}  // namespace

std::optional<std::string> whyClosed(const Wanted& wanted) {
  std::optional<std::string> reason;
  for (const std::string& folder : wanted.folders)
    if ((reason = whyClosedTree(folder, kFolderLook))) return reason;
  for (const std::string& tree : wanted.trees)
    if ((reason = whyClosedTree(tree, kTreeLook))) return reason;
  for (const std::string& file : wanted.files)
    if ((reason = whyClosedFile(file))) return reason;
  return std::nullopt;
}

}  // namespace installer::ctl::lint
