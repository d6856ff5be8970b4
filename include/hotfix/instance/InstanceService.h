#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "hotfix/base/DeletedForNull.h"
#include "hotfix/base/PropertyList.h"
#include "hotfix/platform/FileError.h"

namespace installer {

class JavaProperties;

/// One installed instance of the platform, through which every change of it goes. A short-lived
/// view: each operation loads the files that it needs, changes them and saves them back.
///
/// Without an rcp home (its folder is missing and could not be made) every operation answers false
/// or nullopt and does nothing, save for four: copyInstallManifest with a file name and
/// generateRcplauncherPropertiesWithTemplate fall back to the fixed home in /Applications, the
/// provisioning starts take their launcher from the caller, getAddonLogFile needs none, and log
/// collection still says what it skips.
///
/// Copies keep what is at their destination and count it as copied, with three exceptions:
/// manifests and key stores are replaced, extras are merged, and the two launcher-configuration
/// copies fail on an existing file.
///
/// Failures are answers; levels in brackets are those of the log lines that an operation writes. A
/// file that cannot be written, copied or removed leaves one error line with its path and the
/// system's words (see ToldOnce), save where an operation says otherwise.
class InstanceService {
 public:
  // --- Creation (InstanceService.cpp) ------------------------------------------------------------

  /// Binds to the folders. A missing rcp home is made with all folders above it; when that fails
  /// the service stays without rcp home and rcp data [error]. If another installer left a
  /// newInstallLocation in the internal configuration, its staging folder in /tmp is copied there,
  /// unless something is there already or it is an untrusted user's [info, warning, error].
  explicit InstanceService(const std::optional<std::string>& pathToRcphome);
  /// The same with the folder of the instance's data, which is neither looked at nor made.
  InstanceService(const std::optional<std::string>& pathToRcphome,
                  const std::optional<std::string>& pathToRcpData);

  /// Binds to the folders of an instance that is there already; nullopt for an absent path and for
  /// one that is no folder. Makes and copies nothing and writes no line: the way to ask questions.
  [[nodiscard]] static std::optional<InstanceService> existing(
      const std::optional<std::string>& pathToRcphome);
  /// The same with the folder of the instance's data, which is not looked at.
  [[nodiscard]] static std::optional<InstanceService> existing(
      const std::optional<std::string>& pathToRcphome,
      const std::optional<std::string>& pathToRcpData);

  /// The rcp home, as it was given; nullopt without one.
  const std::optional<std::string>& pathToRcphome() const { return _pathToRcphome; }

  /// Names the package whose files are brought in. Templates, manifests, customizations and key
  /// stores may be links: one that leads to a regular file in the instance, in the folder that
  /// holds the link, or, once the package is named, in it or in the folder "deploy" beside it, is
  /// taken as that file. Another is no such file, so that nothing from outside comes into the
  /// instance; as a key store it stays a link.
  void setInstallPackage(const std::string& package);

  /// Whether a copy goes on after an error: only when it is that the destination exists.
  bool shouldProceedAfterError(const FileError& error, const std::string& copyingItemAtPath,
                               const std::string& toPath) const;

  // --- Install information (InstallInfo.cpp) -----------------------------------------------------

  /// Whether deploy/install.xml exists.
  bool hasInstanceInstalled() const;
  /// The greatest version, compared as plain text, among the base plug-in folders: what stands
  /// between the first and the second "_" of their names. nullopt without one.
  [[nodiscard]] std::optional<std::string> getBaseVersion() const;
  /// CFBundleShortVersionString of the application bundle around the rcp home.
  [[nodiscard]] std::optional<std::string> getInstalledTargetVersion() const;

  // Keys of installInfo.plist. Readers answer nullopt for a missing file or key. Version and flag
  // writers create the file; a failing save changes no answer. A file that is there but cannot be
  // read, or is no property list, answers as a missing one [error] and is never written over.

