#include "platform/TrustedPath.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>

#include "support/TemporaryFolder.h"

namespace installer::test {
namespace {

// Below a folder that only this user can write; "/tmp" above it is root's, and sticky.
class TrustedPathTest : public ::testing::Test {
 protected:
  std::string path(const std::string& relative) const { return _folder.path(relative); }
  std::optional<std::string> reasonAt(const std::string& relative) const {
    return reasonToDistrust(path(relative), geteuid());
  }
  std::string canWrite(const std::string& relative) const {
    return "others can write " + path(relative);
  }
  bool giveAway(const std::string& relative) const {
    return lchown(path(relative).c_str(), 4711, 4711) == 0;
  }
  std::string belongsToOther(const std::string& relative) const {
    return path(relative) + " belongs to the user 4711";
  }

  TemporaryFolder _folder;
};

TEST_F(TrustedPathTest, OwnFileInOwnFoldersIsTrusted) {
  _folder.makeFile("a/b/file", "", 0755);

  EXPECT_EQ(reasonAt("a/b/file"), std::nullopt);
  EXPECT_EQ(reasonAt("a//./b/file"), std::nullopt);
  EXPECT_EQ(reasonAt("a/b/../../a/b/file"), std::nullopt);
}

TEST_F(TrustedPathTest, RelativePathIsNot) {
  EXPECT_EQ(reasonToDistrust("file", geteuid()), "the path is relative");
  EXPECT_EQ(reasonToDistrust("", geteuid()), "the path is relative");
}

TEST_F(TrustedPathTest, WhatGroupOrOthersCanWriteIsNot) {
  _folder.makeFile("group", "", 0775);
  _folder.makeFile("others", "", 0757);
  _folder.makeFile("owner", "", 0755);

  EXPECT_EQ(reasonAt("group"), canWrite("group"));
  EXPECT_EQ(reasonAt("others"), canWrite("others"));
  EXPECT_EQ(reasonAt("owner"), std::nullopt);
}

TEST_F(TrustedPathTest, FolderOnTheWayCounts) {
  _folder.makeFile("group/b/file", "", 0755);
  _folder.makeFolder("group", 0775);
  _folder.makeFile("others/b/file", "", 0755);
  _folder.makeFolder("others", 0757);

  EXPECT_EQ(reasonAt("group/b/file"), canWrite("group"));
  EXPECT_EQ(reasonAt("others/b/file"), canWrite("others"));
  EXPECT_EQ(reasonAt("others/b/../../owner"), canWrite("others"));
}

TEST_F(TrustedPathTest, StickyFolderKeepsItsEntriesForTheirOwners) {
  _folder.makeFile("shared/file", "", 0755);
  _folder.makeFolder("shared", 01777);

  EXPECT_EQ(reasonAt("shared/file"), std::nullopt);
}

TEST_F(TrustedPathTest, StickyFileIsNoStickyFolder) {
  _folder.makeFile("file", "", 01777);

  EXPECT_EQ(reasonAt("file"), canWrite("file"));
}

TEST_F(TrustedPathTest, MissingItemIsTrustedWhereNobodyElseCanMakeIt) {
  _folder.makeFolder("shared", 01777);
  _folder.makeFolder("shared/own", 0755);

  EXPECT_EQ(reasonAt("missing/bin/file"), std::nullopt);
  EXPECT_EQ(reasonAt("shared/own/missing"), std::nullopt);
  EXPECT_EQ(reasonAt("shared/missing/file"), "others can make " + path("shared/missing"));
  EXPECT_EQ(reasonAt("missing/../shared"), std::nullopt);
}

TEST_F(TrustedPathTest, WhatIsBelowAFileCannotBeLookedAt) {
  _folder.makeFile("file");

  EXPECT_EQ(reasonAt("file/below"), path("file/below") + " cannot be looked at: Not a directory");
}

TEST_F(TrustedPathTest, LinksAreFollowedAndWhatTheyLeadToIsJudged) {
  _folder.makeFile("own/file", "", 0755);
  _folder.makeFile("open/file", "", 0755);
  _folder.makeFolder("open", 0777);
  _folder.makeLink("a/absolute", path("own"));
  _folder.makeLink("a/relative", "../own/file");
  _folder.makeLink("a/opened", "../open");
  _folder.makeLink("a/chain", "opened/../own");

  EXPECT_EQ(reasonAt("a/absolute/file"), std::nullopt);
  EXPECT_EQ(reasonAt("a/relative"), std::nullopt);
  EXPECT_EQ(reasonAt("a/opened/file"), canWrite("open"));
  EXPECT_EQ(reasonAt("a/chain/file"), canWrite("open"));
}

TEST_F(TrustedPathTest, DotDotBehindALinkIsTheFolderAboveItsTarget) {
  _folder.makeFile("other/open", "", 0777);
  _folder.makeFolder("other/folder");
  _folder.makeFile("open", "", 0755);
  _folder.makeLink("link", "other/folder");

  EXPECT_EQ(reasonAt("link/../open"), canWrite("other/open"));
}

TEST_F(TrustedPathTest, RootIsAboveItself) {
  EXPECT_EQ(reasonToDistrust("/../..", geteuid()), std::nullopt);
}

TEST_F(TrustedPathTest, LoopOfLinksEnds) {
  _folder.makeLink("loop", "loop");

  EXPECT_EQ(reasonAt("loop/file"), path("loop") + " leads through too many links");
}

TEST_F(TrustedPathTest, AsManyLinksAsTheSystemFollowsAreFollowed) {
  _folder.makeFile("file", "", 0755);
  _folder.makeLink("1", "file");
  for (int link = 2; link <= 41; ++link)
    _folder.makeLink(std::to_string(link), std::to_string(link - 1));

  EXPECT_EQ(reasonAt("40"), std::nullopt);
  EXPECT_NE(reasonAt("41"), std::nullopt);
}

TEST_F(TrustedPathTest, WhatBelongsToOthersIsNot) {
  _folder.makeFile("folder/file", "", 0755);
  _folder.makeFile("file", "", 0755);
  _folder.makeLink("link", "file");
  if (!giveAway("link")) GTEST_SKIP() << "only root can give files away";

  EXPECT_EQ(reasonAt("link"), belongsToOther("link"));
  EXPECT_EQ(reasonAt("file"), std::nullopt);
  ASSERT_TRUE(giveAway("file"));
  EXPECT_EQ(reasonAt("file"), belongsToOther("file"));
  ASSERT_TRUE(giveAway("folder"));
  EXPECT_EQ(reasonAt("folder/file"), belongsToOther("folder"));
}

TEST_F(TrustedPathTest, EntryOfAnotherUserInAStickyFolderIsNot) {
  _folder.makeFile("shared/file", "", 0755);
  _folder.makeFolder("shared", 01777);
  if (!giveAway("shared/file")) GTEST_SKIP() << "only root can give files away";

  EXPECT_EQ(reasonAt("shared/file"), belongsToOther("shared/file"));
}

TEST_F(TrustedPathTest, RootIsTrustedByEverybodyAndTheUserBesideRoot) {
  _folder.makeFile("file", "", 0755);
  if (!giveAway("file")) GTEST_SKIP() << "only root can give files away";

  EXPECT_EQ(reasonToDistrust(path("file"), 4711), std::nullopt);
  EXPECT_EQ(reasonToDistrust(path("file"), 4712), belongsToOther("file"));
}

}  // namespace
}  // namespace installer::test
