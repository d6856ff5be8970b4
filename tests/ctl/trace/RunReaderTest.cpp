#include "ctl/trace/RunReader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <random>
#include <set>

#include "driver/MemoryLack.h"
#include "platform/files/Failure.h"
#include "support/Proves.h"

namespace installer::ctl {
namespace {

using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::Field;
using ::testing::Ge;
using ::testing::SizeIs;

// Lines as the installer writes them, a second apart.
class RunReaderTest : public ::testing::Test {
 protected:
  static std::string line(int second, const std::string& text, const std::string& level = "Info",
                          int process = 42) {
    const std::string two = std::to_string(second / 10) + std::to_string(second % 10);
    return "Nov 22 07:08:" + two + " mac HotfixInstaller[" + std::to_string(process) + "] <" +
           level + ">: " + text;
  }
  void add(const std::string& text, const std::string& level = "Info") {
    _reader.add(line(_second++, text, level));
  }
  void addAll(const std::vector<std::string>& texts) {
    for (const std::string& text : texts) add(text);
  }
  void addChecks() {
    addAll({"Begin to install hotfix.", "Caller didn't specify rcpdata, use rcp/systemdata",
            "Check whether the unsupported characters are contained.",
            "Check whether the target platform is installed.",
            "Check the target platform under /A/rcp.", "The pathToRcphome is: /A/rcp.",
            "Check whether platform is running.", "Check the version of hotfix"});
  }
  void addPassedChecks() {
    addChecks();
    addAll({"Success", "The pathToRcphome is: /A/rcp.", "The pathToRcphome is: /A/rcp."});
  }
  ctl::Run run() { return _reader.run().value(); }
  std::vector<StepKind> kinds() {
    std::vector<StepKind> kinds;
    for (const Step& step : run().steps) kinds.push_back(step.kind);
    return kinds;
  }

