#include <gmock/gmock.h>

#include "cli/Fixtures.h"
#include "support/Proves.h"

namespace installer::cli {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::StartsWith;

// The record that the graphical installer reads, and the marker file.
class ErrorChannelTest : public InstallerTest {
 protected:
  void failCheck() { _sandbox.remove(_instance.deploy("install.xml")); }

  // Runs that can tell owners apart need the machine's root.
  bool ownersAreTold() const { return CliSandbox::hasManyUsers(); }
};

TEST_F(ErrorChannelTest, RecordIsAListWithExactlyTwoKeys) {
  proves("RECORD-1");
  ASSERT_EQ(0, install().status);

  const ListValue record = listAt(kPasteboard);
  EXPECT_EQ("dict", record.kind);
  EXPECT_THAT(record.keys(), ::testing::UnorderedElementsAre("ERROR_CODE", "ERROR_DETAILS"));
  EXPECT_EQ(ListValue::integer(0), *record.find("ERROR_CODE"));
  EXPECT_EQ(ListValue::array({}), *record.find("ERROR_DETAILS"));
}

TEST_F(ErrorChannelTest, RecordIsAnXmlListForEverybody) {
  proves("RECORD-1");
  ASSERT_EQ(0, install().status);

  EXPECT_THAT(*_sandbox.readFile(kPasteboard), StartsWith("<?xml"));
  EXPECT_EQ(0644u, _sandbox.mode(kPasteboard));
}

TEST_F(ErrorChannelTest, RecordIsReadableUnderAStrictMask) {
  proves("RECORD-1");
  RunOptions options;
  options.mask = 0777;

  ASSERT_EQ(0, install(options).status);

  EXPECT_EQ(0644u, _sandbox.mode(kPasteboard));
}

TEST_F(ErrorChannelTest, OldRecordIsReset) {
  proves("RECORD-2");
  failCheck();
  ASSERT_EQ(1, install().status);
  ASSERT_EQ(8, errorRecord().code);
  _sandbox.writeFile(_instance.deploy("install.xml"), kInstanceManifest);

  ASSERT_EQ(0, install().status);

  EXPECT_EQ((ErrorRecord{0, {}}), errorRecord());
}

TEST_F(ErrorChannelTest, RecordHoldsCodeZeroFromTheStartOn) {
  proves("RECORD-2");
  _sandbox.script("rcplauncher",
                  ChildScript().snapshot(kPasteboard).write(_instance.result(), "rc=0\n"));

  ASSERT_EQ(0, install().status);

  const auto text = _sandbox.children("rcplauncher").at(0).fileAt(kPasteboard);
  ASSERT_TRUE(text.has_value());
  EXPECT_EQ(ListValue::integer(0), *readXmlList(*text)->find("ERROR_CODE"));
}

TEST_F(ErrorChannelTest, RecordOfAFailedCheckIsThereBeforeTheCleanUp) {
  proves("RECORD-3");
  failCheck();
  _sandbox.script("rcplauncher", ChildScript().snapshot(kPasteboard).snapshot(kMarker));

  ASSERT_EQ(1, install().status);

  const ChildRecord cleanup = _sandbox.children("rcplauncher").at(0);
  EXPECT_EQ(ListValue::integer(8), *readXmlList(*cleanup.fileAt(kPasteboard))->find("ERROR_CODE"));
  EXPECT_EQ("A", cleanup.snapshots.at(kMarker));
}

TEST_F(ErrorChannelTest, DetailsAreEscapedInTheList) {
  proves("RECORD-1");
  _sandbox.makeFolder("/Applications/a&b<c>");

  ASSERT_EQ(1, _sandbox.run({_package.folder, "/Applications/a&b<c>"}).status);

  EXPECT_EQ((ErrorRecord{8, {"/Applications/a&b<c>", "Quillmere.app"}}), errorRecord());
}

TEST_F(ErrorChannelTest, CodeSixNamesTheBareBundle) {
  proves("CHECK-5");
  const std::string program = _instance.bundle + "/Contents/MacOS/Quillmere";
  _sandbox.copyChildProgram(program);
  RunOptions options;
  options.background = {{program, "--idle"}};

  ASSERT_EQ(1, install(options).status);

  EXPECT_EQ((ErrorRecord{6, {"Quillmere"}}), errorRecord());
}

TEST_F(ErrorChannelTest, CodeSevenNamesOneJoinedPath) {
  proves("VERSION-2");
  recordHotfix("1.6");

  ASSERT_EQ(1, install().status);

  EXPECT_EQ((ErrorRecord{7, {"/Applications/Quillmere.app"}}), errorRecord());
}

TEST_F(ErrorChannelTest, CodeFourNamesTheMissingManifest) {
  proves("RECORD-4", "INSTALL-6");
  _sandbox.remove(_package.deployFile("install.hotfix.xml"));

  ASSERT_EQ(1, install().status);

  EXPECT_EQ((ErrorRecord{4, {_package.deploy("install.hotfix.xml")}}), errorRecord());
  EXPECT_FALSE(_sandbox.exists(kMarker));
}

TEST_F(ErrorChannelTest, FailedProvisioningLeavesCodeZeroAndNoMarker) {
  proves("RECORD-4");
  _sandbox.script("rcplauncher", ChildScript().write(_instance.result(), "rc=1\n"));

  ASSERT_EQ(1, install().status);

  EXPECT_EQ((ErrorRecord{0, {}}), errorRecord());
  EXPECT_FALSE(_sandbox.exists(kMarker));
}

// --- Marker --------------------------------------------------------------------------------------

TEST_F(ErrorChannelTest, MarkerIsEmptyAndOpenToEverybody) {
  proves("MARKER-1");
  failCheck();

  ASSERT_EQ(1, install().status);

  EXPECT_EQ("", _sandbox.readFile(kMarker));
  EXPECT_EQ(0777u, _sandbox.mode(kMarker));
}

TEST_F(ErrorChannelTest, MarkersModeIsFreeOfTheMask) {
  proves("MARKER-1");
  failCheck();
  RunOptions options;
  options.mask = 077;

  ASSERT_EQ(1, install(options).status);

  EXPECT_EQ(0777u, _sandbox.mode(kMarker));
}

TEST_F(ErrorChannelTest, MarkerBelongsToTheConsoleUserAndAdmin) {
  proves("MARKER-2");
  if (!ownersAreTold()) GTEST_SKIP() << "needs the machine's root";
  failCheck();

  ASSERT_EQ(1, install().status);

  EXPECT_EQ(CliSandbox::kAlice, _sandbox.ownership(kMarker).owner);
  EXPECT_EQ(CliSandbox::kAdmin, _sandbox.ownership(kMarker).group);
}

TEST_F(ErrorChannelTest, MarkerBelongsToTheProcessWithoutUser) {
  proves("MARKER-2");
  failCheck();
  RunOptions options;
  options.unset("USER");

  ASSERT_EQ(1, install(options).status);

  EXPECT_EQ(0u, _sandbox.ownership(kMarker).owner);
  EXPECT_EQ(0777u, _sandbox.mode(kMarker));
}

TEST_F(ErrorChannelTest, MarkerIsMadeThoughTheUserIsUnknown) {
  proves("MARKER-2");
  failCheck();
  RunOptions options;
  options.set("USER", "nobody-here");

  ASSERT_EQ(1, install(options).status);

  EXPECT_EQ("", _sandbox.readFile(kMarker));
  EXPECT_EQ(0777u, _sandbox.mode(kMarker));
}

TEST_F(ErrorChannelTest, MarkerIsMadeThoughNoUserDatabaseKnowsAnybody) {
  failCheck();
  _sandbox.remove("/etc/passwd");
  RunOptions options;
  options.unset("USER");

  ASSERT_EQ(1, install(options).status);

  EXPECT_EQ(0777u, _sandbox.mode(kMarker));
}

TEST_F(ErrorChannelTest, MissingAdminGroupIsReplacedByTheOwnersOwn) {
  proves("MARKER-2");
  if (!ownersAreTold()) GTEST_SKIP() << "needs the machine's root";
  failCheck();
  _sandbox.writeUserDatabase(false);

  ASSERT_EQ(1, install().status);

  EXPECT_EQ(CliSandbox::kAlice, _sandbox.ownership(kMarker).owner);
  EXPECT_EQ(1000u, _sandbox.ownership(kMarker).group);
}

TEST_F(ErrorChannelTest, OldMarkerIsReplacedByAnEmptyOne) {
  proves("MARKER-1");
  failCheck();
  _sandbox.writeFile(kMarker, "old", 0600);

  ASSERT_EQ(1, install().status);

  EXPECT_EQ("", _sandbox.readFile(kMarker));
  EXPECT_EQ(0777u, _sandbox.mode(kMarker));
}

TEST_F(ErrorChannelTest, SuccessLeavesAnOldMarkerAlone) {
  proves("MARKER-3");
  _sandbox.writeFile(kMarker, "old", 0600);

  ASSERT_EQ(0, install().status);

  EXPECT_EQ("old", _sandbox.readFile(kMarker));
  EXPECT_EQ(0600u, _sandbox.mode(kMarker));
}

TEST_F(ErrorChannelTest, FolderInTheMarkersPlaceIsLeftAndTheRunGoesOn) {
  proves("MARKER-4");
  failCheck();
  _sandbox.makeFolder(std::string(kMarker) + "/x");

  EXPECT_EQ(1, install().status);

  EXPECT_THAT(_sandbox.list(kMarker), ElementsAre("x"));
}

TEST_F(ErrorChannelTest, FolderInThePasteboardsPlaceIsSurvived) {
  proves("RECORD-5");
  _sandbox.makeFolder(std::string(kPasteboard) + "/x");

  EXPECT_EQ(0, install().status);

  EXPECT_EQ((ErrorRecord{0, {}}), errorRecord());
}

}  // namespace
}  // namespace installer::cli
