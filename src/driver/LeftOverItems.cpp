#include "driver/LeftOverItems.h"

#include <set>

#include "driver/RunState.h"
#include "hotfix/base/Path.h"
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
  std::set<std::string> shared;
  for (const std::string& file : {paths.errorMarker, paths.pasteboard, paths.internalConfiguration})
    shared.insert(path::deletingLastComponent(file));
  if (rcpData) shared.insert(path::deletingLastComponent(InstanceLayout::dataSettings(*rcpData)));
  for (const std::string& folder : shared)
    platform.files->removeLeftOvers(folder, LeftOvers::within);
}

}  // namespace installer
