#include "instance/ProvisioningCommand.h"

namespace installer::ProvisioningCommand {

namespace {

std::vector<std::string> leadingArguments(std::string_view operation, const std::string& locale) {
  return {"-rcpLauncherWait",     "-provManifest", "-noSplash", "-provisioningOperation",
          std::string(operation), "-nl",           locale,      "-vmargs",
          "-Dfile.encoding=UTF-8"};
}

void appendMemoryLimits(std::vector<std::string>& list) {
  list.insert(list.end(), {"-Xms32m", "-Xmx256m"});
}

}  // namespace

std::vector<std::string> arguments(std::string_view operation, const std::string& locale,
                                   const std::optional<std::string>& rcpData) {
  std::vector<std::string> list = leadingArguments(operation, locale);
  appendMemoryLimits(list);
  if (rcpData) list.insert(list.end(), {"-data", *rcpData});
  return list;
}

std::vector<std::string> hotfixArguments(const std::string& locale,
                                         const std::string& updateSiteList,
                                         const std::string& rcpData) {
  std::vector<std::string> list = leadingArguments(kUpdate, locale);
  list.emplace_back("-DprovisioningOperation=update");
  list.push_back("-DprovUpdateSiteListOverride=file:" + updateSiteList);
  appendMemoryLimits(list);
  list.insert(list.end(), {"-data", rcpData});
  return list;
}

}  // namespace installer::ProvisioningCommand
