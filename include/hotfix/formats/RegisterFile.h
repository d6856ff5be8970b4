#pragma once

#include <optional>
#include <string>

#include "hotfix/base/DeletedForNull.h"
#include "hotfix/formats/Properties.h"
#include "hotfix/platform/FileError.h"

namespace installer {

/// A product's registration file, framework.plist, which the product's installer leaves in a folder
/// of the product's own below "/Library/Application Support/Velna". It is updated here, never
/// created. Without it every query answers nullopt.
class RegisterFile {
 public:
  /// Loads the file of the product; `productName` is the name of its folder.
  explicit RegisterFile(const std::string& productName);

  /// The folder in which the product was installed.
  [[nodiscard]] std::optional<std::string> getOldInstallLocation() const;
  /// The hotfix that was recorded last; nullopt when none was.
  [[nodiscard]] std::optional<std::string> getHotfixVersion() const;
  /// That folder's "rcp"; nullopt when the folder is not recorded.
  [[nodiscard]] std::optional<std::string> getPathToRcpHome() const;
  /// The installed application bundle.
  [[nodiscard]] std::optional<std::string> getProductPath() const;
  /// Why there are no values: FileError::kMissing without a file, another code for one that is
  /// there and cannot be read or is no property list; nullopt when it was read.
  const std::optional<FileError>& readError() const { return _properties.readError(); }
  /// The folder of the file, whether it exists or not.
  const std::string& getRegisterDirectory() const { return _registerDirectoryLocation; }

  /// Records the hotfix and saves. Logged at info level, or as a warning for each of the two steps
  /// that fails; both do when the file is missing or cannot be read. A refusing disk fails neither
  /// [error].
  void updateHotfixVersion(const std::optional<std::string>& version);

  /// @cond
  // No text is nullptr; an absent one is std::nullopt.
  HOTFIX_DELETED_FOR_NULL(explicit RegisterFile);
  HOTFIX_DELETED_FOR_NULL(void updateHotfixVersion);
  /// @endcond

 private:
  std::string _registerDirectoryLocation;
  Properties _properties;
};

}  // namespace installer
