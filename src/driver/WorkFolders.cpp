#include "driver/WorkFolders.h"

#include "hotfix/base/Path.h"
#include "hotfix/util/InstallUtil.h"
#include "platform/FileManager.h"
#include "platform/Platform.h"
#include "platform/UserContext.h"

namespace installer {

namespace {

// To whom the run hands the instance's and the data folder's files at its end.
std::optional<std::string> newOwner() {
  return Platform::current().users->consoleUserName();
}

}  // namespace

void WorkFolders::holdPackage(const std::string& package) {
  hold(package, std::nullopt);
  hold(path::appendingComponent(package, "../deploy"), std::nullopt);
}

void WorkFolders::holdInstance(const std::string& rcpHome) {
  hold(InstallUtil::getBundlePath(rcpHome).value_or(rcpHome), newOwner());
}

void WorkFolders::holdData(const std::string& rcpData) {
  hold(rcpData, newOwner());
}

void WorkFolders::hold(const std::string& folder, const std::optional<std::string>& newOwner) {
  _holds.push_back(Platform::current().files->hold(folder, newOwner));
}

}  // namespace installer
