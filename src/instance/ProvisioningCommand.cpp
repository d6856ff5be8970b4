#include "instance/ProvisioningCommand.h"

#include <algorithm>
#include <array>

namespace installer::ProvisioningCommand {

namespace {

// What every list begins with.
constexpr std::array<std::string_view, 4> kBeginning = {"-rcpLauncherWait", "-provManifest",
                                                        "-noSplash", "-provisioningOperation"};

std::vector<std::string> leadingArguments(std::string_view operation, const std::string& locale) {
  std::vector<std::string> list(kBeginning.begin(), kBeginning.end());
  list.insert(list.end(),
              {std::string(operation), "-nl", locale, "-vmargs", "-Dfile.encoding=UTF-8"});
  return list;
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

std::optional<std::string> launcherIn(const std::vector<std::string>& commandLine) {
  const auto found =
      std::search(commandLine.begin(), commandLine.end(), kBeginning.begin(), kBeginning.end());
  if (found == commandLine.begin() || found == commandLine.end()) return std::nullopt;
  return *(found - 1);
}

}  // namespace installer::ProvisioningCommand