  /// The platform's version; nullopt when none is recorded [info].
  [[nodiscard]] std::optional<std::string> getInstalledVersion() const;
  /// Records the platform's version, in a new file when there is none; nothing happens for nullopt.
  void setInstalledVersion(const std::optional<std::string>& version);
  /// Records the hotfix's version, in a new file when there is none; nullopt removes it.
  void updateHotfixVersion(const std::optional<std::string>& version);
  /// The version of the hotfix that is applied; nullopt when there is none.
  [[nodiscard]] std::optional<std::string> getCurrentHotfixVersion() const;
  /// Whether a hotfix's version is recorded.
  bool isHotfixApplied() const;
  /// Records whether the running check may be skipped, as the text "true" or "false", in a new file
  /// when there is none.
  void saveHotfixSkipRunningCheckProperty(bool skip);
  /// False without a readable file; true for the text "true" and, on purpose, for a file without
  /// the key.
  bool isHotfixInstallWithSkipRunningCheck() const;
  /// Removes that record; nothing happens without the file.
  void removeHotfixSkipRunningCheckProperty();
  /// Records the hotfix package's bundle identifier, nothing in a missing file; nullopt removes it.
  void saveHotfixBundleID(const std::optional<std::string>& bundleID);
  /// The recorded identifier; nullopt when there is none.
  [[nodiscard]] std::optional<std::string> getInstalledHotfixBundleID() const;
  /// Removes that record; nothing happens without the file.
  void deleteInstalledHotfixBundleID();

  // --- Install manifests (InstallManifests.cpp) --------------------------------------------------

  /// Sets provisioning.manifest.version of rcplauncher.properties; nothing happens without that
  /// file.
  void updateProvisionManifestVersion(const std::string& version);
  /// Sets its rcp.install.id in the same way.
  void updateInstallID(const std::string& installID);
  /// Carries the manifest version over into rcp.install.id of rcplauncher.properties and of the
  /// data folder's rcpinstall.properties; nothing happens unless both are there. An absent version
  /// is refused [error] and both files keep their ids.
  void updateInstallIDWithProvManVer();
  /// Copies deploy/install.xml to deploy/install.VERSION.xml, the manifest version or "old";
  /// an existing backup stays. Nothing happens without rcplauncher.properties, or when the version
  /// would lead out of the folder [warning].
  void backupInstallManifest();

  /// Replaces what is at deploy/install.update.xml by a copy of the manifest [info]. With a root
  /// that exists on disk, "${installer.root}" in the copy's feature locations becomes "file:" and
  /// the root, and the copy is re-indented; false then means that the copy lies there unresolved.
  /// False when the copy fails; what was there is gone all the same, unless it could not be
  /// replaced.
  [[nodiscard]] bool copyUpdateManifest(const std::string& manifest,
                                        const std::optional<std::string>& replaceInstallerRootWith);
  /// The same for deploy/install.xml.
  [[nodiscard]] bool copyInstallManifest(
      const std::string& manifest, const std::optional<std::string>& replaceInstallerRootWith);
  /// The same for the file `toFile` of the deploy folder. Without an rcp home [error, info] the
  /// fixed one is taken, for this and all later operations.
  [[nodiscard]] bool copyInstallManifest(
      const std::string& manifest, const std::string& toFile,
      const std::optional<std::string>& replaceInstallerRootWith);
  /// The same under the manifest's own name, placeholders kept. False for an absent or missing
  /// manifest or rcp home.
  [[nodiscard]] bool copyManifest(const std::optional<std::string>& manifest);
  /// Replaces deploy/uninstall.hotfix.xml by a copy; nothing is logged, not even a failure.
  [[nodiscard]] bool copyHotfixUninstallManifest(const std::optional<std::string>& manifest);

  // --- Provisioning (Provisioning.cpp) -----------------------------------------------------------

  /// One update run of the launcher at the path, waited for. A launcher that cannot be started, or
  /// that a signal ends, leaves an error line; how the run went is told by getProvisioningResult()
  /// alone.
  void startProvisioningWithUpdate(const std::optional<std::string>& pathToLauncher);
  /// The same for a clean-up run.
  void startProvisioningWithCleanUp(const std::optional<std::string>& pathToLauncher);
  /// What the last run left in .provisioning_rc beside the rcp home: 0 for the codes 0 and 2, -1
  /// for every other code and for a missing home, file or code.
  [[nodiscard]] int getProvisioningResult() const;
  /// Removes what an earlier run left there [error].
  void removeProvisionRCFile();

  // --- Launcher and runtime configuration (LauncherConfiguration.cpp) ----------------------------

  // These tell of failures by their answers and the lines named here only.

