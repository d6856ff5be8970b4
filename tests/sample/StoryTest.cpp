// The words in which demo tells a run: they must show what happened and must not let anything
// unexpected pass.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdlib.h>

#include "SampleWorld.h"

namespace fs = std::filesystem;
using ::testing::HasSubstr;
using ::testing::Not;

namespace {

const std::string kPlistHead = "<plist version=\"1.0\"><dict>";
const std::string kPlistTail = "</dict></plist>";

std::string record(int code) {
  return kPlistHead + "<key>ERROR_CODE</key><integer>" + std::to_string(code) +
         "</integer><key>ERROR_DETAILS</key><array><string>/a &amp; b</string></array>" +
         kPlistTail;
}

// A story told in a folder of its own about an installer that is a script.
class StoryTest : public ::testing::Test {
 protected:
  StoryTest() {
    std::string name = (fs::temp_directory_path() / "story-XXXXXX").string();
    _root = mkdtemp(name.data());
    fs::create_directories(_root / "app/rcp");
    writeText(_root / "app/rcp/kept", "kept");
    writeText(_root / "app/rcp/changed", "before");
    writeText(_root / "app/rcp/removed", "removed");
    setHotfix("1.2");
  }
  ~StoryTest() override { fs::remove_all(_root); }

  void setHotfix(const std::string& version) const {
    writeText(_root / "app/rcp/installInfo.plist",
              kPlistHead + "<key>hotfixVersion</key><string>" + version + "</string>" + kPlistTail);
  }

  // The scripts run in the story's folder.
  void installerIs(const std::string& script) const { programIs("installer", script); }
  void companionIs(const std::string& script) const { programIs("control", script); }
  void programIs(const std::string& name, const std::string& script) const {
    writeText(_root / name, "#!/bin/bash\n" + script);
    fs::permissions(_root / name, fs::perms::owner_all);
  }

  Outcome tell(const std::string& words) const {
    const std::string source = HOTFIX_SOURCE_DIR "/sample/story.sh";
    return run(
        {"/bin/bash", "-c",
         "exec 2>&1; set -euo pipefail; cd '" + _root.string() + "'; . '" + source +
             "'; traceFile=$PWD/trace recordFile=$PWD/record markerFile=$PWD/marker; "
             "programFiles=(\"$traceFile\" \"$recordFile\" \"$markerFile\"); "
             "installer=$PWD/installer control=$PWD/control app=$PWD/app rcpHome=$PWD/app/rcp; "
             "launcherLog=$PWD/launcher.log; "
             "openStage \"$PWD/stage\"\n" +
             words + "\necho THE END"});
  }

  fs::path _root;
};

TEST_F(StoryTest, ExpectedRunIsToldAndTheStoryGoesOn) {
  writeText(_root / "record", record(7));
  installerIs("echo a line of output; exit 1");

  const Outcome outcome = tell("runInstaller 1 7 package destination");

  EXPECT_EQ(outcome.status, 0);
  EXPECT_THAT(outcome.output, HasSubstr("command    installer package destination"));
  EXPECT_THAT(outcome.output, HasSubstr("printed    a line of output\n  status     1"));
  EXPECT_THAT(outcome.output, HasSubstr("ERROR_CODE 7, ERROR_DETAILS [\"/a & b\"]"));
  EXPECT_THAT(outcome.output, HasSubstr("hotfixVersion 1.2, SKIPRUNNINGCHECK none"));
  EXPECT_THAT(outcome.output, HasSubstr("THE END"));
}

TEST_F(StoryTest, OtherExitStatusEndsTheStory) {
  writeText(_root / "record", record(0));
  installerIs("exit 1");

  const Outcome outcome = tell("runInstaller 0 0 package destination");

  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.output, HasSubstr("NOT AS EXPECTED: exit status 1 instead of 0"));
  EXPECT_THAT(outcome.output, Not(HasSubstr("THE END")));
}

