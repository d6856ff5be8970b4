#include "instance/InstanceLayout.h"

#include "hotfix/base/Path.h"

namespace installer::InstanceLayout {

using path::appendingComponent;
using path::deletingLastComponent;

std::string installInfo(const std::string& rcpHome) {
  return appendingComponent(rcpHome, "installInfo.plist");
}

std::string addonInfo(const std::string& rcpHome) {
  return appendingComponent(rcpHome, "addonInfo.plist");
}

std::string launcher(const std::string& rcpHome) {
  return appendingComponent(rcpHome, "rcplauncher");
}

std::string launcherProperties(const std::string& rcpHome) {
  return appendingComponent(rcpHome, "rcplauncher.properties");
}

std::string agentProperties(const std::string& rcpHome) {
  return appendingComponent(rcpHome, "osgiagent.properties");
}

std::string customization(const std::string& rcpHome) {
  return appendingComponent(rcpHome, "plugin_customization.ini");
}

std::string logCollectionTool(const std::string& rcpHome) {
  return appendingComponent(rcpHome, "collectionutility.jar");
}

std::string defaultRcpData(const std::string& rcpHome) {
  return appendingComponent(rcpHome, "systemdata");
}

std::string deploy(const std::string& rcpHome) {
  return appendingComponent(rcpHome, "deploy");
}

std::string deployed(const std::string& rcpHome, std::string_view name) {
  return appendingComponent(deploy(rcpHome), name);
}

std::string installManifest(const std::string& rcpHome) {
  return deployed(rcpHome, kInstallManifest);
}

std::string uninstallManifest(const std::string& rcpHome) {
  return deployed(rcpHome, kUninstallManifest);
}

std::string jvmProperties(const std::string& rcpHome) {
  return deployed(rcpHome, "jvm.properties");
}

std::string extras(const std::string& rcpHome) {
  return deployed(rcpHome, "extras");
}

std::string installHistory(const std::string& rcpHome) {
  return deployed(rcpHome, "installHistory");
}

std::string eclipse(const std::string& rcpHome) {
  return appendingComponent(rcpHome, "eclipse");
}

std::string links(const std::string& rcpHome) {
  return appendingComponent(eclipse(rcpHome), "links");
}

std::string rcpLink(const std::string& rcpHome) {
  return appendingComponent(links(rcpHome), "rcp.link");
}

std::string sharedLink(const std::string& rcpHome) {
  return appendingComponent(links(rcpHome), "shared.link");
}

std::string plugins(const std::string& rcpHome) {
  return appendingComponent(eclipse(rcpHome), "plugins");
}

std::string baseCustomization(const std::string& rcpHome, const std::string& baseVersion) {
  const std::string plugin =
      appendingComponent(plugins(rcpHome), std::string(kBasePlugin) + baseVersion);
  return appendingComponent(plugin, "plugin_customization.ini");
}

std::string provisioningResult(const std::string& rcpHome) {
  return appendingComponent(deletingLastComponent(rcpHome), ".provisioning_rc");
}

std::string shared(const std::string& rcpHome) {
  return appendingComponent(deletingLastComponent(rcpHome), "shared");
}

std::string bundleInfo(const std::string& bundle) {
  return appendingComponent(bundle, "Contents/Info.plist");
}

std::string workspaceFlag(const std::string& rcpData) {
  return appendingComponent(rcpData, ".config");
}

std::string dataSettings(const std::string& rcpData) {
  return appendingComponent(workspaceFlag(rcpData), "rcpinstall.properties");
}

std::string workspaceLog(const std::string& rcpData) {
  return appendingComponent(rcpData, ".metadata/.log");
}

}  // namespace installer::InstanceLayout