  /// Writes eclipse/links/rcp.link and shared.link (key path: the rcp home, and its sibling folder
  /// "shared"); other keys of existing link files stay. A missing links folder is made with mode
  /// 0775 for the console user, group "admin" [warning when that fails]. False without an eclipse
  /// folder; the saves are not looked at.
  [[nodiscard]] bool generateLinks();
  /// Copies the template to rcplauncher.properties, which must not exist yet (one retry) and sets
  /// the ids, the manifest's location, the base version if there is one, and rcp.data if a
  /// workspace is given [info, error]. Without an rcp home the fixed one is taken from then on. The
  /// save is not looked at.
  [[nodiscard]] bool generateRcplauncherPropertiesWithTemplate(
      const std::string& path, const std::optional<std::string>& workspace);
  /// Gives an existing rcplauncher.properties new ids and the current base version: the save's
  /// result.
  [[nodiscard]] bool updateRcpLauncherProperties();
  /// Copies the template to osgiagent.properties; false for a missing template [error] and, without
  /// a line, for an existing file.
  [[nodiscard]] bool copyOgsiAgentProperties(const std::string& path);
  /// Replaces deploy/jvm.properties by a copy of the template, or by an empty file when the
  /// template is absent or missing; a missing deploy folder is made for the current user [error].
  /// False for a template that cannot be looked at; the old file stays then.
  [[nodiscard]] bool generateJVMPropertiesWithTemplate(const std::optional<std::string>& path);
  /// The rcp data folder: the one given at creation, else rcp.data of rcplauncher.properties with
  /// "${env.HOME}" replaced by HOME when that is set; nullopt when neither is known.
  [[nodiscard]] std::optional<std::string> getWorkspace() const;

  // --- Customization, key stores, extras, permissions (Customization.cpp) ------------------------

  /// Brings the settings of the file at `path` into the base plug-in's plugin_customization.ini,
  /// where the new value wins, and saves the result there and as the instance's own. True, with
  /// nothing done, when the base plug-in has no such file; false when `path` or the base plug-in is
  /// missing.
  [[nodiscard]] bool mergePluginCustomizationWithBase(const std::optional<std::string>& path);
  /// The same into the instance's plugin_customization.ini, which is copied from `path` byte for
  /// byte when there is none. False for an absent path or a missing rcp home only. Both say nothing
  /// of files that cannot be read or written, and leave unreadable ones as they are.
  [[nodiscard]] bool mergePluginCustomizationWithRcphome(const std::optional<std::string>& path);
  /// Replaces all key stores (names that begin with ".keystore", ignoring case) of the deploy
  /// folder by those of the folder at `path`, be they none [info]. Failures are passed over.
  void copyKeyStores(const std::string& path);
  /// Brings the entries of the folder at `path` into deploy/extras [info]; nothing happens when it
  /// is absent, no folder or empty.
  void copyExtras(const std::optional<std::string>& path);
  /// Hands everything below the rcp home and the shared folder (with the flag), and below the
  /// workspace (when given), to the console user, group "admin", mode 0775.
  void updatePermissions(bool rcphome, const std::optional<std::string>& workspace);
  /// The same with the workspace that getWorkspace() finds, or none.
  void updatePermissions(bool rcphome, bool updateWorkspace);

  // --- Add-on registry (AddonRegistry.cpp) -------------------------------------------------------

  /// The dictionaries of addonInfo.plist's array "addons", in order; nullopt without the file,
  /// empty when it cannot be read [error] or has no such array.
  [[nodiscard]] std::optional<std::vector<PropertyList::Dictionary>> getAllAddonRegistryInfo()
      const;
  /// A copy of the first entry with that ID, case-sensitive.
  [[nodiscard]] std::optional<PropertyList::Dictionary> getRegistryInfoForAddon(
      const std::optional<std::string>& addon) const;
  /// The version in that entry; nullopt without the entry or a text there.
  [[nodiscard]] std::optional<std::string> getAddonInstalledVersion(
      const std::optional<std::string>& addon) const;
  /// The bundle identifier in that entry; nullopt without the entry or a text there.
  [[nodiscard]] std::optional<std::string> getAddonInstalledBundleID(
      const std::optional<std::string>& addon) const;
  /// Changes nothing, on purpose: the registry belongs to the installers of add-ons.
  void removeRegistryInfoforAddon(const std::optional<std::string>& addon) const;

  // --- Log collection (LogCollection.cpp) --------------------------------------------------------

  /// The name of the log file that the installer of an add-on writes ("addon" for an absent name)
  /// [info]; nothing is made on disk.
  std::string getAddonLogFile(const std::optional<std::string>& addon,
                              const std::optional<std::string>& action) const;
  /// Lets the platform's own tool gather the logs of an operation and waits for it [notice, info;
  /// error when it cannot be started]. Skipped with a line when there is no Java runtime, no tool,
  /// or nothing to name as product or workspace.
  void collectLogFiles(const std::optional<std::string>& productName, const std::string& action,
                       const std::string& logFile);
  /// With an absent workspace the one that getWorkspace() finds.
  void collectLogFiles(const std::optional<std::string>& productName, const std::string& action,
                       const std::string& logFile,
                       const std::optional<std::string>& workspaceLocation);

