#include "platform/overlay/PlannedPlatform.h"

#include <gmock/gmock.h>

#include <cstdio>

#include "platform/overlay/KeptOutput.h"
#include "support/FakePreferences.h"
#include "support/OverlayMaker.h"
#include "support/Sandbox.h"

namespace installer::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

class PlannedPlatformTest : public ::testing::Test {
 protected:
  Sandbox _sandbox;
  overlay::PlannedPlatform _planned{_sandbox.platform(), ownMaker()};
};

TEST_F(PlannedPlatformTest, ChildrenAreNotedAndPlayedButNotStarted) {
  const std::string program = _sandbox.write("program", "#!/bin/sh\n", 0755);
  std::vector<std::string> played;
  _planned.noted.onStart([&](const Command& command) { played.push_back(command.executable); });

  const auto child = _planned.children->start({program, {"one", "two"}}, nullptr);

  ASSERT_TRUE(child);
  EXPECT_EQ(_planned.children->wait(*child), std::nullopt);
  EXPECT_THAT(played, ElementsAre(program));
  ASSERT_THAT(_planned.noted.planned(), SizeIs(1));
  EXPECT_EQ(_planned.noted.planned()[0].command, (Command{program, {"one", "two"}}));
  EXPECT_EQ(_planned.noted.planned()[0].refusal, "");
  EXPECT_THAT(_sandbox.children().started(), IsEmpty());
}

TEST_F(PlannedPlatformTest, WhatCannotBeStartedIsRefusedInTheSystemsWords) {
  const std::string plain = _sandbox.write("plain", "", 0644);
  const std::string folder = _sandbox.makeFolder("folder");
  std::string reason;

  EXPECT_EQ(_planned.children->start({_sandbox.path("none"), {}}, &reason), std::nullopt);
  EXPECT_EQ(reason, "No such file or directory");
  EXPECT_EQ(_planned.children->start({plain, {}}, &reason), std::nullopt);
  EXPECT_EQ(reason, "Permission denied");
  EXPECT_EQ(_planned.children->start({folder, {}}, nullptr), std::nullopt);
  EXPECT_EQ(_planned.noted.planned()[2].refusal, "Permission denied");
}

// The system reads the first bytes, and looks for the interpreter that they name.
TEST_F(PlannedPlatformTest, WhatTheSystemCannotRunIsRefused) {
  const auto refusalOf = [&](const std::string& bytes) {
    const std::string program = _sandbox.write("program", bytes, 0755);
    overlay::PlannedPlatform planned(_sandbox.platform(), ownMaker());
    (void)planned.children->start({program, {}}, nullptr);  // the noted reason is asked for
    return planned.noted.planned().front().refusal;
  };
  const std::string script = _sandbox.write("script", "#!/bin/sh\n", 0755);
  const std::string plain = _sandbox.write("plain", "#!/bin/sh\n", 0644);
  const std::string none = _sandbox.path("none");

  EXPECT_EQ(refusalOf(""), "Exec format error");
  EXPECT_EQ(refusalOf("echo\n"), "Exec format error");
  EXPECT_EQ(refusalOf("#!\n"), "Exec format error");
  EXPECT_EQ(refusalOf("#!" + none), "No such file or directory");
  EXPECT_EQ(refusalOf("#! \t" + none + " -x\n/bin/sh"), "No such file or directory");
  EXPECT_EQ(refusalOf("#!" + plain + "\n"), "Permission denied");
  EXPECT_EQ(refusalOf("#!" + script + "\n"), "");
  EXPECT_EQ(refusalOf("#!/bin/sh -x\n"), "");
  EXPECT_EQ(refusalOf("#!" + _sandbox.path("program") + "\n"), "Too many levels of symbolic links");
}

TEST_F(PlannedPlatformTest, AnUnaskedLineStandsForWhatItWouldBe) {
  const std::string tool = _sandbox.write("tool", "#!/bin/sh\n", 0755);

  const auto line = _planned.children->firstLine({tool, {}});

  EXPECT_EQ(line, "{first line of " + tool + "}");
  EXPECT_TRUE(_planned.children->start({*line + "/bin/java", {}}, nullptr));
  EXPECT_TRUE(_planned.noted.planned()[0].isQuestion);
  EXPECT_FALSE(_planned.noted.planned()[1].isQuestion);
  EXPECT_EQ(_planned.children->firstLine({_sandbox.path("none"), {}}), std::nullopt);
  EXPECT_THAT(_planned.noted.planned(), SizeIs(2));
  EXPECT_EQ(_planned.children->shell("echo"), 0);
  EXPECT_THAT(_planned.noted.planned()[2].command.arguments, ElementsAre("-c", "--", "echo"));
}

