#include "hotfix/workflow/HotfixUninstall.h"

#include "hotfix/platform/ToldOnce.h"
#include "instance/InstanceLayout.h"
#include "platform/Reported.h"
#include "workflow/HotfixRemoval.h"

namespace installer {

HotfixUninstall::HotfixUninstall(const std::optional<std::string>& pathToRcphome,
                                 const std::optional<std::string>& pathToRcpData) {
  if (!pathToRcphome || !reported::exists(*pathToRcphome)) return;
  _removal = std::make_unique<HotfixRemoval>(
      *pathToRcphome, pathToRcpData.value_or(InstanceLayout::defaultRcpData(*pathToRcphome)),
      HandOver::data);
}

HotfixUninstall::HotfixUninstall(HotfixUninstall&&) noexcept = default;
HotfixUninstall& HotfixUninstall::operator=(HotfixUninstall&&) noexcept = default;
HotfixUninstall::~HotfixUninstall() = default;

bool HotfixUninstall::uninstallOldHotfix() {
  const ToldOnce lines;
  return _removal && _removal->uninstallOldHotfix();
}

}  // namespace installer