  /// @cond
  // A text is no truth: "false" would count as true.
  void saveHotfixSkipRunningCheckProperty(const void* text) = delete;
  void updatePermissions(bool rcphome, const void* workspace) = delete;
  void updatePermissions(const void* rcphome, auto&& workspace) = delete;
  // No text is nullptr; an absent one is std::nullopt.
  HOTFIX_DELETED_FOR_NULL(explicit InstanceService);
  HOTFIX_DELETED_FOR_NULL(static void existing);
  HOTFIX_DELETED_FOR_NULL(void setInstallPackage);
  HOTFIX_DELETED_FOR_NULL(void shouldProceedAfterError);
  HOTFIX_DELETED_FOR_NULL(void setInstalledVersion);
  HOTFIX_DELETED_FOR_NULL(void updateHotfixVersion);
  HOTFIX_DELETED_FOR_NULL(void saveHotfixBundleID);
  HOTFIX_DELETED_FOR_NULL(void updateProvisionManifestVersion);
  HOTFIX_DELETED_FOR_NULL(void updateInstallID);
  HOTFIX_DELETED_FOR_NULL(void copyUpdateManifest);
  HOTFIX_DELETED_FOR_NULL(void copyInstallManifest);
  HOTFIX_DELETED_FOR_NULL(void copyManifest);
  HOTFIX_DELETED_FOR_NULL(void copyHotfixUninstallManifest);
  HOTFIX_DELETED_FOR_NULL(void startProvisioningWithUpdate);
  HOTFIX_DELETED_FOR_NULL(void startProvisioningWithCleanUp);
  HOTFIX_DELETED_FOR_NULL(void generateRcplauncherPropertiesWithTemplate);
  HOTFIX_DELETED_FOR_NULL(void copyOgsiAgentProperties);
  HOTFIX_DELETED_FOR_NULL(void generateJVMPropertiesWithTemplate);
  HOTFIX_DELETED_FOR_NULL(void mergePluginCustomizationWithBase);
  HOTFIX_DELETED_FOR_NULL(void mergePluginCustomizationWithRcphome);
  HOTFIX_DELETED_FOR_NULL(void copyKeyStores);
  HOTFIX_DELETED_FOR_NULL(void copyExtras);
  HOTFIX_DELETED_FOR_NULL(void getRegistryInfoForAddon);
  HOTFIX_DELETED_FOR_NULL(void getAddonInstalledVersion);
  HOTFIX_DELETED_FOR_NULL(void getAddonInstalledBundleID);
  HOTFIX_DELETED_FOR_NULL(void removeRegistryInfoforAddon);
  HOTFIX_DELETED_FOR_NULL(void getAddonLogFile);
  HOTFIX_DELETED_FOR_NULL(void collectLogFiles);
  /// @endcond

 private:
  InstanceService() = default;

  void copyStagingFolder(const std::optional<std::string>& location) const;
  [[nodiscard]] bool copyItem(const std::string& from, const std::string& to,
                              FileError* error = nullptr) const;
  [[nodiscard]] bool copyContent(const std::string& from, const std::string& to) const;
  [[nodiscard]] bool copyAsGiven(const std::string& from, const std::string& to) const;
  bool hasContent(const std::string& path) const;
  std::vector<std::string> contentFolders() const;
  bool hasRcphomeFolder() const;
  void takeFallbackRcphome();
  [[nodiscard]] std::optional<std::string> installInfoValue(const std::string& key) const;
  void storeInstallInfo(const std::string& key, const std::optional<std::string>& value);
  void changeInstallInfo(const std::string& key, const std::optional<std::string>& value);
  void setLauncherProperty(const std::string& key, const std::string& value);
  void setIdentity(JavaProperties& launcherProperties) const;
  void setBaseLocation(JavaProperties& launcherProperties) const;
  void startProvisioning(const std::optional<std::string>& pathToLauncher,
                         std::string_view operation) const;

  std::optional<std::string> _pathToRcphome;  // nullopt when the folder could not be made
  std::optional<std::string> _pathToRcpData;  // nullopt when none was given, or without rcp home
  std::optional<std::string> _pathToInstallPackage;  // nullopt until it is named
};

}  // namespace installer
