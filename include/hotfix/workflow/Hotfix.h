#pragma once

#include <memory>
#include <optional>
#include <string>

#include "hotfix/base/DeletedForNull.h"

namespace installer {

class HotfixInstallation;

/// Installs one hotfix package into one instance. May run twice in a row: every step stands a
/// second run over its own results. The package's hotfix.plist is read once, when the object is
/// made; its missing locations get their defaults and "${package}" becomes the package's path.
class Hotfix {
 public:
  /// `pathToInstallLocation` is the folder that holds the application bundle, its name
  /// and ".app". An absent rcp data folder is "systemdata" in the rcp home. A missing package, or a
  /// plist that lacks a name, leaves a workflow that answers false at its gate.
  Hotfix(const std::optional<std::string>& pathToInstallPackage,
         const std::string& pathToInstallLocation, const std::optional<std::string>& pathToRcpData);
  /// Takes over what the other object holds, which is then of no use but to be given something new.
  Hotfix(Hotfix&&) noexcept;
  /// The same, after giving up what this one held.
  Hotfix& operator=(Hotfix&&) noexcept;
  ~Hotfix();

  /// The whole workflow. Only a manifest that cannot be brought into the instance stops it (error
  /// record 4); whatever else goes wrong, all steps are made, and the answer is whether the
  /// provisioning run succeeded. Only then is the hotfix's version recorded.
  [[nodiscard]] bool installNewHotfix();

  /// @cond
  // No text is nullptr; an absent one is std::nullopt.
  HOTFIX_DELETED_FOR_NULL(explicit Hotfix);
  /// @endcond

 private:
  std::optional<std::string> _pathToHotfixManifest;   // nullopt when the package tells too little
  std::unique_ptr<HotfixInstallation> _installation;  // null when the rcp home is missing
};

}  // namespace installer