TEST_F(PlannedPlatformTest, LogAndRecordStayHere) {
  _planned.log->write(LogLevel::warning, "a line");
  EXPECT_EQ(_planned.log->addFile(7), 0);
  _planned.pasteboard->setRecord({{"ERROR_CODE", 3}});

  ASSERT_THAT(_planned.lines.lines(), SizeIs(1));
  EXPECT_EQ(_planned.lines.lines()[0].text, "a line");
  EXPECT_EQ(_planned.lines.lines()[0].level, LogLevel::warning);
  EXPECT_EQ(*_planned.pasteboard->record(), (PropertyList::Dictionary{{"ERROR_CODE", 3}}));
  EXPECT_THAT(_sandbox.log(), IsEmpty());
  EXPECT_FALSE(_sandbox.exists(_sandbox.paths().pasteboard));
}

TEST_F(PlannedPlatformTest, NoLauncherIsSeenAtWork) {
  _sandbox.processes().add("/program");

  EXPECT_THAT(_planned.processes->valuesForKey("CFBundleExecutable"),
              _sandbox.processes().valuesForKey("CFBundleExecutable"));
  EXPECT_THAT(_planned.processes->commandLines(geteuid()), IsEmpty());
  EXPECT_EQ(_planned.processes->asReported("/x/"), "/x/");
}

TEST_F(PlannedPlatformTest, WhoeverLooksAtTheProcessesIsNoted) {
  EXPECT_FALSE(_planned.hasAskedForProcesses());
  (void)_planned.processes->valuesForKey("CFBundleExecutable");  // that it is asked counts
  EXPECT_TRUE(_planned.hasAskedForProcesses());

  EXPECT_TRUE(_planned.processes->seesAll());
  _sandbox.processes().isOpen = false;
  EXPECT_FALSE(_planned.processes->seesAll());
}

TEST_F(PlannedPlatformTest, PreferencesOfSomebodyElseAreNoted) {
  FakePreferences preferences;
  preferences.domains["com.kiv.own"] = {{"key", true}};
  Platform real = _sandbox.platform();
  real.preferences = &preferences;
  _sandbox.users().effectiveUser = 4711;
  const auto unknownFor = [&](const std::string& user, uid_t uid) {
    _sandbox.users().add({user, uid, 1, "/Users/" + user});
    _sandbox.users().variables["USER"] = user;
    overlay::PlannedPlatform planned(real, ownMaker());
    EXPECT_TRUE(planned.preferences->domain("com.kiv.own"));
    return planned.overlay.unknown();
  };

  EXPECT_THAT(unknownFor("alice", 4711), IsEmpty());
  EXPECT_THAT(unknownFor("bob", 4712), ElementsAre("the preferences of bob"));
  _sandbox.users().effectiveUser = 0;
  EXPECT_THAT(unknownFor("bob", 4712), IsEmpty());
}

TEST_F(PlannedPlatformTest, TheUsersAreThoseOfTheOneForWhomIsPlanned) {
  _sandbox.users().add({"root", 0, 0, "/root"});
  overlay::PlannedUsers other(_sandbox.users(), _sandbox.users().effectiveUser + 5);
  overlay::PlannedUsers root(_sandbox.users(), 0);

  EXPECT_EQ(_planned.users->currentUserName(), _sandbox.users().currentUserName());
  EXPECT_EQ(root.effectiveUserId(), 0u);
  EXPECT_EQ(other.currentUserName(), std::nullopt);
  EXPECT_TRUE(other.setEffectiveUserId(12));
  EXPECT_THAT(_sandbox.users().switches, IsEmpty());
  EXPECT_EQ(root.environment("USER"), "tester");
  EXPECT_EQ(root.findUser("root")->home, "/root");
  EXPECT_EQ(root.findGroup("admin"), _sandbox.users().findGroup("admin"));
}

TEST(KeptOutputTest, WhatIsPrintedIsKeptAndTheRestGoesItsWay) {
  ::testing::internal::CaptureStdout();
  std::printf("before\n");
  std::string kept;
  {
    overlay::KeptOutput output;
    std::printf("kept\n");
    kept = output.take();
    std::printf("after\n");
  }
  EXPECT_EQ(kept, "kept\n");
  EXPECT_EQ(::testing::internal::GetCapturedStdout(), "before\nafter\n");
}

// More than a pipe takes is lost, and nobody waits for a reader.
TEST(KeptOutputTest, AFloodEnds) {
  ::testing::internal::CaptureStdout();
  overlay::KeptOutput output;
  for (int line = 0; line < 100'000; ++line) std::printf("a line of some length\n");
  EXPECT_THAT(output.take(), ::testing::StartsWith("a line of some length\n"));
  std::clearerr(stdout);
  std::printf("after\n");
  EXPECT_THAT(::testing::internal::GetCapturedStdout(), ::testing::EndsWith("after\n"));
}

}  // namespace
}  // namespace installer::test
