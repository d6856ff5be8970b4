#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

// The argument lists with which the platform's launcher is started for provisioning. The launcher
// understands these lists and no others, down to the order.
namespace installer::ProvisioningCommand {

inline constexpr std::string_view kUpdate = "update";
inline constexpr std::string_view kCleanUp = "cleanup";

// A run over the manifests as they lie in the instance. Without rcp data the launcher falls back to
// the instance's own.
std::vector<std::string> arguments(std::string_view operation, const std::string& locale,
                                   const std::optional<std::string>& rcpData);

// The run that installs a hotfix. The update sites (a comma separated list) take the place of the
// ones that the manifest names; they are passed on as they are, blanks and all.
std::vector<std::string> hotfixArguments(const std::string& locale,
                                         const std::string& updateSiteList,
                                         const std::string& rcpData);

// The program that the command line starts for provisioning, which may stand behind the interpreter
// of a script; nullopt when it is no such command line.
[[nodiscard]] std::optional<std::string> launcherIn(const std::vector<std::string>& commandLine);

}  // namespace installer::ProvisioningCommand
