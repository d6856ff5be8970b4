#include "ctl/plan/PlanText.h"

#include <gmock/gmock.h>

#include "ctl/plan/PlanJson.h"
#include "support/LauncherLine.h"
#include "support/OverlayMaker.h"
#include "support/PackageFixture.h"
#include "support/Proves.h"

namespace installer::ctl {
namespace {

using ::installer::test::launcherLine;
using ::installer::test::ownMaker;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Not;

// What a plan tells people, on an instance and a package of the test's making.
class PlanTextTest : public ::installer::test::PackageFixture {
 protected:
  PlanTextTest() { _sandbox.write(inHome("rcplauncher"), "#!/bin/sh\n", 0755); }

  Plan plan() { return {{package(), destination(), data()}, ownMaker()}; }
  std::string text(const PlanDetail& detail = {}) {
    Plan made = plan();
    return planText(made, detail, {});
  }
  // What the answer in JSON tells of the item.
  Json change(const std::string& path) {
    Plan made = plan();
    const Json answer = planJson(made, true);
    for (const Json& one : answer["changes"])
      if (one["path"] == path) return one;
    return nullptr;
  }
  // The package brings the file, which the instance has already.
  std::string replaceExtra(const std::string& old, const std::string& now) {
    _sandbox.write("HF/deploy/extras/text", now);
    return _sandbox.write(inHome("deploy/extras/text"), old);
  }
  void registerBundle(const std::string& bundle) {
    describe("allowMultiInstance", std::nullopt);
    _sandbox.writePlist(registration(), {{"pathToProduct", bundle}});
  }
  std::string registration() const {
    return _sandbox.paths().registrations + "/Quillmere/framework.plist";
  }
};

// --- Target --------------------------------------------------------------------------------------

TEST_F(PlanTextTest, EachReasonHasASentence) {
  proves("PLAN-3");
  const std::string inDestination = ": it is the one in the destination\n";
  EXPECT_THAT(text(), HasSubstr("the package allows several instances" + inDestination));

  describe("allowMultiInstance", std::nullopt);
  EXPECT_THAT(text(), HasSubstr(registration() + " names none" + inDestination));
  registerBundle(destination() + "/Quillmere.app");
  EXPECT_THAT(text(), HasSubstr(registration() + " names it\n"));
  registerBundle("/nowhere");
  EXPECT_THAT(text(), HasSubstr("what " + registration() + " names is not there" + inDestination));
  describe("bundleName", std::nullopt);
  EXPECT_THAT(text(), HasSubstr("the package does not tell which bundle it is for\n"));
}

TEST_F(PlanTextTest, BlanksInPathsStay) {
  proves("CTL-3");
  Plan made({package() + "  none", destination(), data()}, ownMaker());

  EXPECT_THAT(planText(made, {}, {}), HasSubstr("Package       " + package() + "  none\n"));
}

TEST_F(PlanTextTest, ALauncherAtWorkIsTold) {
  EXPECT_THAT(text(), Not(HasSubstr("a launcher is at work")));

  _sandbox.processes().addCommandLine(launcherLine(launcher()));

  EXPECT_THAT(text(), HasSubstr("a launcher is at work there; the run would wait for its end\n"));
}

// --- Changes -------------------------------------------------------------------------------------

TEST_F(PlanTextTest, WhatOnlyGetsAnotherOwnerOrModeIsCounted) {
  _sandbox.write(inHome("eclipse/file"), "x", 0600);
  const std::string line = "= " + homePath("eclipse/file") + " (file 0600";

  EXPECT_THAT(text(), Not(HasSubstr(line)));
  EXPECT_THAT(text(PlanDetail{.differences = false, .all = true}), HasSubstr(line));
  EXPECT_THAT(text(), ::testing::ContainsRegex("\n  [1-9][0-9]* created, [0-9]+ replaced, [0-9]+ "
                                               "removed, [1-9][0-9]* other owners or modes, [0-9]+ "
                                               "written again as they were\n"));
}

TEST_F(PlanTextTest, AFileOfThePackageIsToldWithItsSource) {
  const std::string file = replaceExtra("old\n", "new\n");

  EXPECT_THAT(text(), ::testing::ContainsRegex("~ " + file + " \\(file [^)]*\\) from [^\n]*" +
                                               "HF/deploy/extras/text\n"));
  EXPECT_THAT(change(file)["source"].get<std::string>(), EndsWith("deploy/extras/text"));
}

TEST_F(PlanTextTest, WhatHasNoDifferenceSaysWhy) {
  const PlanDetail detail{.differences = true, .all = false};
  replaceExtra("old\n", "new\n");
  EXPECT_THAT(text(detail), HasSubstr("\n    -old\n    +new\n"));

  const std::string file = replaceExtra(std::string("o\0ld", 4), "new\n");
  EXPECT_THAT(text(detail), HasSubstr("/text\n    (no text)\n"));
  EXPECT_EQ(change(file)["difference"], nullptr);

  replaceExtra("old\n", std::string(2'000'000, '\n'));
  EXPECT_THAT(text(detail), HasSubstr("\n    (too long to compare)\n"));
}

// What the run writes to its log behind an earlier one is no change of the earlier lines.
TEST_F(PlanTextTest, TheTraceIsToldAsOneWhoseLinesAreNotForeseen) {
  _sandbox.write(_sandbox.paths().traceFile, "an old line\n");

  const std::string told = text({.differences = true, .all = false});

  EXPECT_THAT(told, HasSubstr("\n    (what is logged is not foreseen)\n"));
  EXPECT_THAT(told, Not(HasSubstr("an old line")));
  EXPECT_EQ(change(_sandbox.paths().traceFile)["foreseen"], false);
  EXPECT_EQ(change(_sandbox.paths().traceFile)["difference"], nullptr);
  EXPECT_EQ(change(_sandbox.paths().pasteboard)["foreseen"], true);

  _sandbox.write(_sandbox.paths().traceFile, "");
  EXPECT_EQ(change(_sandbox.paths().traceFile)["change"], "replaced");
}

// --- Children and end ----------------------------------------------------------------------------

TEST_F(PlanTextTest, AChildThatCannotBeStartedIsToldWithTheReason) {
  _sandbox.write(inHome("rcplauncher"), "#!/bin/sh\n", 0644);

  EXPECT_THAT(text(), HasSubstr(" (cannot be started: Permission denied)\n"));
}

TEST_F(PlanTextTest, WhereSomethingIsClosedTheEndIsNoPromise) {
  proves("PLAN-4");
  EXPECT_THAT(text(), EndsWith("Exit status   0: the hotfix would be installed\n"));

  _sandbox.processes().isOpen = false;
  _sandbox.users().effectiveUser = 4711;

  EXPECT_THAT(text(), HasSubstr("\nUnknown\n  the preferences of tester\n  the processes of other "
                                "users\n  (this user may not "
                                "look there; root's run may find something else)\n"));
  EXPECT_THAT(text(),
              EndsWith("Exit status   0: the hotfix would be installed, as far as can be told\n"));
}

}  // namespace
}  // namespace installer::ctl
