#pragma once

#include <optional>
#include <string>

#include "hotfix/base/DeletedForNull.h"
#include "hotfix/base/XmlDocument.h"
#include "hotfix/platform/FileError.h"

namespace installer {

/// A provisioning manifest: the XML document that tells the platform which features to install or
/// remove. Everything that is not changed here (comments, processing instructions, CDATA, entity
/// references, the declared encoding, the order of attributes) is written back as it was read; only
/// the indentation is new. An element's or attribute's name counts as it is written, prefix and
/// all.
class InstallManifest {
 public:
  /// The words of a manifest: elements on the way to a feature, the feature's attribute with its
  /// location, and the placeholder in that.
  /// @{
  static constexpr const char* DOMAIN_OBJECT = "domain-object";
  static constexpr const char* OBJECT_DATA = "object-data";
  static constexpr const char* INSTALL = "install";
  static constexpr const char* INSTALL_FEATURE = "installfeature";
  static constexpr const char* REQUIREMENTS = "requirements";
  static constexpr const char* FEATURE = "feature";
  static constexpr const char* URL_NODE = "url";
  static constexpr const char* INSTALLER_ROOT = "${installer.root}";
  /// @}

  /// Parses the file. One that is missing, unreadable or malformed leaves the object without a
  /// document.
  explicit InstallManifest(std::string file);

  /// Why the file could not be read; nullopt when it could, be it malformed.
  [[nodiscard]] const std::optional<FileError>& readError() const { return _readError; }

  /// Replaces "${installer.root}" in the url of every feature on the path root / first
  /// domain-object / first object-data / first install / each installfeature / first requirements /
  /// each feature, direct children only. False after an error line that names the missing level;
  /// false without a line when there is no document. The file is untouched until the save.
  [[nodiscard]] bool replaceInstallerRootWith(const std::string& replacement);

  /// Writes the re-indented document to `path`, or over the loaded file for nullopt. False without
  /// a document, when it has come to hold what XML cannot tell (a control character in the replaced
  /// root, say), or when the disk refuses [error]; the old file is then untouched.
  [[nodiscard]] bool saveInstallManifestAs(const std::optional<std::string>& path) const;

  /// @cond
  // No text is nullptr; an absent one is std::nullopt.
  HOTFIX_DELETED_FOR_NULL(explicit InstallManifest);
  HOTFIX_DELETED_FOR_NULL(void replaceInstallerRootWith);
  HOTFIX_DELETED_FOR_NULL(void saveInstallManifestAs);
  /// @endcond

 private:
  std::string _pathToManifest;
  std::optional<FileError> _readError;
  xml::Document _xmlDoc;  // null when the file could not be parsed
};

}  // namespace installer
