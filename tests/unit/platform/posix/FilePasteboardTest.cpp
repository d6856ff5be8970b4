#include "platform/posix/FilePasteboard.h"

#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "support/Proves.h"
#include "support/Sandbox.h"

namespace installer::test {
namespace {

using PropertyList::Array;
using PropertyList::Dictionary;
using PropertyList::Value;
using ::testing::ElementsAre;
using ::testing::Optional;
using ::testing::StartsWith;

constexpr const char* kFile = "tmp/INSTALLATION_INTERNAL_PASTEBOARD";

Dictionary recordOf(int code) {
  return {{"ERROR_CODE", Value(code)},
          {"ERROR_DETAILS", Value(Array{Value("/A & B"), Value("M\xC3\xBCller.app")})}};
}

class FilePasteboardTest : public ::testing::Test {
 protected:
  Sandbox _sandbox;
  Pasteboard& _pasteboard = _sandbox.pasteboard();
};

TEST_F(FilePasteboardTest, HasNoRecordAtFirst) {
  EXPECT_EQ(_pasteboard.record(), std::nullopt);
  EXPECT_FALSE(_sandbox.exists(kFile));
}

TEST_F(FilePasteboardTest, KeepsOneRecord) {
  _pasteboard.setRecord(recordOf(7));
  EXPECT_THAT(_pasteboard.record(), Optional(recordOf(7)));

  _pasteboard.setRecord(recordOf(8));
  EXPECT_THAT(_pasteboard.record(), Optional(recordOf(8)));
}

TEST_F(FilePasteboardTest, IsAnXmlPropertyListOfTheRecordItself) {
  _pasteboard.setRecord(recordOf(7));

  EXPECT_THAT(_sandbox.read(kFile), StartsWith("<?xml"));
  EXPECT_EQ(_sandbox.readPlist(kFile), recordOf(7));
}

TEST_F(FilePasteboardTest, IsReadableByEverybodyWhateverTheMask) {
  const mode_t mask = umask(077);

  _pasteboard.setRecord(recordOf(7));
  umask(mask);

  EXPECT_EQ(_sandbox.mode(kFile), 0644U);
}

TEST_F(FilePasteboardTest, ForgetsTheModeOfAnOlderFile) {
  proves("TMP-3");
  _sandbox.write(kFile, "older", 0600);

  _pasteboard.setRecord(recordOf(7));

  EXPECT_EQ(_sandbox.mode(kFile), 0644U);
}

TEST_F(FilePasteboardTest, ForgetsTheOwnerOfAnOlderFile) {
  proves("TMP-3");
  if (geteuid() != 0) GTEST_SKIP() << "only root may give files away";
  const std::string file = _sandbox.write(kFile, "older");
  ASSERT_EQ(chown(file.c_str(), 54321, 54321), 0);

  _pasteboard.setRecord(recordOf(7));

  struct stat status {};
  ASSERT_EQ(stat(file.c_str(), &status), 0);
  EXPECT_EQ(status.st_uid, 0U);
}

TEST_F(FilePasteboardTest, IsNoFileWhenCleared) {
  _pasteboard.setRecord(recordOf(7));

  _pasteboard.clear();

  EXPECT_EQ(_pasteboard.record(), std::nullopt);
  EXPECT_FALSE(_sandbox.exists(kFile));
}

TEST_F(FilePasteboardTest, MayBeClearedTwice) {
  _pasteboard.clear();
  _pasteboard.clear();

  EXPECT_FALSE(_sandbox.exists(kFile));
}

TEST_F(FilePasteboardTest, ClearingMakesRoomWhereAFolderStands) {
  proves("TMP-3");
  _sandbox.write(std::string(kFile) + "/inside", "text");

  _pasteboard.clear();
  _pasteboard.setRecord(recordOf(7));

  EXPECT_THAT(_pasteboard.record(), Optional(recordOf(7)));
}

TEST_F(FilePasteboardTest, TellsWhateverRecordAnotherProgramLeft) {
  _sandbox.writePlist(kFile, {{"x", Value("y")}});

  EXPECT_THAT(_pasteboard.record(), Optional(Dictionary{{"x", Value("y")}}));
}

TEST_F(FilePasteboardTest, HasNoRecordInADamagedFile) {
  _sandbox.write(kFile, "ERROR_CODE=7");

  EXPECT_EQ(_pasteboard.record(), std::nullopt);
}

TEST_F(FilePasteboardTest, HasNoRecordInAListOfAnotherKind) {
  _sandbox.write(kFile, "<plist version=\"1.0\"><string>x</string></plist>");

  EXPECT_EQ(_pasteboard.record(), std::nullopt);
}

TEST_F(FilePasteboardTest, NeitherReadsNorWritesThroughALink) {
  proves("TMP-3");
  _sandbox.writePlist("elsewhere", {{"x", Value("y")}});
  const std::string before = _sandbox.read("elsewhere");
  _sandbox.makeLink(kFile, _sandbox.path("elsewhere"));

  EXPECT_EQ(_pasteboard.record(), std::nullopt);
  _pasteboard.setRecord(recordOf(7));

  EXPECT_EQ(_sandbox.read("elsewhere"), before);
  EXPECT_THAT(_pasteboard.record(), Optional(recordOf(7)));
}

TEST_F(FilePasteboardTest, ClearingALinkLeavesItsTarget) {
  proves("TMP-3");
  _sandbox.write("elsewhere", "text");
  _sandbox.makeLink(kFile, _sandbox.path("elsewhere"));

  _pasteboard.clear();

  EXPECT_FALSE(_sandbox.exists(kFile));
  EXPECT_TRUE(_sandbox.exists("elsewhere"));
}

TEST_F(FilePasteboardTest, DoesNotWaitAtAPipe) {
  proves("TMP-3");
  _sandbox.makePipe(kFile);

  EXPECT_EQ(_pasteboard.record(), std::nullopt);
  _pasteboard.setRecord(recordOf(7));

  EXPECT_THAT(_pasteboard.record(), Optional(recordOf(7)));
}

TEST_F(FilePasteboardTest, KeepsTheOldRecordSilentlyWhenTheDiskRefuses) {
  proves("RECORD-5");
  _pasteboard.setRecord(recordOf(7));
  _sandbox.files().failNext(FileOperation::kRename, ENOSPC);

  _pasteboard.setRecord(recordOf(8));

  EXPECT_TRUE(_sandbox.files().hasFailed());
  EXPECT_THAT(_pasteboard.record(), Optional(recordOf(7)));
  EXPECT_TRUE(_sandbox.log().empty());
}

TEST_F(FilePasteboardTest, KeepsTheOldRecordWhenTheNewOneCannotBeTold) {
  _pasteboard.setRecord(recordOf(7));

  _pasteboard.setRecord({{"ERROR_DETAILS", Value("\x01")}});

  EXPECT_THAT(_pasteboard.record(), Optional(recordOf(7)));
}

}  // namespace
}  // namespace installer::test