TEST_F(StoryTest, AnswerOfTheCompanionIsToldAsSeenFromHere) {
  companionIs("printf '%s\n' \"$PWD/app\" \"$@\"; exit 2");

  const Outcome outcome = tell("runControl 2 lint 'a package'");

  EXPECT_EQ(outcome.status, 0);
  EXPECT_THAT(outcome.output, HasSubstr("command    control lint a\\ package \n"
                                        "  told       app\n             lint\n"
                                        "             a package\n  status     2\nTHE END"));
}

TEST_F(StoryTest, OtherStatusOfTheCompanionEndsTheStory) {
  companionIs("exit 1");

  const Outcome outcome = tell("runControl 2 lint package");

  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.output, HasSubstr("NOT AS EXPECTED: exit status 1 instead of 2"));
}

TEST_F(StoryTest, PlanIsToldAndNotedAndMayForeseeAFailure) {
  companionIs("echo \"$@\"; exit 1");

  const Outcome outcome = tell("planInstaller 1 package destination; cat stage/notes/plan");

  EXPECT_EQ(outcome.status, 0);
  EXPECT_THAT(outcome.output, HasSubstr("told       plan package destination\n"));
  EXPECT_THAT(outcome.output, HasSubstr("\nplan --json package destination\nTHE END"));
}

TEST_F(StoryTest, OtherErrorCodeEndsTheStory) {
  writeText(_root / "record", record(6));
  installerIs("exit 1");

  const Outcome outcome = tell("runInstaller 1 7 package destination");

  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.output, HasSubstr("error code 6 instead of 7"));
}

TEST_F(StoryTest, MissingErrorRecordEndsTheStory) {
  installerIs("exit 0");

  EXPECT_EQ(tell("runInstaller 0 0 package destination").status, 1);
}

TEST_F(StoryTest, ChangesOfTheInstanceAreShownAndNothingElse) {
  writeText(_root / "record", record(0));
  installerIs(
      "mkdir -p app/rcp/new/deep; touch app/rcp/new/deep/file; rm app/rcp/removed; "
      "echo after >app/rcp/changed; chmod 711 app/rcp/kept");

  const Outcome outcome = tell("runInstaller 0 0 package destination");

  EXPECT_THAT(outcome.output,
              HasSubstr("changed    ~ rcp/changed\n"
                        "             + rcp/new\n"
                        "             - rcp/removed\n"
                        "             and new owner, group or mode for 1 items that stayed\n"));
  EXPECT_THAT(outcome.output, Not(HasSubstr("rcp/new/deep")));
}

TEST_F(StoryTest, WarningsAndErrorsOfTheTraceAreCountedAndInformationIsLeftOut) {
  writeText(_root / "record", record(0));
  installerIs(
      "for level in Warning Warning Error Info; do "
      "echo \"Jan  1 00:00:00 host HotfixInstaller[7] <$level>: text\"; done >trace");

  const Outcome outcome = tell("runInstaller 0 0 package destination");

  EXPECT_THAT(outcome.output, HasSubstr("trace      <Warning>: text  (2 times)\n"
                                        "             <Error>: text\n"));
  EXPECT_THAT(outcome.output, Not(HasSubstr("<Info>")));
}

TEST_F(StoryTest, RunThatFailsWithoutACodeShowsTheEndOfWhatTheLauncherHasLogged) {
  writeText(_root / "record", record(0));
  writeText(_root / "launcher.log", "of an earlier run\n");
  installerIs("printf '%s\\n' first second third last >>launcher.log; exit 1");

  const Outcome outcome = tell("runInstaller 1 0 package destination");

  EXPECT_THAT(outcome.output, HasSubstr("marker     none\n"
                                        "  launcher   second\n"
                                        "             third\n"
                                        "             last\n"
                                        "  recorded   "));
}

