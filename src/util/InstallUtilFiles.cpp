#include "hotfix/base/Path.h"
#include "hotfix/util/InstallUtil.h"
#include "hotfix/util/StringUtil.h"
#include "platform/Exists.h"
#include "platform/FileManager.h"
#include "platform/Platform.h"
#include "platform/UserContext.h"
#include "util/ChildStart.h"
#include "util/HandedOver.h"

namespace installer {

bool InstallUtil::copyFolderFrom(const std::optional<std::string>& source,
                                 const std::optional<std::string>& to) {
  FileManager& files = *Platform::current().files;
  if (!source || !to || !exists(*source)) return false;
  // "." is the folder itself where the source is a link to one.
  const std::string item = files.isDirectory(*source) ? *source + "/." : *source;
  if (!exists(*to)) return files.copy(item, *to, ExistingItem::keep);
  // A link of the destination may lead around inside the application, never out of it; outside of
  // applications none is followed.
  files.merge(*source, *to, getBundlePath(*to).value_or(""));
  return false;
}

bool InstallUtil::changeAttributesForDirectory(const std::optional<std::string>& directory) {
  Platform& platform = Platform::current();
  return directory && platform.files->changeAttributesBelow(
                          *directory, handedTo(platform.users->consoleUserName(), kSharedMode));
}

void InstallUtil::removeReceipt(const std::optional<std::string>& packageIdentifier) {
  const std::string& tool = Platform::current().paths.receiptTool;
  if (!packageIdentifier || !exists(tool)) return;
  (void)runChild({tool, {"--forget", *packageIdentifier}});  // however it ends, we go on
}

void InstallUtil::replacePackageVariableWith(const std::optional<std::string>& path,
                                             PropertyList::Dictionary& inProperties) {
  if (!path) return;
  const PropertyList::Dictionary before = inProperties;
  for (const auto& [key, value] : before) {
    if (const std::string* text = value.as<std::string>())
      inProperties.set(
          key, StringUtil::stringByReplacingOccurrencesOfString(*text, "${package}", *path));
  }
}

std::string InstallUtil::getPathToMPKGThrough(const std::string& path) {
  return path::deletingLastComponent(
      path::deletingLastComponent(path::deletingLastComponent(path)));
}

std::string InstallUtil::getInstallerRootThrough(const std::string& path) {
  return path::deletingLastComponent(getPathToMPKGThrough(path));
}

}  // namespace installer
