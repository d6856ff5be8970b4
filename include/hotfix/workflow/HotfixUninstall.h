#pragma once

#include <memory>
#include <optional>
#include <string>

#include "hotfix/base/DeletedForNull.h"

namespace installer {

class HotfixRemoval;

/// Removes the hotfix that an instance carries: feeds the uninstall manifest that its installation
/// left in the instance to the platform's provisioning and clears what was recorded. The manifest
/// is used up by that; a second removal without an installation between finds nothing.
class HotfixUninstall {
 public:
  /// An absent or missing rcp home leaves an object that removes nothing. An absent rcp data folder
  /// is "systemdata" in the rcp home.
  HotfixUninstall(const std::optional<std::string>& pathToRcphome,
                  const std::optional<std::string>& pathToRcpData);
  /// Takes over what the other object holds, which is then of no use but to be given something new.
  HotfixUninstall(HotfixUninstall&&) noexcept;
  /// The same, after giving up what this one held.
  HotfixUninstall& operator=(HotfixUninstall&&) noexcept;
  ~HotfixUninstall();

  /// True when the features are gone. The recorded version is cleared once provisioning has run,
  /// whatever came of it; receipt, skip flag and bundle identifier only after success. Failures go
  /// to the log and, as texts that the graphical installer knows, to standard output.
  [[nodiscard]] bool uninstallOldHotfix();

  /// @cond
  // No text is nullptr; an absent one is std::nullopt.
  HOTFIX_DELETED_FOR_NULL(explicit HotfixUninstall);
  /// @endcond

 private:
  std::unique_ptr<HotfixRemoval> _removal;  // null when the rcp home is missing
};

}  // namespace installer