TEST_F(StoryTest, LauncherThatLoggedNothingIsShownToHaveLoggedNothing) {
  writeText(_root / "record", record(0));
  writeText(_root / "launcher.log", "of an earlier run\n");
  installerIs("exit 1");

  const Outcome outcome = tell("runInstaller 1 0 package destination");

  EXPECT_THAT(outcome.output, HasSubstr("launcher   left no line in its log\n"));
  EXPECT_THAT(outcome.output, Not(HasSubstr("of an earlier run")));
}

TEST_F(StoryTest, ReasonOfTheLauncherIsShownBeforeAnUnexpectedFailureEndsTheStory) {
  writeText(_root / "record", record(0));
  installerIs("echo no such site >launcher.log; exit 1");

  const Outcome outcome = tell("runInstaller 0 0 package destination");

  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.output, HasSubstr("launcher   no such site\n"));
}

TEST_F(StoryTest, LauncherIsNotQuotedForASuccessOrACheckThatFailed) {
  writeText(_root / "record", record(0));
  installerIs("echo a line >launcher.log");
  EXPECT_THAT(tell("runInstaller 0 0 package destination").output, Not(HasSubstr("a line")));

  writeText(_root / "record", record(7));
  installerIs("echo a line >launcher.log; exit 1");
  EXPECT_THAT(tell("runInstaller 1 7 package destination").output, Not(HasSubstr("a line")));
}

TEST_F(StoryTest, MarkerOfAnEarlierRunDoesNotCount) {
  writeText(_root / "record", record(0));
  writeText(_root / "marker", "");
  installerIs("exit 0");

  EXPECT_EQ(tell("runInstaller 0 0 package destination; expectMarker no").status, 0);
  EXPECT_EQ(tell("expectMarker yes").status, 1);
}

TEST_F(StoryTest, OtherRecordedHotfixEndsTheStory) {
  EXPECT_EQ(tell("expectHotfix 1.2").status, 0);
  EXPECT_EQ(tell("expectHotfix 1.3").status, 1);
  EXPECT_EQ(tell("expectHotfix none").status, 1);
}

TEST_F(StoryTest, MissingLineInTheTraceEndsTheStory) {
  writeText(_root / "trace", "one line\n");

  EXPECT_EQ(tell("expectInTrace 'one line'").status, 0);
  EXPECT_EQ(tell("expectInTrace 'other line'").status, 1);
}

TEST_F(StoryTest, WordsOfTheApplicationAreCompared) {
  fs::create_directories(_root / "app/Contents/MacOS");
  writeText(_root / "app/Contents/MacOS/Quillmere", "#!/bin/bash\necho feature x; echo up, 1\n");
  fs::permissions(_root / "app/Contents/MacOS/Quillmere", fs::perms::owner_all);

  const Outcome asked = tell("askApplication; expectApplicationSays 'feature x'");

  EXPECT_EQ(asked.status, 0);
  EXPECT_THAT(asked.output, HasSubstr("runs       feature x\nTHE END"));
  EXPECT_EQ(tell("askApplication; expectApplicationSays 'feature y'").status, 1);
  EXPECT_EQ(tell("askApplication; expectApplicationSilentAbout 'feature x'").status, 1);
}

TEST_F(StoryTest, StartedApplicationEndsWithAFailingStory) {
  const SampleWorld world;

  const Outcome outcome = tell("app='" + world.app().string() +
                               "'; startApplication; echo \"PID=$applicationProcess\"; "
                               "storyFails 'on purpose'");

  EXPECT_EQ(outcome.status, 1);
  const std::size_t place = outcome.output.find("PID=");
  ASSERT_NE(place, std::string::npos);
  const std::string pid = std::to_string(std::stol(outcome.output.substr(place + 4)));
  std::error_code error;
  EXPECT_NE(fs::read_symlink("/proc/" + pid + "/exe", error),
            world.app() / "Contents/MacOS/Quillmere");
}

}  // namespace
