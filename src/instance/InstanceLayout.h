#pragma once

#include <string>
#include <string_view>

// Where everything lies in an instance, one function a place. `rcpHome` is the platform's runtime
// folder inside the application bundle, `rcpData` its data folder (workspace).
namespace installer::InstanceLayout {

// In the rcp home.
std::string installInfo(const std::string& rcpHome);
std::string addonInfo(const std::string& rcpHome);
std::string launcher(const std::string& rcpHome);
std::string launcherProperties(const std::string& rcpHome);
std::string agentProperties(const std::string& rcpHome);
std::string customization(const std::string& rcpHome);
std::string logCollectionTool(const std::string& rcpHome);
// The rcp data folder of an instance that was given no other.
std::string defaultRcpData(const std::string& rcpHome);

// In its deploy folder: manifests, key stores and what the platform's runs leave.
std::string deploy(const std::string& rcpHome);
std::string deployed(const std::string& rcpHome, std::string_view name);
std::string installManifest(const std::string& rcpHome);
std::string uninstallManifest(const std::string& rcpHome);
std::string jvmProperties(const std::string& rcpHome);
std::string extras(const std::string& rcpHome);
std::string installHistory(const std::string& rcpHome);
inline constexpr std::string_view kInstallManifest = "install.xml";
inline constexpr std::string_view kUpdateManifest = "install.update.xml";
inline constexpr std::string_view kUninstallManifest = "uninstall.hotfix.xml";

// In its eclipse folder.
std::string eclipse(const std::string& rcpHome);
std::string links(const std::string& rcpHome);
std::string rcpLink(const std::string& rcpHome);
std::string sharedLink(const std::string& rcpHome);
std::string plugins(const std::string& rcpHome);
std::string baseCustomization(const std::string& rcpHome, const std::string& baseVersion);
// A base plug-in folder's name is this and the base version.
inline constexpr std::string_view kBasePlugin = "com.kiv.rcp.base_";

// Beside the rcp home.
std::string provisioningResult(const std::string& rcpHome);
std::string shared(const std::string& rcpHome);

// In the application bundle.
std::string bundleInfo(const std::string& bundle);

// In the rcp data folder. The folder of the settings doubles as the flag that a client has started
// on this data before.
std::string workspaceFlag(const std::string& rcpData);
std::string dataSettings(const std::string& rcpData);
// What the platform itself logs while it works on the data folder.
std::string workspaceLog(const std::string& rcpData);

}  // namespace installer::InstanceLayout
