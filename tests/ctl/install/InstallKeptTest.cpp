// What is kept of each run, how much, and where nobody else can have a hand in it.

#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <regex>

#include "ctl/install/InstallControl.h"
#include "support/Proves.h"

namespace installer::cli {
namespace {

using nlohmann::json;
using ::testing::AllOf;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::SizeIs;
using ::testing::StartsWith;

class InstallKeptTest : public InstallControl {
 protected:
  // The folder of a run of long ago, by its name alone.
  std::string keepOld(const std::string& name) {
    const std::string folder = std::string(kState) + "/" + name;
    _sandbox.writeFile(folder + "/result.json", "{}");
    _sandbox.writeFile(folder + "/deep/file", "x");
    return folder;
  }
  void expectNotKept(const std::string& reason) {
    const json answer = told(14);
    EXPECT_EQ("not-kept", answer["cause"]);
    EXPECT_THAT(_result.err, AllOf(StartsWith("hotfixctl: "), HasSubstr(reason)));
    EXPECT_THAT(_sandbox.children(), IsEmpty());
    EXPECT_FALSE(_sandbox.exists(kTrace));
  }
};

TEST_F(InstallKeptTest, ARunIsKeptInAFolderOfItsOwn) {
  proves("ROLLOUT-8");
  const json answer = told(0);

  ASSERT_THAT(keptRuns(), SizeIs(1));
  const std::string run = keptRuns().front();
  EXPECT_EQ(run, answer["keptRun"]);
  EXPECT_TRUE(
      std::regex_match(run, std::regex("/var/lib/hotfix/20\\d{6}T\\d{6}\\.\\d{3}Z-Quillmere")))
      << run;
  EXPECT_THAT(_sandbox.list(run), ElementsAre("install_trace.log", "output.txt", "plan.json",
                                              "record.plist", "result.json"));
  EXPECT_EQ(_sandbox.readFile(kTrace), kept("install_trace.log"));
  EXPECT_EQ(_result.out, kept("result.json"));
  EXPECT_EQ("integer", listAt(run + "/record.plist").find("ERROR_CODE")->kind);
  EXPECT_EQ(0, ctl::test::judged(kept("plan.json"), "plan-1")["status"]);
}

TEST_F(InstallKeptTest, OnlyRootCanReadAndChangeWhatIsKept) {
  proves("ROLLOUT-9");
  RunOptions open;
  open.mask = 0;
  EXPECT_EQ(0, installs({}, open).status);

  EXPECT_EQ(0755u, _sandbox.mode(kState));
  EXPECT_EQ(0700u, _sandbox.mode(std::string(kState) + "/lock"));
  EXPECT_EQ(0700u, _sandbox.mode(keptRuns().front()));
  for (const char* file : {"plan.json", "record.plist", "result.json", "output.txt"})
    EXPECT_EQ(0600u, _sandbox.mode(keptRuns().front() + "/" + file)) << file;
}

TEST_F(InstallKeptTest, AFailedRunIsKeptAsWell) {
  proves("ROLLOUT-8");
  recordHotfix("1.6");
  (void)told(7);

  EXPECT_EQ(7, keptResult()["status"]);
  EXPECT_EQ("7", listAt(keptRuns().front() + "/record.plist").find("ERROR_CODE")->text);
  EXPECT_THAT(kept("install_trace.log"), HasSubstr("Higher version hotfix has been installed."));
  EXPECT_EQ(1, ctl::test::judged(kept("plan.json"), "plan-1")["status"]);
}

TEST_F(InstallKeptTest, ExplainReadsAKeptRunAndTheLastTraceStaysItsOwn) {
  proves("ROLLOUT-8");
  recordHotfix("1.6");
  (void)told(7);
  recordHotfix("1.4");
  (void)told(0);

  const RunResult first = control({"explain", "--json", keptRuns().front()});
  EXPECT_EQ(1, first.status);
  EXPECT_EQ("higher-hotfix-installed", json::parse(first.out)["run"]["ending"]);
  const RunResult last = control({"explain", "--json"});
  EXPECT_EQ(0, last.status);
  EXPECT_EQ(kTrace, json::parse(last.out)["trace"]);
  EXPECT_EQ("installed", json::parse(last.out)["run"]["ending"]);
}

TEST_F(InstallKeptTest, ARunWithoutABundleIsKeptToo) {
  _sandbox.remove(_package.list());
  (void)told(8);

  EXPECT_THAT(keptRuns().front(), ::testing::EndsWith("Z-unknown"));
}

// --- How much is kept ----------------------------------------------------------------------------

TEST_F(InstallKeptTest, TheOldestGoWhenThereAreTooMany) {
  proves("ROLLOUT-10");
  for (int run = 0; run < 3; ++run) EXPECT_EQ(0, installs({"--keep", "2"}).status);

  ASSERT_THAT(keptRuns(), SizeIs(2));
  const std::string last = keptRuns().back();
  EXPECT_EQ(0, installs({"--keep", "1"}).status);
  ASSERT_THAT(keptRuns(), SizeIs(1));
  EXPECT_LT(last, keptRuns().front());
}

TEST_F(InstallKeptTest, OneThatDoesNotBeginTakesNobodysPlace) {
  proves("ROLLOUT-10");
  const std::string old = keepOld("20200101T000000.000Z-Old");
  _sandbox.writeFile("/opt/Played", "no program", 0644);
  (void)told(13, {"--keep", "1", "--installer", "/opt/Played"});

  EXPECT_THAT(keptRuns(), ElementsAre(old));
}

// After a clock that went wrong.
TEST_F(InstallKeptTest, TheRunItselfStaysWhenItLooksOlder) {
  proves("ROLLOUT-10");
  const std::string later = keepOld("20990101T000000.000Z-Later");
  const json answer = told(0, {"--keep", "1"});

  EXPECT_THAT(keptRuns(), ElementsAre(answer["keptRun"]));
  EXPECT_FALSE(_sandbox.exists(later));
}

TEST_F(InstallKeptTest, TwentyAreKeptUnlessToldOtherwise) {
  proves("ROLLOUT-10");
  (void)told(0);
  const std::string real = keptRuns().front();
  const std::string day = real.substr(0, real.find('T'));
  _sandbox.remove(real);
  for (int run = 10; run < 35; ++run)
    keepOld(day.substr(day.rfind('/') + 1) + "T000000.0" + std::to_string(run) + "Z-Old");
  EXPECT_EQ(0, installs().status);

  ASSERT_THAT(keptRuns(), SizeIs(20));
  EXPECT_THAT(keptRuns().front(), HasSubstr("T000000.016Z-Old"));
}

TEST_F(InstallKeptTest, WhatIsTooOldGoes) {
  proves("ROLLOUT-10");
  const std::string old = keepOld("20200101T000000.000Z-Old");
  const std::string older = keepOld("19990101T000000.000Z-Old");
  EXPECT_EQ(0, installs({"--keep-days", "36500"}).status);
  EXPECT_TRUE(_sandbox.exists(old));
  EXPECT_EQ(0, installs().status);

  EXPECT_FALSE(_sandbox.exists(old));
  EXPECT_FALSE(_sandbox.exists(older));
  EXPECT_THAT(keptRuns(), SizeIs(2));
}

TEST_F(InstallKeptTest, NothingElseGoesAndNoLinkIsFollowed) {
  proves("ROLLOUT-10");
  const std::string old = keepOld("20200101T000000.000Z-Old");
  _sandbox.writeFile("/precious/result.json", "{}");
  _sandbox.writeFile("/precious/mine", "mine");
  _sandbox.makeLink(old + "/link", "/precious");
  _sandbox.makeLink(std::string(kState) + "/20200102T000000.000Z-Link", "/precious");
  for (const char* name : {"20200101", "20200101T000000.000Z-", "20200101T000000.000Z-a b",
                           "2020O101T000000.000Z-Old", "20200101T000000.000Z-Old~", "notes"})
    keepOld(name);
  _sandbox.writeFile(std::string(kState) + "/20200103T000000.000Z-File", "file");
  const auto before = _sandbox.tree(kState);
  EXPECT_EQ(0, installs({"--keep", "1"}).status);

  auto after = _sandbox.tree(kState);
  for (const auto& [path, item] : before) {
    if (path.starts_with("/20200101T000000.000Z-Old/") || path == "/20200101T000000.000Z-Old")
      EXPECT_FALSE(after.contains(path)) << path;
    else
      EXPECT_EQ(item, after[path]) << path;
  }
  EXPECT_EQ("mine", _sandbox.readFile("/precious/mine"));
}

TEST_F(InstallKeptTest, WhatBelongsToAnotherUserIsNoRun) {
  proves("ROLLOUT-10");
  if (!CliSandbox::hasManyUsers()) GTEST_SKIP() << "needs several users";
  const std::string old = keepOld("20200101T000000.000Z-Old");
  _sandbox.giveTo(old, CliSandbox::kAlice, CliSandbox::kAlice);
  EXPECT_EQ(0, installs().status);

  EXPECT_TRUE(_sandbox.exists(old + "/deep/file"));
}

// --- Where nobody else has a hand in it ----------------------------------------------------------

TEST_F(InstallKeptTest, AFolderThatOthersCanWriteIsRefused) {
  proves("ROLLOUT-9");
  _sandbox.makeFolder(kState, 0777);
  expectNotKept("\"/var/lib/hotfix\" cannot be trusted: others can write /var/lib/hotfix");
  EXPECT_THAT(_sandbox.list(kState), IsEmpty());

  _sandbox.setMode(kState, 0755);
  _sandbox.setMode("/var/lib", 0777);
  expectNotKept("others can write /var/lib");
  _sandbox.setMode("/var/lib", 0755);
  (void)told(0);
}

TEST_F(InstallKeptTest, LogsThatAGroupCanWriteAreInNobodysWay) {
  proves("ROLLOUT-9");
  _sandbox.makeFolder("/var/log", 0775);

  EXPECT_EQ(0, installs().status);
}

TEST_F(InstallKeptTest, AFolderOrALinkOfAnotherUserIsRefused) {
  proves("ROLLOUT-9");
  if (!CliSandbox::hasManyUsers()) GTEST_SKIP() << "needs several users";
  _sandbox.makeLink(kState, "/Users/alice");
  _sandbox.giveTo(kState, CliSandbox::kAlice, CliSandbox::kAlice);
  expectNotKept("/var/lib/hotfix belongs to the user 1000");

  _sandbox.remove(kState);
  _sandbox.makeLink(kState, "/Users/alice");
  expectNotKept("/Users/alice belongs to the user 1000");
  EXPECT_THAT(_sandbox.list("/Users/alice"), IsEmpty());

  _sandbox.remove(kState);
  _sandbox.makeFolder(kState);
  _sandbox.giveTo(kState, CliSandbox::kAlice, CliSandbox::kAlice);
  expectNotKept("/var/lib/hotfix belongs to the user 1000");
}

TEST_F(InstallKeptTest, ALinkOfRootsMayMoveTheFolder) {
  _sandbox.makeFolder("/srv/runs");
  _sandbox.makeLink(kState, "/srv/runs");
  (void)told(0);

  EXPECT_THAT(_sandbox.list("/srv/runs"), SizeIs(2));
}

TEST_F(InstallKeptTest, WhatIsNoFolderIsRefused) {
  proves("ROLLOUT-9");
  _sandbox.writeFile(kState, "file");
  expectNotKept("\"/var/lib/hotfix\" is no folder");
  _sandbox.remove(kState);
  _sandbox.makePipe(kState);
  expectNotKept("\"/var/lib/hotfix\" is no folder");
  _sandbox.remove(kState);
  _sandbox.makeLink(kState, "/nowhere");
  expectNotKept("\"/var/lib/hotfix\" is no folder");
  _sandbox.remove("/var/lib");
  expectNotKept("\"/var/lib/hotfix\" cannot be created: No such file or directory");
}

// Who can open a folder can lock it.
TEST_F(InstallKeptTest, ALockThatOthersCouldTakeIsRefused) {
  proves("ROLLOUT-9");
  const std::string lock = std::string(kState) + "/lock";
  const std::string reason =
      "\"" + lock + "\" has to be a folder that is closed to everybody but root";
  _sandbox.makeFolder(lock, 0755);
  expectNotKept(reason);
  _sandbox.setMode(lock, 0710);
  expectNotKept(reason);
  _sandbox.remove(lock);
  _sandbox.makeFolder("/elsewhere", 0700);
  _sandbox.makeLink(lock, "/elsewhere");
  expectNotKept(reason);
  _sandbox.remove(lock);
  _sandbox.writeFile(lock, "", 0600);
  expectNotKept("\"" + lock + "\" is no folder");
}

// --- A disk that is full -------------------------------------------------------------------------

TEST_F(InstallKeptTest, NothingIsBegunThatCannotBeKept) {
  proves("ROLLOUT-9");
  _sandbox.limitSpace("/var/lib", 64 << 10);
  _sandbox.makeFolder(kState);
  _sandbox.fillSpace("/var/lib");
  expectNotKept("plan.json\" cannot be written: No space left on device");

  EXPECT_THAT(keptRuns(), IsEmpty());
}

TEST_F(InstallKeptTest, WithoutRoomForAFolderNothingIsBegun) {
  _sandbox.limitEntries("/var/lib", 3);
  expectNotKept("cannot be created: No space left on device");
}

// There is room for the result then.
TEST_F(InstallKeptTest, ATraceThatDoesNotFitIsToldToPeopleToo) {
  proves("ROLLOUT-8");
  _sandbox.limitSpace("/var/lib", 256 << 10);
  playInstaller(
      "before=\"Nov 22 10:00:00 host HotfixInstaller[$$] <Info>:\"; n=0\n"
      "{ echo \"$before Begin to install hotfix.\"\n"
      "while [ $n -lt 6000 ]; do echo \"$before A line like many others.\"; n=$((n + 1)); done; } "
      "> /tmp/install_trace.log\nexit 1\n");
  const RunResult result = installs(_played);

  const std::string lack = "\"/tmp/install_trace.log\" cannot be copied to \"" +
                           keptRuns().front() + "/install_trace.log\": No space left on device";
  EXPECT_THAT(result.out, HasSubstr("\nNot kept   " + lack + "\n"));
  EXPECT_EQ(lack, keptResult()["keptLack"]);
  EXPECT_THAT(installs().out, Not(HasSubstr("Not kept")));
}

TEST_F(InstallKeptTest, ADiskThatFillsUpMeanwhileDoesNotChangeTheOutcome) {
  proves("ROLLOUT-8");
  _sandbox.limitSpace("/var/lib", 256 << 10);
  playInstaller(
      "/control/HotfixInstaller \"$@\"; status=$?\n"
      "while echo 0123456789012345678901234567890123456789012345678901234567890123; do :;"
      " done > /var/lib/filler 2> /dev/null\nexit $status\n");
  const json answer = told(0, _played);

  EXPECT_EQ("1.5", recorded("hotfixVersion"));
  EXPECT_THAT(answer["keptLack"], HasSubstr("No space left on device"));
  EXPECT_THAT(_result.err, HasSubstr("No space left on device"));
  EXPECT_EQ("at-work", keptResult()["cause"]) << "the next one brings it to its end";

  // The trace is of another process than the one that was started: nothing tells how that ended.
  _sandbox.remove("/var/lib/filler");
  (void)told(0);
  EXPECT_EQ("broken-off",
            json::parse(*_sandbox.readFile(keptRuns().front() + "/result.json"))["cause"]);
}

}  // namespace
}  // namespace installer::cli
