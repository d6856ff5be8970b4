#pragma once

#include <optional>
#include <string>

#include "hotfix/base/DeletedForNull.h"
#include "hotfix/instance/InstanceService.h"

namespace installer {

/// Removes the hotfix that an instance carries: feeds the uninstall manifest that its installation
/// left in the instance to the platform's provisioning and clears what was recorded. The manifest
/// is used up by that; a second removal without an installation between finds nothing.
class HotfixUninstall {
 public:
  /// An absent or missing rcp home leaves an object that removes nothing. An absent rcp data folder
  /// is <rcp home>/systemdata.
  HotfixUninstall(const std::optional<std::string>& pathToRcphome,
                  const std::optional<std::string>& pathToRcpData);

  /// True when the features are gone. The recorded version is cleared once provisioning has run,
  /// whatever came of it; receipt, skip flag and bundle identifier only after success. Failures go
  /// to the log and, as texts that the graphical installer knows, to standard output.
  bool uninstallOldHotfix();

  /// @cond
  // No text is nullptr; an absent one is std::nullopt.
  HOTFIX_DELETED_FOR_NULL(explicit HotfixUninstall);
  /// @endcond

 private:
  bool copyUninstallManifest();
  void startProvisioning();
  void removeHotfixReceipt();
  void clearRecords();

  std::optional<InstanceService> _instance;  // nullopt when the rcp home is missing
  std::optional<std::string> _pathToRcpHome;
  std::optional<std::string> _pathToRcpData;
};

}  // namespace installer
