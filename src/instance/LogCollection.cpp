#include "base/LetterCase.h"
#include "hotfix/base/Path.h"
#include "hotfix/instance/InstanceService.h"
#include "hotfix/util/InstallUtil.h"
#include "instance/InstanceLayout.h"
#include "platform/ChildProcesses.h"
#include "platform/Exists.h"
#include "platform/JavaRuntime.h"
#include "platform/Log.h"
#include "util/ChildStart.h"

namespace installer {

namespace {

std::optional<std::string> javaHome() {
  Platform& platform = Platform::current();
  const std::string& plugin = platform.paths.javaAppletPlugin;
  const std::optional<std::string> identifier = InstallUtil::getBundleID(plugin);
  if (identifier && letterCase::equalIgnoringCase(*identifier, "com.oracle.java.JavaAppletPlugin"))
    return path::appendingComponent(plugin, "Contents/Home");
  if (const auto line = platform.children->firstLine({platform.paths.javaHomeTool, {}}))
    return line;
  return hostJavaHome();
}

// The same for the collection; nullopt with a line that tells it.
std::optional<std::string> javaFor(const std::string& action, const std::string& product) {
  std::optional<std::string> java = javaHome();
  if (!java)
    log(LogLevel::notice,
        "Can't find java home, skip log collection for the {} operaton of {} project.", action,
        product);
  return java;
}

// False with a line that tells it.
bool hasTool(const std::optional<std::string>& rcpHome) {
  log(LogLevel::info, "_pathToRcphome is {}.", orNull(rcpHome));
  if (rcpHome && exists(InstanceLayout::logCollectionTool(*rcpHome))) return true;
  log(LogLevel::info, "No log files are gathered as there is no collectionutility.jar under {}. ",
      orNull(rcpHome));
  return false;
}

}  // namespace

std::string InstanceService::getAddonLogFile(const std::optional<std::string>& addon,
                                             const std::optional<std::string>& action) const {
  const std::string file = path::appendingComponent(
      Platform::current().paths.addonLogFolder,
      "rcp_" + addon.value_or("addon") + "_" + action.value_or("") + ".log");
  log(LogLevel::info, "Addon Log Fie is {}", file);
  return file;
}

void InstanceService::collectLogFiles(const std::optional<std::string>& productName,
                                      const std::string& action, const std::string& logFile) {
  collectLogFiles(productName, action, logFile, std::nullopt);
}

void InstanceService::collectLogFiles(const std::optional<std::string>& productName,
                                      const std::string& action, const std::string& logFile,
                                      const std::optional<std::string>& workspaceLocation) {
  const std::string product = orNull(productName);
  log(LogLevel::notice,
      "Begin to call collection utility to gather log files for the {} operaton of {} project.",
      action, product);
  const std::optional<std::string> java = javaFor(action, product);
  if (!java || !hasTool(_pathToRcphome)) return;
  const std::optional<std::string> installed = getInstalledTargetVersion();
  const std::string version = installed ? *installed : InstallUtil::generateNewManifestVersion();
  log(LogLevel::info, "productVersion is {}.", version);
  const std::optional<std::string> workspace =
      workspaceLocation ? workspaceLocation : getWorkspace();
  if (!productName || !workspace) {
    log(LogLevel::warning, "No log files are gathered as the {} is unknown.",
        productName ? "workspace" : "product");
    return;
  }
  const std::optional<int> tool =
      startChild({path::appendingComponent(*java, "bin/java"),
                  {"-jar", InstanceLayout::logCollectionTool(*_pathToRcphome), "-productName",
                   *productName, "-productVersion", version, "-action", action, "-workspace",
                   *workspace, "-logLocation", logFile, "-s"}});
  if (!tool) return;
  const ChildEnd end(*tool);  // however it ends, the run is over
  log(LogLevel::notice,
      "Successfully collect the log files and place them under {} for the {} operaton of {} "
      "project.",
      InstanceLayout::installHistory(*_pathToRcphome), action, product);
}

}  // namespace installer
