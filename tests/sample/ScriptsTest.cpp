#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>

#include "SampleWorld.h"

namespace fs = std::filesystem;
using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;

namespace {

std::string plistOf(const fs::path& package) {
  return contentOf(package / "Contents/Resources/hotfix.plist");
}

TEST(MakeInstanceTest, InstanceHasEverythingThatTheInstallerLooksFor) {
  const SampleWorld world;

  for (const char* const entry :
       {"Contents/Info.plist", "Contents/MacOS/Quillmere", "Contents/MacOS/shared",
        "Contents/MacOS/rcp/rcplauncher", "Contents/MacOS/rcp/rcplauncher.properties",
        "Contents/MacOS/rcp/plugin_customization.ini", "Contents/MacOS/rcp/installInfo.plist",
        "Contents/MacOS/rcp/deploy/install.xml", "Contents/MacOS/rcp/deploy/.keystore",
        "Contents/MacOS/rcp/eclipse/plugins/com.kiv.rcp.base_6.2.3.20121115-1200",
        "Contents/MacOS/rcp/systemdata/.config/rcpinstall.properties"}) {
    EXPECT_TRUE(fs::exists(world.app() / entry)) << entry;
  }
}

TEST(MakeInstanceTest, DataFolderCanLieElsewhere) {
  const fs::path data = fs::temp_directory_path() / ("sample-data-" + std::to_string(getpid()));

  const SampleWorld world({"--rcpdata", data.string()});

  EXPECT_TRUE(fs::exists(data / ".config/rcpinstall.properties"));
  EXPECT_FALSE(fs::exists(world.rcpHome() / "systemdata"));
  EXPECT_THAT(contentOf(world.rcpHome() / "rcplauncher.properties"),
              HasSubstr("rcp.data=" + data.string() + "\n"));
  fs::remove_all(data);
}

TEST(MakeInstanceTest, WorkspaceFlagCanBeLeftOut) {
  const SampleWorld world({"--no-workspace-flag"});

  EXPECT_TRUE(fs::is_directory(world.rcpHome() / "systemdata"));
  EXPECT_FALSE(fs::exists(world.rcpHome() / "systemdata/.config"));
}

TEST(MakeInstanceTest, ExistingInstanceIsNotTouched) {
  const SampleWorld world;
  const fs::path script = fs::path(HOTFIX_SOURCE_DIR) / "sample/make-instance";
  writeText(world.rcpHome() / "mine", "mine");

  const Outcome again = run({script.string(), "--programs", HOTFIX_BINARY_DIR "/sample",
                             world.app().parent_path().string()});

  EXPECT_EQ(again.status, 1);
  EXPECT_EQ(contentOf(world.rcpHome() / "mine"), "mine");
}

TEST(MakeHotfixTest, DefaultLayoutNeedsNoSiteInThePackage) {
  const SampleWorld world;

  const fs::path package = world.makeHotfix("hf", {"--version", "7.1"});

  EXPECT_EQ(package, world.root() / "hf/mac/HF.pkg");
  EXPECT_THAT(namesIn(world.root() / "hf"), ElementsAre("mac", "updates"));
  EXPECT_THAT(plistOf(package), AllOf(HasSubstr("<string>7.1</string>"), HasSubstr("<true/>"),
                                      Not(HasSubstr("updateSiteList"))));
  EXPECT_THAT(contentOf(package / "Contents/Info.plist"),
              HasSubstr("<string>com.quillmere.hotfix.7.1</string>"));
  EXPECT_TRUE(fs::exists(package / "../../updates/platform/features/com.quillmere.hotfix_7.1"));
}

TEST(MakeHotfixTest, FlatLayoutNamesItsSite) {
  const SampleWorld world;

  const fs::path package = world.makeHotfix("hf", {"--layout", "flat"});

  EXPECT_THAT(namesIn(world.root() / "hf"), ElementsAre("HF.pkg", "deploy", "updates"));
  EXPECT_THAT(plistOf(package), HasSubstr("<key>updateSiteList</key>\n"
                                          "\t<string>${package}/../updates</string>"));
  EXPECT_THAT(contentOf(world.root() / "hf/deploy/install.hotfix.xml"),
              HasSubstr("url=\"${installer.root}/../updates\" action=\"install\""));
}

TEST(MakeHotfixTest, OptionsReachThePackage) {
  const SampleWorld world;

  const fs::path package =
      world.makeHotfix("hf", {"--registered", "--skip-running-check", "--name", "A & B",
                              "--no-uninstall-manifest", "--package", "P.pkg"});

  EXPECT_EQ(package.filename(), "P.pkg");
  EXPECT_THAT(plistOf(package), AllOf(HasSubstr("<false/>"), HasSubstr("A &amp; B"),
                                      HasSubstr("<key>SKIPRUNNINGCHECK</key>\n"
                                                "\t<string>true</string>")));
  EXPECT_FALSE(fs::exists(package.parent_path() / "deploy/uninstall.hotfix.xml"));
}

TEST(ApplicationTest, RunningProcessIsSeenInsideItsBundle) {
  const SampleWorld world;
  std::string program = (world.app() / "Contents/MacOS/Quillmere").string();
  std::string option = "--stay";
  std::string seconds = "60";
  std::array<char*, 4> arguments{program.data(), option.data(), seconds.data(), nullptr};
  pid_t child = -1;
  ASSERT_EQ(posix_spawn(&child, program.c_str(), nullptr, nullptr, arguments.data(), environ), 0);

  EXPECT_EQ(fs::read_symlink("/proc/" + std::to_string(child) + "/exe"), program);

  kill(child, SIGTERM);
  waitpid(child, nullptr, 0);
}

TEST(ApplicationTest, TellsItsFeatures) {
  const SampleWorld world;

  EXPECT_THAT(world.applicationOutput(), HasSubstr("feature com.quillmere.platform_6.2.3\n"));
}

}  // namespace
