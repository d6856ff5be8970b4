#include "instance/ProvisioningCommand.h"

#include <gmock/gmock.h>

#include "support/Proves.h"

namespace installer::test {
namespace {

using ::testing::ElementsAre;

TEST(ProvisioningCommandTest, UpdateWithoutDataHasElevenArguments) {
  proves("LAUNCH-2");
  EXPECT_THAT(ProvisioningCommand::arguments(ProvisioningCommand::kUpdate, "de_DE", std::nullopt),
              ElementsAre("-rcpLauncherWait", "-provManifest", "-noSplash",
                          "-provisioningOperation", "update", "-nl", "de_DE", "-vmargs",
                          "-Dfile.encoding=UTF-8", "-Xms32m", "-Xmx256m"));
}

TEST(ProvisioningCommandTest, CleanUpWithDataHasThirteenArguments) {
  proves("LAUNCH-2");
  EXPECT_THAT(ProvisioningCommand::arguments(ProvisioningCommand::kCleanUp, "en_US", "/a b/data"),
              ElementsAre("-rcpLauncherWait", "-provManifest", "-noSplash",
                          "-provisioningOperation", "cleanup", "-nl", "en_US", "-vmargs",
                          "-Dfile.encoding=UTF-8", "-Xms32m", "-Xmx256m", "-data", "/a b/data"));
}

TEST(ProvisioningCommandTest, HotfixRunHasFifteenArguments) {
  proves("LAUNCH-1");
  EXPECT_THAT(
      ProvisioningCommand::hotfixArguments("en_US", "/Volumes/HF/updates/platform", "/data"),
      ElementsAre("-rcpLauncherWait", "-provManifest", "-noSplash", "-provisioningOperation",
                  "update", "-nl", "en_US", "-vmargs", "-Dfile.encoding=UTF-8",
                  "-DprovisioningOperation=update",
                  "-DprovUpdateSiteListOverride=file:/Volumes/HF/updates/platform", "-Xms32m",
                  "-Xmx256m", "-data", "/data"));
}

TEST(ProvisioningCommandTest, UpdateSitesArePassedOnAsTheyAre) {
  proves("LAUNCH-4");
  EXPECT_EQ(ProvisioningCommand::hotfixArguments("l", "/a b,/c'd\"", "/data")[10],
            "-DprovUpdateSiteListOverride=file:/a b,/c'd\"");
  EXPECT_EQ(ProvisioningCommand::hotfixArguments("l", "", "/data")[10],
            "-DprovUpdateSiteListOverride=file:");
}

TEST(ProvisioningCommandTest, LauncherIsToldFromItsCommandLine) {
  for (const auto& arguments :
       {ProvisioningCommand::arguments(ProvisioningCommand::kCleanUp, "l", std::nullopt),
        ProvisioningCommand::hotfixArguments("l", "/sites", "/data")}) {
    std::vector<std::string> line = {"/home/rcplauncher"};
    line.insert(line.end(), arguments.begin(), arguments.end());
    EXPECT_EQ(ProvisioningCommand::launcherIn(line), "/home/rcplauncher");
    line.insert(line.begin(), {"/bin/sh", "-e"});
    EXPECT_EQ(ProvisioningCommand::launcherIn(line), "/home/rcplauncher");
  }
}

TEST(ProvisioningCommandTest, OtherCommandLinesStartNoProvisioning) {
  const auto arguments =
      ProvisioningCommand::arguments(ProvisioningCommand::kUpdate, "l", std::nullopt);

  EXPECT_EQ(ProvisioningCommand::launcherIn({}), std::nullopt);
  EXPECT_EQ(ProvisioningCommand::launcherIn({"/home/rcplauncher"}), std::nullopt);
  EXPECT_EQ(ProvisioningCommand::launcherIn(arguments), std::nullopt) << "no program before them";
  EXPECT_EQ(ProvisioningCommand::launcherIn(
                {"/home/rcplauncher", "-rcpLauncherWait", "-provManifest", "-noSplash"}),
            std::nullopt);
  EXPECT_EQ(
      ProvisioningCommand::launcherIn({"/home/rcplauncher", "-rcpLauncherWait", "-data", "/d",
                                       "-provManifest", "-noSplash", "-provisioningOperation"}),
      std::nullopt);
}

}  // namespace
}  // namespace installer::test