  RunReader _reader{2026};
  int _second = 0;
};

TEST_F(RunReaderTest, WithoutABeginningThereIsNoRun) {
  add("Success");
  _reader.add("noise");

  EXPECT_FALSE(_reader.run());
  EXPECT_EQ(2u, _reader.lines());
  EXPECT_EQ(2u, _reader.otherLines());
}

TEST_F(RunReaderTest, StepsLastUntilTheNextOneBegins) {
  addChecks();

  EXPECT_THAT(kinds(),
              ElementsAre(StepKind::readPackage, StepKind::checkPaths, StepKind::checkInstance,
                          StepKind::checkApplication, StepKind::checkVersions));
  const auto all = run();
  EXPECT_EQ(7, all.seconds);
  EXPECT_EQ("Nov 22 07:08:00", all.began);
  EXPECT_EQ("Nov 22 07:08:07", all.ended);
  EXPECT_EQ(42, all.process);
  EXPECT_EQ("mac", all.host);
  EXPECT_EQ(3, all.steps[2].at);
  EXPECT_EQ(3, all.steps[2].seconds);
  EXPECT_EQ(7, all.steps[4].at);
  EXPECT_EQ(0, all.steps[4].seconds);
  EXPECT_EQ("/A/rcp", all.rcpHome);
}

// As at the end of summer time.
TEST_F(RunReaderTest, AClockThatIsTurnedBackTakesNoTimeOffARun) {
  proves("EXPLAIN-3");
  _reader.add(line(0, "Begin to install hotfix."));
  _reader.add(line(10, "Check whether the unsupported characters are contained."));
  _reader.add(line(5, "Check whether the target platform is installed."));
  _reader.add(line(7, "trouble", "Error"));
  EXPECT_EQ(10, run().seconds);
  EXPECT_EQ(0, run().steps[1].seconds);
  EXPECT_EQ(10, run().steps[2].at);
  EXPECT_EQ(0, run().steps[2].seconds);
  EXPECT_EQ(10, run().problems[0].at);

  _reader.add(line(12, "Check whether platform is running."));
  EXPECT_EQ(12, run().seconds);
  EXPECT_EQ(2, run().steps[2].seconds);
}

TEST_F(RunReaderTest, ALeapYearThatBeginsMeanwhileIsCounted) {
  _reader = RunReader(2028);
  _reader.add("Dec 31 23:59:50 mac HotfixInstaller[42] <Info>: Begin to install hotfix.");
  _reader.add("Jan  1 00:00:10 mac HotfixInstaller[42] <Info>: Check the version of hotfix");

  EXPECT_EQ(20, run().seconds);
}

TEST_F(RunReaderTest, OtherProgramsAndOtherRunsAreLeftOut) {
  addChecks();
  _reader.add(line(30, "Success", "Info", 43));
  _reader.add("what is this");

  EXPECT_THAT(kinds(), SizeIs(5));
  EXPECT_EQ(7, run().seconds);
  EXPECT_EQ(2u, _reader.otherLines());
}

TEST_F(RunReaderTest, OfSeveralRunsTheLastCounts) {
  addPassedChecks();
  _reader.add(line(40, "Begin to install hotfix.", "Info", 50));
  _reader.add(line(41, "Check whether the unsupported characters are contained.", "Info", 50));

  EXPECT_EQ(50, run().process);
  EXPECT_EQ(1, run().seconds);
  EXPECT_THAT(kinds(), ElementsAre(StepKind::readPackage, StepKind::checkPaths));
  EXPECT_EQ(11u, _reader.otherLines());
  EXPECT_EQ(13u, _reader.lines());
}

TEST_F(RunReaderTest, VersionsAreTold) {
  addChecks();
  addAll({"Current hotfix version: 1.5.", "Installed hotfix version: (null)."});
  EXPECT_EQ("1.5", run().packageVersion);
  EXPECT_EQ(std::nullopt, run().installedVersion);

  addAll({"Current hotfix version: (null).", "Installed hotfix version: 1.4."});
  EXPECT_EQ("1.4", run().installedVersion);
}

TEST_F(RunReaderTest, OnlyTheBeginningMeansThatArgumentsWereMissing) {
  add("Begin to install hotfix.");
  EXPECT_EQ(Ending::argumentsMissing, run().ending);

  add("Caller specified rcpdata");
  EXPECT_EQ(Ending::brokenOff, run().ending);
}

TEST_F(RunReaderTest, LackOfMemoryIsToldInTheInstallersOwnWords) {
  addPassedChecks();
  add("\"/a\" cannot be written: No space left on device", "Error");
  add(kNoMemoryToGoOn, "Error");
  EXPECT_EQ(Ending::outOfMemory, run().ending);
  EXPECT_EQ(kNoMemoryToGoOn, run().cause.value().text);

  _reader = RunReader(2026);
  add("Begin to install hotfix.");
  add(kNoMemoryToBegin, "Error");
  EXPECT_EQ(Ending::outOfMemory, run().ending);
}

TEST_F(RunReaderTest, AnInstanceThatCannotBeLockedIsToldInTheSystemsWords) {
  addAll({"Begin to install hotfix.", "Caller specified rcpdata"});
  add(lockFailure("/A/rcp", EIO).description, "Error");

  EXPECT_EQ(Ending::instanceNotLocked, run().ending);
  EXPECT_EQ(lockFailure("/A/rcp", EIO).description, run().cause.value().text);
}

TEST_F(RunReaderTest, AFileSystemWithoutLocksEndsNothing) {
  addAll({"Begin to install hotfix.", "Caller specified rcpdata"});
  add(lockFailure("/A/rcp", ENOLCK).description + ". Nothing keeps other installations away.",
      "Warning");

  EXPECT_EQ(Ending::brokenOff, run().ending);
  EXPECT_THAT(run().problems, SizeIs(1));
  EXPECT_EQ(std::nullopt, run().cause);
}

TEST_F(RunReaderTest, AFailedCheckIsNoEndBeforeTheInstanceIsBroughtBack) {
  proves("EXPLAIN-2");
  addChecks();
  add("Higher version hotfix has been installed.", "Error");
  add("Not success");
  add("The pathToRcphome is: /A/rcp.");
  EXPECT_EQ(Ending::brokenOff, run().ending);
  EXPECT_EQ(std::nullopt, run().cause);

  add("Begin to call collection utility ", "Notice");
  EXPECT_EQ(Ending::higherHotfixInstalled, run().ending);
  EXPECT_EQ("Higher version hotfix has been installed.", run().cause.value().text);
}

TEST_F(RunReaderTest, ASignalInTheRecoveryIsTheEnd) {
  addChecks();
  add("Not success");
  add("Asked to end by signal 15 (Terminated). The installation ends here.", "Error");

  EXPECT_EQ(Ending::interrupted, run().ending);
}

TEST_F(RunReaderTest, TheCauseOfAFailedCheckIsWhatTheCheckSaid) {
  proves("EXPLAIN-2");
  add("Begin to install hotfix.");
  add("\"/tmp/record\" cannot be written: Is a directory", "Error");
  addAll(
      {"Check whether the target platform is installed.", "Check the target platform under /A."});
  add("\"/A/deploy/install.xml\" cannot be read: Permission denied", "Error");
  add("Check the version of hotfix");
  add("Higher version hotfix has been installed.", "Error");
  addAll({"Not success", "Begin to call collection utility "});
  EXPECT_EQ("Higher version hotfix has been installed.", run().cause.value().text);

  _reader = RunReader(2026);
  add("Begin to install hotfix.");
  add("\"/tmp/record\" cannot be written: Is a directory", "Error");
  add("Check whether the target platform is installed.");
  add("\"/A/deploy/install.xml\" cannot be read: Permission denied", "Error");
  addAll({"Not success", "Begin to call collection utility "});
  EXPECT_EQ("\"/A/deploy/install.xml\" cannot be read: Permission denied",
            run().cause.value().text);

  _reader = RunReader(2026);
  add("Begin to install hotfix.");
  add("\"/tmp/record\" cannot be written: Is a directory", "Error");
  add("Check whether the target platform is installed.");
  addAll({"Not success", "Begin to call collection utility "});
  EXPECT_EQ(Ending::notInstalled, run().ending);
  EXPECT_EQ(std::nullopt, run().cause);
}

TEST_F(RunReaderTest, WhatIsWrongWithThePackageIsTheCauseOfAMissingInstance) {
  proves("EXPLAIN-2");
  for (const char* lack :
       {"There is no install package at /Fix.pkg.", "There is no hotfix description at /Fix.pkg/x.",
        "The hotfix description names no bundleName."}) {
    _reader = RunReader(2026);
    add("Begin to install hotfix.");
    add("\"/tmp/record\" cannot be written: Is a directory", "Error");
    add(lack, "Error");
    add("\"/data\" cannot be read: Permission denied", "Error");
    add("Check whether the target platform is installed.");
    add("\"/tmp/other\" cannot be written: Is a directory", "Error");
    addAll({"Not success", "Begin to call collection utility "});

    EXPECT_EQ(Ending::notInstalled, run().ending);
    EXPECT_EQ(lack, run().cause.value().text);
  }
}

TEST_F(RunReaderTest, TheRecoveryTellsTheHomeThatNoCheckCameTo) {
  proves("STATUS-3");
  addAll({"Begin to install hotfix.", "Check whether the unsupported characters are contained."});
  add("The pathToRcphome is: /Other/rcp.");
  add("Not success");
  EXPECT_EQ(std::nullopt, run().rcpHome);

  add("The pathToRcphome is: (null).");
  EXPECT_EQ(std::nullopt, run().rcpHome);

  add("The pathToRcphome is: /A=B/rcp.");
  add("The pathToRcphome is: /Other/rcp.");
  EXPECT_EQ("/A=B/rcp", run().rcpHome);
}

TEST_F(RunReaderTest, AUserThatIsLostIsTold) {
  addChecks();
  add("The process could not become its own user again. It ends here.", "Error");

  EXPECT_EQ(Ending::userNotRestored, run().ending);
  EXPECT_TRUE(run().cause);
}

TEST_F(RunReaderTest, OnlyErrorsEndARun) {
  addChecks();
  add("Asked to end by signal 15 (Terminated). The installation ends here.");

  EXPECT_EQ(Ending::brokenOff, run().ending);
}

TEST_F(RunReaderTest, WhatWentWrongBeforeTheLastPassIsNotItsCause) {
  addPassedChecks();
  add("Not able to start /A/rcp/rcplauncher: No such file or directory.", "Error");
  addAll({"Copy install manifest to /A/rcp/deploy/install.update.xml.", "Copy install manifest."});
  add("\"/A/rcp/deploy/extras\" cannot be copied: Permission denied", "Error");
  add("Start provisioning system. ");
  add("The provisioning answered 13; the logs of the launcher are in a and in b.", "Error");
  add("Begin to call collection utility to gather log files for the X operaton of Y project.",
      "Notice");

  EXPECT_EQ(Ending::provisioningFailed, run().ending);
  EXPECT_THAT(run().cause.value().text, ::testing::StartsWith("The provisioning answered 13;"));
  EXPECT_THAT(run().problems, SizeIs(3));
}

TEST_F(RunReaderTest, TheSecondPassCounts) {
  addPassedChecks();
  add("Hot fix workspace flag file is missing, launching install new hotfix twice");
  for (int pass = 0; pass < 2; ++pass)
    addAll({"Copy install manifest to /A/rcp/deploy/install.update.xml.", "Copy install manifest.",
            "Start provisioning system. ", "Begin to update new hotfix version."});
  add("Begin to call collection utility ");
  EXPECT_EQ(Ending::installed, run().ending);

  _reader = RunReader(2026);
  addPassedChecks();
  add("Hot fix workspace flag file is missing, launching install new hotfix twice");
  addAll({"Copy install manifest to /A/rcp/deploy/install.update.xml.", "Copy install manifest.",
          "Start provisioning system. ", "Begin to update new hotfix version.",
          "Begin to call collection utility "});
  EXPECT_EQ(Ending::manifestNotCopied, run().ending);
}

TEST_F(RunReaderTest, AnOlderHotfixIsRemovedBeforeTheUpdate) {
  addChecks();
  addAll({"Success", "The pathToRcphome is: /A/rcp.",
          "Found another hot fix, uninstall it before installing the new hot fix",
          "The pathToRcphome is: /A/rcp.",
          "Copy install manifest to /A/rcp/deploy/install.update.xml.",
          "Launch platform to uninstall provisioned features...", "The pathToRcphome is: /A/rcp.",
          "The pathToRcphome is: /A/rcp.",
          "Copy install manifest to /A/rcp/deploy/install.update.xml."});

  const auto all = kinds();
  EXPECT_EQ((std::vector{StepKind::removeOlder, StepKind::updateUntouched, StepKind::bringFiles}),
            std::vector(all.begin() + 5, all.end()));
}

TEST_F(RunReaderTest, WaitsAreSteps) {
  add("Begin to install hotfix.");
  add("Another installation is at work on this instance, waiting for its end.", "Notice");
  add("A launcher that an earlier installation left behind is at work on this instance, waiting "
      "for its end.",
      "Notice");

  EXPECT_THAT(kinds(), ElementsAre(StepKind::readPackage, StepKind::waitForInstaller,
                                   StepKind::waitForLauncher));
}

TEST_F(RunReaderTest, StepsAndProblemsAreBounded) {
  add("Begin to install hotfix.");
  for (int i = 0; i < 1000; ++i) {
    _reader.add(line(1, "Check whether platform is running."));
    _reader.add(line(1, "trouble " + std::to_string(i), "Error"));
  }

  EXPECT_THAT(run().steps, SizeIs(ctl::Run::kMostSteps));
  EXPECT_THAT(run().problems, SizeIs(ctl::Run::kMostProblems));
  EXPECT_EQ(900u, run().problemsLeftOut);
  EXPECT_EQ("trouble 0", run().problems[0].text);
}

TEST_F(RunReaderTest, EveryStepHasANameAndWords) {
  std::set<std::string_view> names;
  for (int kind = 0; kind <= static_cast<int>(StepKind::collectLogs); ++kind) {
    names.insert(nameOf(static_cast<StepKind>(kind)));
    EXPECT_FALSE(wordsOf(static_cast<StepKind>(kind)).empty());
  }
  EXPECT_EQ(14u, names.size());
  EXPECT_EQ("read-package", nameOf(StepKind::readPackage));
  EXPECT_EQ("collect-logs", nameOf(StepKind::collectLogs));
}

// A hostile trace is made of the lines of a good one, mixed, cut and glued.
TEST_F(RunReaderTest, HostileLinesNeverBreakIt) {
  proves("EXPLAIN-3");
  std::vector<std::string> texts = {
      "Begin to install hotfix.",
      "Success",
      "Not success",
      "Copy install manifest.",
      "Copy install manifest to ",
      "The pathToRcphome is: ",
      "Current hotfix version: .",
      "Check the target platform under .",
      "Check the target platform under ",
      "Found another hot fix, uninstall it before installing the new hot fix",
      "Start provisioning system. ",
      ". The installation ends here.",
      std::string("\0\xff\n", 3)};
  std::mt19937 random(1);
  for (int round = 0; round < 2000; ++round) {
    RunReader reader(static_cast<int>(random() % 3000));
    for (int i = 0; i < 40; ++i) {
      std::string text = line(static_cast<int>(random() % 60), texts[random() % texts.size()],
                              random() % 2 == 0 ? "Info" : "Error", 42 + random() % 2);
      if (random() % 4 == 0) text.resize(random() % (text.size() + 1));
      reader.add(text);
    }
    const auto found = reader.run();
    if (!found) continue;
    ASSERT_FALSE(found->steps.empty());
    EXPECT_THAT(found->steps, Each(Field(&Step::seconds, Ge(0))));
    for (std::size_t i = 1; i < found->steps.size(); ++i)
      EXPECT_EQ(found->steps[i - 1].at + found->steps[i - 1].seconds, found->steps[i].at);
    EXPECT_GE(found->seconds, found->steps.back().at);
  }
}

}  // namespace
}  // namespace installer::ctl
