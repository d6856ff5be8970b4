#include "ctl/install/Progress.h"

#include <gtest/gtest.h>

#include "ctl/Answers.h"
#include "support/Proves.h"

namespace installer::ctl::install {
namespace {

using std::chrono::seconds;

class ProgressTest : public ::testing::Test {
 protected:
  Progress progress(Progress::Form form, std::size_t columns = 80, std::size_t phases = 4) {
    return {form, _answers.output(), columns, phases};
  }
  void begin(StepKind kind) { _run.steps.push_back({kind}); }

  test::Answers _answers;
  ctl::Run _run;
};

TEST_F(ProgressTest, ATerminalGetsOneLineThatIsWrittenOver) {
  proves("ROLLOUT-7");
  Progress line = progress(Progress::Form::line);
  begin(StepKind::readPackage);
  line.show(_run, seconds(0));
  line.show(_run, seconds(0));
  line.show(_run, seconds(1));
  begin(StepKind::record);
  begin(StepKind::provision);
  line.show(_run, seconds(12));
  begin(StepKind::checkVersions);
  line.show(_run, seconds(12));
  line.end(outcomeOf(Ending::installed));

  EXPECT_EQ(
      "\r1 of 4  0 s  reads the package"
      "\r1 of 4  1 s  reads the package"
      "\r3 of 4  12 s  lets the launcher install the features"
      "\r4 of 4  12 s  compares the versions                 "
      "\r                                   "
      "\r",
      _answers.text());
}

TEST_F(ProgressTest, ALineFitsItsTerminal) {
  proves("ROLLOUT-7");
  begin(StepKind::readPackage);
  progress(Progress::Form::line, 20).show(_run, seconds(0));

  EXPECT_EQ("\r1 of 4  0 s  reads ", _answers.text());
}

TEST_F(ProgressTest, MorePhasesThanForeseenAreCountedAsTheyCome) {
  for (int phase = 0; phase < 6; ++phase) begin(StepKind::record);
  progress(Progress::Form::line).show(_run, seconds(3));

  EXPECT_EQ("\r6 of 6  3 s  records the hotfix, restores permissions", _answers.text());
}

TEST_F(ProgressTest, LinesAreToldOnceForEachPhase) {
  proves("ROLLOUT-7");
  Progress lines = progress(Progress::Form::lines);
  begin(StepKind::readPackage);
  lines.show(_run, seconds(0));
  lines.show(_run, seconds(1));
  begin(StepKind::record);
  begin(StepKind::provision);
  lines.show(_run, seconds(2));
  lines.end(outcomeOf(Ending::provisioningFailed));

  EXPECT_EQ(
      "installer:PHASE:reads the package\ninstaller:%0\n"
      "installer:PHASE:records the hotfix, restores permissions\ninstaller:%25\n"
      "installer:PHASE:lets the launcher install the features\ninstaller:%50\n"
      "installer:PHASE:the platform's launcher did not install the hotfix\n",
      _answers.text());
}

TEST_F(ProgressTest, ThePartThatIsDoneNeverGrowsLess) {
  proves("ROLLOUT-7");
  Progress lines = progress(Progress::Form::lines, 80, 2);
  for (int phase = 0; phase < 2; ++phase) begin(StepKind::record);
  lines.show(_run, seconds(0));
  for (int phase = 0; phase < 3; ++phase) begin(StepKind::record);
  lines.show(_run, seconds(1));

  const std::string phase = "installer:PHASE:records the hotfix, restores permissions\n";
  EXPECT_EQ(phase + "installer:%0\n" + phase + "installer:%50\n" + phase + "installer:%50\n" +
                phase + "installer:%60\n" + phase + "installer:%80\n",
            _answers.text());
}

TEST_F(ProgressTest, NothingIsToldUnasked) {
  Progress none = progress(Progress::Form::none);
  begin(StepKind::readPackage);
  none.show(_run, seconds(0));
  none.end(outcomeOf(Ending::installed));

  EXPECT_FALSE(none.isWanted());
  EXPECT_EQ("", _answers.text());
}

}  // namespace
}  // namespace installer::ctl::install
