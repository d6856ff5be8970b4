#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/file.h>
#include <unistd.h>

#include <csignal>
#include <string>
#include <vector>

#include "cli/Fixtures.h"
#include "support/Proves.h"

namespace installer::cli {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;

constexpr int kFiles = 50;  // in a merge

// What a run that was killed left is gone after the next one.
class LeftOversTest : public InstallerTest {
 protected:
  std::vector<std::string> leftOvers() const { return _sandbox.entriesNamed(".hotfix-"); }

  void addExtras() {
    _package.set("extras", "/extras");
    writePreferences();
    for (int number = 0; number < kFiles; ++number)
      _sandbox.writeFile("/extras/" + std::to_string(number), "new");
    _sandbox.writeFile(_instance.deploy("extras/0"), "old");
    _sandbox.writeFile(_instance.deploy("extras/own"), "own");
  }

  // A run that is killed when one of the merged files is to get its name.
  void killMerge() {
    RunOptions options;
    options.set("LD_PRELOAD", CliSandbox::kKillAtName);
    options.set("HOTFIX_KILL_AT_NAME", std::to_string(kFiles / 2));
    options.set("ASAN_OPTIONS", "verify_asan_link_order=0");
    ASSERT_EQ(128 + SIGKILL, install(options).status);
  }

  void leaveItems() {
    _sandbox.writeFile(_instance.home() + "/.hotfix-1", "left");
    _sandbox.writeFile(_instance.deploy("extras/a/.hotfix-2/b/file"), "left");
    _sandbox.makeLink(_instance.home() + "/eclipse/.hotfix-3", "/Users");
    _sandbox.writeFile("/Users/alice/data/.config/.hotfix-4", "left");
    _sandbox.writeFile("/tmp/.hotfix-5", "left", 0600);
    if (CliSandbox::hasManyUsers())
      _sandbox.giveTo(_instance.home() + "/.hotfix-1", CliSandbox::kAlice, CliSandbox::kAlice);
  }
};

TEST_F(LeftOversTest, RunAfterAKilledMergeEndsAsIfThereHadBeenNone) {
  proves("AGAIN-1");
  addExtras();
  killMerge();
  ASSERT_THAT(leftOvers(), Not(IsEmpty()));

  EXPECT_EQ(0, install().status);

  EXPECT_THAT(leftOvers(), IsEmpty());
  EXPECT_EQ(kFiles + 1u, _sandbox.list(_instance.deploy("extras")).size());
  EXPECT_EQ("new", _sandbox.readFile(_instance.deploy("extras/0")));
  EXPECT_EQ("own", _sandbox.readFile(_instance.deploy("extras/own")));
}

TEST_F(LeftOversTest, RunThatFailsItsChecksRemovesThemToo) {
  proves("AGAIN-1");
  addExtras();
  killMerge();
  ASSERT_THAT(leftOvers(), Not(IsEmpty()));
  _sandbox.remove(_instance.deploy("install.xml"));

  EXPECT_EQ(1, install().status);

  EXPECT_TRUE(_sandbox.exists(kMarker));
  EXPECT_THAT(leftOvers(), IsEmpty());
}

TEST_F(LeftOversTest, HomeSettingsAndTmpAreFreedOfThem) {
  proves("AGAIN-1");
  leaveItems();

  EXPECT_EQ(0, installWithData("/Users/alice/data").status);

  EXPECT_THAT(leftOvers(), IsEmpty());
  EXPECT_TRUE(_sandbox.isFolder("/Users/alice"));
}

TEST_F(LeftOversTest, TheyAreGoneBeforeTheLauncherStarts) {
  proves("AGAIN-1");
  leaveItems();
  _sandbox.script("rcplauncher", 1, test::ChildScript().snapshot(_instance.home() + "/.hotfix-1"));

  EXPECT_EQ(0, installWithData("/Users/alice/data").status);

  const auto launchers = _sandbox.children("rcplauncher");
  ASSERT_FALSE(launchers.empty());
  EXPECT_EQ("A", launchers[0].snapshots.at(_instance.home() + "/.hotfix-1"));
}

TEST_F(LeftOversTest, CopyOfTheStagingFolderThatWasKilledIsRemoved) {
  proves("AGAIN-1");
  _sandbox.writeFile(
      kConfiguration,
      xmlList(ListValue::dictionary({{"newInstallLocation", ListValue::string("/opt/new")}})));
  _sandbox.writeFile("/tmp/qlmcore2/file", "staged");
  _sandbox.writeFile("/opt/.hotfix-6/file", "sta");

  EXPECT_EQ(0, install().status);

  EXPECT_THAT(_sandbox.list("/opt"), ElementsAre("new"));
  EXPECT_EQ("staged", _sandbox.readFile("/opt/new/file"));
}

TEST_F(LeftOversTest, WhatOthersMakeOrOwnStays) {
  proves("AGAIN-2");
  _sandbox.writeFile("/tmp/.hotfix-1", "in the making");
  const int maker = open(_sandbox.host("/tmp/.hotfix-1").c_str(), O_RDONLY | O_CLOEXEC);
  ASSERT_EQ(0, flock(maker, LOCK_EX | LOCK_NB));
  _sandbox.writeFile("/tmp/sub/.hotfix-2", "elsewhere");
  _sandbox.writeFile("/Users/alice/data/.hotfix-3", "elsewhere");
  std::vector<std::string> expected = {"/tmp/.hotfix-1", "/tmp/sub/.hotfix-2",
                                       "/Users/alice/data/.hotfix-3"};
  if (CliSandbox::hasManyUsers()) {
    expected.emplace_back("/tmp/.hotfix-4");
    _sandbox.writeFile("/tmp/.hotfix-4", "another user's");
    _sandbox.giveTo("/tmp/.hotfix-4", CliSandbox::kBob, CliSandbox::kBob);
  }

  EXPECT_EQ(0, installWithData("/Users/alice/data").status);

  close(maker);
  EXPECT_THAT(leftOvers(), ::testing::UnorderedElementsAreArray(expected));
}

}  // namespace
}  // namespace installer::cli
