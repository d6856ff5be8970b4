#include "driver/LeftOverItems.h"

#include <set>

#include "driver/RunState.h"
#include "hotfix/base/Path.h"
#include "hotfix/formats/Configuration.h"
#include "instance/InstanceLayout.h"
#include "platform/FileManager.h"
#include "platform/Platform.h"

namespace installer {

namespace {

// A home is looked through as a whole: a merge works at any depth of it.
void removeFrom(const std::optional<std::string>& rcpHome) {
  FileManager& files = *Platform::current().files;
  if (rcpHome && files.tryLock(*rcpHome).hold) files.removeLeftOvers(*rcpHome, LeftOvers::below);
}

}  // namespace

void removeLeftOverItems(const std::optional<std::string>& rcpData) {
  removeFrom(runState()._rcpHome);
  if (runState()._rcpHomeOfWorkflow != runState()._rcpHome)
    removeFrom(runState()._rcpHomeOfWorkflow);
  const Platform& platform = Platform::current();
  const FixedPaths& paths = platform.paths;
  std::set<std::string> folders;  // in which others can be at work
  const auto addFolderOf = [&](const std::string& item) {
    folders.insert(path::deletingLastComponent(item));
  };
  for (const std::string& file : {paths.errorMarker, paths.pasteboard, paths.internalConfiguration})
    addFolderOf(file);
  if (rcpData) addFolderOf(InstanceLayout::dataSettings(*rcpData));
  const auto location = Configuration().getPropertyValueForKey("newInstallLocation");
  if (location) addFolderOf(*location);
  for (const std::string& folder : folders)
    platform.files->removeLeftOvers(folder, LeftOvers::within);
}

}  // namespace installer
