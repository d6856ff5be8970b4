#include "hotfix/workflow/Hotfix.h"

#include "hotfix/platform/ToldOnce.h"
#include "hotfix/util/InstallUtil.h"
#include "instance/InstanceLayout.h"
#include "platform/Reported.h"
#include "workflow/HotfixInstallation.h"
#include "workflow/HotfixPackage.h"

namespace installer {

namespace {

bool refuseManifest(const std::string& manifest) {
  InstallUtil::sendErrorMessage(ErrorCode::manifestNotCopied, {manifest});
  return false;
}

}  // namespace

Hotfix::Hotfix(const std::optional<std::string>& pathToInstallPackage,
               const std::string& pathToInstallLocation,
               const std::optional<std::string>& pathToRcpData) {
  const auto properties = HotfixPackage::properties(pathToInstallPackage);
  if (!pathToInstallPackage || !properties) return;
  const auto preference = HotfixPackage::resolvedFor(*pathToInstallPackage, *properties);
  const auto rcpHome = preference.rcpHomeBelow(pathToInstallLocation);
  if (!rcpHome) return;
  _pathToHotfixManifest = preference.locations.installManifest;
  if (!reported::exists(*rcpHome)) return;
  _installation = std::make_unique<HotfixInstallation>(
      *pathToInstallPackage, preference, *rcpHome,
      pathToRcpData.value_or(InstanceLayout::defaultRcpData(*rcpHome)));
}

Hotfix::Hotfix(Hotfix&&) noexcept = default;
Hotfix& Hotfix::operator=(Hotfix&&) noexcept = default;
Hotfix::~Hotfix() = default;

bool Hotfix::installNewHotfix() {
  const ToldOnce lines;
  if (!_pathToHotfixManifest) return false;
  if (!reported::exists(*_pathToHotfixManifest)) return refuseManifest(*_pathToHotfixManifest);
  if (!_installation || !_installation->copyHotfixInstallManifest())
    return refuseManifest("install.hotfix.xml");
  return _installation->installWithManifest();
}

}  // namespace installer
