#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <string>

#include "support/ChildRun.h"
#include "support/Proves.h"
#include "unit/platform/files/FileManagerFixture.h"

namespace installer::test {
namespace {

using ::testing::Contains;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;

class FileManagerAttributesTest : public FileManagerFixture {
 protected:
  FileManagerAttributesTest() {
    _users.add({"ada", 1234, 2345, ""});
    _users.groups["crew"] = 3456;
  }

  bool change(std::string_view relative, const FileAttributes& attributes) {
    return _files.changeAttributesBelow(path(relative), attributes);
  }
  bool changeMode(std::string_view relative, mode_t mode) {
    return change(relative, {"self", "own", mode});
  }
  void giveLink(std::string_view relative, uid_t owner) const {
    ASSERT_EQ(::lchown(path(relative).c_str(), owner, static_cast<gid_t>(-1)), 0);
  }
};

TEST_F(FileManagerAttributesTest, EverythingBelowAtAllDepthsGetsTheMode) {
  proves("RIGHTS-1");
  _folder.makeFile("tree/file", "", 0);
  _folder.makeFile("tree/a/b/file", "", 0600);
  _folder.makePipe("tree/a/pipe");
  _folder.makeSocket("tree/a/socket");
  _folder.makeFile("tree/\xff\n", "", 0600);
  _folder.makeFolder("tree/a", 0700);
  _folder.makeFolder("tree", 0711);
  _folder.makeFile("beside", "", 0600);

  EXPECT_TRUE(changeMode("tree", 0775));

  for (const auto& [name, entry] : snapshot("tree")) {
    EXPECT_EQ(entry.mode, name == "." ? 0711u : 0775u) << name;
  }
  EXPECT_EQ(modeOf("beside"), 0600u);
}

TEST_F(FileManagerAttributesTest, ModeBitsAreExact) {
  _folder.makeFile("tree/file", "");
  ASSERT_EQ(::chmod(path("tree/file").c_str(), 07777), 0);
  const CreationMask mask(077);

  EXPECT_TRUE(changeMode("tree", 0775));

  EXPECT_EQ(modeOf("tree/file"), 0775u);
}

TEST_F(FileManagerAttributesTest, EverythingBelowGetsOwnerAndGroup) {
  proves("RIGHTS-1");
  if (!isRoot()) GTEST_SKIP() << "only root can give files away";
  _folder.makeFile("tree/a/file", "");
  _folder.makeLink("tree/a/link", "file");
  _folder.makeLink("tree/dangling", "nowhere");
  _folder.makePipe("tree/pipe");

  EXPECT_TRUE(change("tree", {"ada", "crew", 0775}));

  for (const auto& [name, entry] : snapshot("tree")) {
    EXPECT_EQ(entry.owner, name == "." ? 0u : 1234u) << name;
    EXPECT_EQ(entry.group, name == "." ? 0u : 3456u) << name;
  }
}

TEST_F(FileManagerAttributesTest, AWrongGroupAloneIsPutRight) {
  if (!isRoot()) GTEST_SKIP() << "only root can give files away";
  _folder.makeFile("tree/file", "", 0775);
  ASSERT_EQ(::chown(path("tree/file").c_str(), 1234, 1), 0);

  EXPECT_TRUE(change("tree", {"ada", "crew", 0775}));

  EXPECT_EQ(statusOf("tree/file").st_gid, 3456u);
}

TEST_F(FileManagerAttributesTest, TheModeIsSetAfterTheOwner) {
  proves("FILES-15");
  if (!isRoot()) GTEST_SKIP() << "only root can give files away";
  _folder.makeFile("tree/file", "");

  EXPECT_TRUE(change("tree", {"ada", "crew", 06755}));

  EXPECT_EQ(modeOf("tree/file"), 06755u) << "giving a file away would clear the bits";
}

TEST_F(FileManagerAttributesTest, BitsThatTheNewOwnerCostAreSetAgain) {
  proves("FILES-15");
  if (!isRoot()) GTEST_SKIP() << "only root can give files away";
  _folder.makeFile("tree/file", "");
  ASSERT_EQ(::chmod(path("tree/file").c_str(), 06755), 0);

  EXPECT_TRUE(change("tree", {"ada", "crew", 06755}));

  EXPECT_EQ(modeOf("tree/file"), 06755u);
}

TEST_F(FileManagerAttributesTest, ALinksTargetNeverChanges) {
  proves("FILES-13");
  _folder.makeFile("target/file", "", 0600);
  _folder.makeFile("single", "", 0600);
  _folder.makeLink("tree/folder", "../target");
  _folder.makeLink("tree/file", "../single");
  _folder.makeLink("tree/absolute", path("target/file"));
  const auto targets = snapshot("target");
  const auto single = snapshot("single");

  EXPECT_TRUE(change("tree", {isRoot() ? "ada" : "self", "own", 0775}));

  EXPECT_THAT(TreeDiff(targets, snapshot("target")).lines(), IsEmpty());
  EXPECT_THAT(TreeDiff(single, snapshot("single")).lines(), IsEmpty());
}

TEST_F(FileManagerAttributesTest, AFolderNamedThroughOnesOwnLinksIsEntered) {
  proves("RIGHTS-9");
  _folder.makeFile("a/real/file", "", 0600);
  _folder.makeFolder("b/c");
  _folder.makeLink("b/c/relative", "./.././../a//real/");
  _folder.makeLink("way", "b");
  _folder.makeLink("link", path("way/c/relative"));

  EXPECT_TRUE(_files.mayEnter(path("link")));
  EXPECT_TRUE(changeMode("link", 0775));

  EXPECT_EQ(modeOf("a/real/file"), 0775u);
  EXPECT_TRUE(changeMode("link//", 0700));
  EXPECT_EQ(modeOf("a/real/file"), 0700u);
}

TEST_F(FileManagerAttributesTest, ALinkThatEndsAtAFolderAboveLeadsThere) {
  _folder.makeFile("a/file", "", 0600);
  _folder.makeFolder("a/b");
  _folder.makeLink("up", "a/b/..");
  _folder.makeLink("a/here", ".");

  EXPECT_TRUE(changeMode("up", 0775));
  EXPECT_EQ(modeOf("a/file"), 0775u);

  EXPECT_TRUE(changeMode("a/here", 0700));
  EXPECT_EQ(modeOf("a/file"), 0700u);
}

TEST_F(FileManagerAttributesTest, AnybodyElsesLinkOnTheWayBarsTheFolder) {
  proves("RIGHTS-9");
  if (!isRoot()) GTEST_SKIP() << "only root can give links away";
  _folder.makeFile("a/real/file", "", 0600);
  _folder.makeLink("way", "a");
  _folder.makeLink("second", "way/real");
  _folder.makeLink("first", "second");
  _folder.makeLink("above", ".");
  for (const char* foreign : {"way", "second", "first", "above"}) {
    giveLink(foreign, 1234);

    EXPECT_FALSE(_files.mayEnter(path("above/first"))) << foreign;
    EXPECT_FALSE(changeMode("above/first", 0775)) << foreign;
    EXPECT_FALSE(changeMode("above/first/", 0775)) << foreign;

    EXPECT_EQ(modeOf("a/real/file"), 0600u) << foreign;
    giveLink(foreign, 0);
  }
  EXPECT_TRUE(changeMode("above/first", 0775));
}

TEST_F(FileManagerAttributesTest, TheEffectiveUsersLinksAndRootsAreFollowed) {
  proves("RIGHTS-9");
  if (!isRoot()) GTEST_SKIP() << "needs links of several users";
  giveToOrdinaryUser(_folder.makeFolder("tree"));
  giveToOrdinaryUser(_folder.makeFile("tree/file", "", 0600));
  _folder.makeLink("roots", "tree");
  _folder.makeLink("own", "roots");
  _folder.makeLink("foreign", "own");
  giveToOrdinaryUser(path("own"));
  giveLink("foreign", 1234);

  EXPECT_TRUE(asOrdinaryUser([&] {
    MadeUpUsers users;
    PosixFileManager files(users);
    return files.mayEnter(path("own")) && !files.mayEnter(path("foreign")) &&
           files.changeAttributesBelow(path("own"), {"self", "own", 0775});
  }));

  EXPECT_EQ(modeOf("tree/file"), 0775u);
}

TEST_F(FileManagerAttributesTest, ALinkWithASecondNameIsNotFollowed) {
  _folder.makeFile("real/file", "", 0600);
  _folder.makeLink("elsewhere/link", path("real"));
  _folder.makeHardLink("link", "elsewhere/link");

  EXPECT_FALSE(changeMode("link", 0775));

  EXPECT_EQ(modeOf("real/file"), 0600u);
}

TEST_F(FileManagerAttributesTest, AsManyLinksAreFollowedAsTheSystemFollows) {
  _folder.makeFile("0/file", "", 0600);
  for (int number = 1; number <= 41; ++number)
    _folder.makeLink(std::to_string(number), std::to_string(number - 1));
  _folder.makeLink("circle", "circle");

  EXPECT_TRUE(changeMode("40", 0775));
  EXPECT_FALSE(changeMode("41", 0775));
  EXPECT_FALSE(_files.mayEnter(path("41")));
  EXPECT_FALSE(_files.mayEnter(path("circle")));
}

TEST_F(FileManagerAttributesTest, OnlyFoldersMayBeEntered) {
  _folder.makeFile("file", "", 0600);
  _folder.makeLink("toFile", "file");
  _folder.makeLink("throughFile", "file/x");
  _folder.makeLink("dangling", "nowhere");
  _folder.makeFolder("folder");

  EXPECT_TRUE(_files.mayEnter(path("folder/")));
  for (const char* name : {"file", "toFile", "throughFile", "dangling", "missing"})
    EXPECT_FALSE(_files.mayEnter(path(name))) << name;
  EXPECT_FALSE(_files.mayEnter(""));
  EXPECT_TRUE(changeMode("toFile", 0775)) << "nothing is below a file";
  EXPECT_FALSE(changeMode("throughFile", 0775));
  EXPECT_EQ(modeOf("file"), 0600u);
}

TEST_F(FileManagerAttributesTest, ALinkThatNamesAFolderKeepsItsOwner) {
  proves("RIGHTS-9");
  if (!isRoot()) GTEST_SKIP() << "only root can give files away";
  _folder.makeFile("data/file", "", 0600);
  _folder.makeLink("tree/named", "../data");
  _folder.makeLink("tree/other", "../data");
  const std::vector<std::string> folders = {path("tree"), path("tree/named")};

  EXPECT_TRUE(_files.changeAttributesBelowAll(folders, {"ada", "crew", 0775}));

  EXPECT_EQ(statusOf("data/file").st_uid, 1234u);
  EXPECT_EQ(statusOf("tree/named").st_uid, 0u);
  EXPECT_EQ(statusOf("tree/other").st_uid, 1234u);
  EXPECT_TRUE(_files.mayEnter(path("tree/named")));
}

TEST_F(FileManagerAttributesTest, AForeignLinkThatNamesAFolderIsHandedOverLikeAnyOther) {
  if (!isRoot()) GTEST_SKIP() << "only root can give files away";
  _folder.makeFile("data/file", "", 0600);
  _folder.makeLink("tree/named", "../data");
  giveLink("tree/named", 4321);
  const std::vector<std::string> folders = {path("tree"), path("tree/named")};

  EXPECT_FALSE(_files.changeAttributesBelowAll(folders, {"ada", "crew", 0775}));

  EXPECT_EQ(statusOf("tree/named").st_uid, 1234u);
  EXPECT_EQ(modeOf("data/file"), 0600u);
}

TEST_F(FileManagerAttributesTest, AllFoldersAreOpenedBeforeTheFirstChange) {
  _folder.makeFile("a/file", "", 0600);
  _folder.makeFile("b/file", "", 0600);
  _folder.makeFile("secret/file", "", 0600);
  _folder.makeLink("link", "b");
  _files.beforeNext(FileOperation::kChangeMode, [this] {
    ASSERT_EQ(::unlink(path("link").c_str()), 0);
    _folder.makeLink("link", "secret");
  });

  EXPECT_TRUE(_files.changeAttributesBelowAll({path("a"), path("link")}, {"self", "own", 0775}));

  EXPECT_EQ(modeOf("a/file"), 0775u);
  EXPECT_EQ(modeOf("b/file"), 0775u);
  EXPECT_EQ(modeOf("secret/file"), 0600u);
}

TEST_F(FileManagerAttributesTest, AFolderThatFailsDoesNotKeepTheOthersBack) {
  _folder.makeFile("a/file", "", 0600);
  _folder.makeFile("b/file", "", 0600);

  EXPECT_FALSE(_files.changeAttributesBelowAll({path("a"), path("missing"), "", path("b")},
                                               {"self", "own", 0775}));

  EXPECT_EQ(modeOf("a/file"), 0775u);
  EXPECT_EQ(modeOf("b/file"), 0775u);
}

// What failed the first time would be right after the second.
TEST_F(FileManagerAttributesTest, AFolderBelowAnotherOneIsWalkedWithThatOneAlone) {
  _folder.makeFile("tree/sub/file", "", 0600);
  _folder.makeFolder("tree/sub", 0775);
  for (const std::vector<std::string>& folders :
       {std::vector{path("tree"), path("tree/sub")},
        std::vector{path("tree/sub/"), path("tree/sub")}}) {
    _files.failNext(FileOperation::kChangeMode, EIO);

    EXPECT_FALSE(_files.changeAttributesBelowAll(folders, {"self", "own", 0775}));

    EXPECT_EQ(modeOf("tree/sub/file"), 0600u);
  }
}

TEST_F(FileManagerAttributesTest, LinksAboveARealFolderAreFollowedWhosoeverTheyAre) {
  _folder.makeFile("real/tree/file", "", 0600);
  _folder.makeLink("link", "real");
  if (isRoot()) giveLink("link", 1234);

  EXPECT_TRUE(changeMode("link/tree/", 0775));

  EXPECT_EQ(modeOf("real/tree/file"), 0775u);
}

TEST_F(FileManagerAttributesTest, AMissingFolderIsAFailure) {
  _folder.makeLink("dangling", "nowhere");

  EXPECT_FALSE(changeMode("missing", 0775));
  EXPECT_FALSE(changeMode("dangling", 0775));
  EXPECT_FALSE(_files.changeAttributesBelow("", {"self", "own", 0775}));
}

TEST_F(FileManagerAttributesTest, NothingIsBelowAFileOrAnEmptyFolder) {
  _folder.makeFile("file", "", 0600);
  _folder.makeFolder("folder", 0700);

  EXPECT_TRUE(changeMode("file", 0775));
  EXPECT_TRUE(changeMode("folder", 0775));

  EXPECT_EQ(modeOf("file"), 0600u);
  EXPECT_EQ(modeOf("folder"), 0700u);
}

TEST_F(FileManagerAttributesTest, ASecondWalkChangesNothing) {
  proves("FILES-15");
  _folder.makeFile("tree/a/file", "", 0600);
  _folder.makeLink("tree/a/link", "file");
  const FileAttributes attributes{isRoot() ? "ada" : "self", isRoot() ? "crew" : "own", 0775};
  ASSERT_TRUE(change("tree", attributes));
  const std::size_t before = _files.operations().size();

  EXPECT_TRUE(change("tree", attributes));

  EXPECT_EQ(_files.operations().size(), before);
}

TEST_F(FileManagerAttributesTest, OnlyWhatDiffersIsChanged) {
  proves("FILES-15");
  _folder.makeFile("tree/file", "", 0600);
  EXPECT_TRUE(changeMode("tree", 0775));

  EXPECT_THAT(_files.operations(), ElementsAre(FileOperation::kChangeMode));
}

TEST_F(FileManagerAttributesTest, OnlyTheOwnerIsChangedWhereTheModeIsRight) {
  if (!isRoot()) GTEST_SKIP() << "only root can give files away";
  _folder.makeFile("tree/file", "", 0775);
  _folder.makeLink("tree/link", "file");

  EXPECT_TRUE(change("tree", {"ada", "crew", 0775}));

  EXPECT_THAT(_files.operations(), Each(FileOperation::kChangeOwner));
}

TEST_F(FileManagerAttributesTest, AFileWithSeveralLinksOfSomebodyElseIsLeftAlone) {
  proves("FILES-14");
  if (!isRoot()) GTEST_SKIP() << "only root can give files away";
  _folder.makeFile("secret", "", 0600);
  _folder.makeFolder("tree");
  _folder.makeHardLink("tree/file", "secret");
  _folder.makeFile("tree/other", "", 0600);

  EXPECT_FALSE(change("tree", {"ada", "crew", 0775}));

  EXPECT_EQ(modeOf("secret"), 0600u);
  EXPECT_EQ(statusOf("secret").st_uid, 0u);
  EXPECT_EQ(modeOf("tree/other"), 0775u);
  EXPECT_EQ(statusOf("tree/other").st_uid, 1234u);
}

TEST_F(FileManagerAttributesTest, AFileWithSeveralLinksOfTheNewOwnerIsChanged) {
  proves("FILES-14");
  _folder.makeFile("tree/file", "", 0600);
  _folder.makeHardLink("tree/other", "tree/file");
  const std::string owner = isRoot() ? "ada" : "self";
  const uid_t number = isRoot() ? 1234 : ::geteuid();
  ASSERT_EQ(::chown(path("tree/file").c_str(), number, ::getegid()), 0);

  EXPECT_TRUE(change("tree", {owner, "own", 0775}));

  EXPECT_EQ(modeOf("tree/file"), 0775u);
}

TEST_F(FileManagerAttributesTest, RootsFileWithSeveralLinksIsLeftAloneForRootToo) {
  proves("FILES-14");
  if (!isRoot()) GTEST_SKIP() << "only root has files of root";
  _folder.makeFile("secret", "", 0600);
  _folder.makeFile("tree/other", "", 0600);
  _folder.makeHardLink("tree/file", "secret");

  EXPECT_FALSE(changeMode("tree", 0775));

  EXPECT_EQ(modeOf("secret"), 0600u);
  EXPECT_EQ(modeOf("tree/other"), 0775u);
}

TEST_F(FileManagerAttributesTest, ASecondLinkMadeAtTheLastMomentCountsToo) {
  proves("FILES-14");
  if (!isRoot()) GTEST_SKIP() << "only root can give files away";
  _folder.makeFile("secret", "", 0600);
  _folder.makeFile("tree/a", "", 0600);
  _folder.makeFile("tree/z", "", 0600);
  // While one file changes, the other becomes a second name of the secret.
  _files.beforeNext(FileOperation::kChangeMode, [this] {
    for (const std::string name : {"tree/a", "tree/z"}) {
      if (statusOf(name).st_uid == 1234) continue;
      ASSERT_EQ(::unlink(path(name).c_str()), 0);
      _folder.makeHardLink(name, "secret");
    }
  });

  EXPECT_FALSE(change("tree", {"ada", "crew", 0775}));

  EXPECT_EQ(modeOf("secret"), 0600u);
  EXPECT_EQ(statusOf("secret").st_uid, 0u);
}

TEST_F(FileManagerAttributesTest, AnEntryExchangedForALinkLeavesTheTargetAlone) {
  proves("FILES-13");
  _folder.makeFile("secret", "", 0600);
  _folder.makeFile("tree/file", "", 0640);
  _files.beforeNext(isRoot() ? FileOperation::kChangeOwner : FileOperation::kChangeMode, [this] {
    ASSERT_EQ(::rename(path("tree/file").c_str(), path("away").c_str()), 0);
    _folder.makeLink("tree/file", "../secret");
  });

  EXPECT_TRUE(change("tree", {isRoot() ? "ada" : "self", isRoot() ? "crew" : "own", 0775}));

  EXPECT_EQ(modeOf("secret"), 0600u);
  EXPECT_EQ(statusOf("secret").st_uid, ::geteuid());
  EXPECT_EQ(modeOf("away"), 0775u) << "the entry itself was held";
}

TEST_F(FileManagerAttributesTest, AFolderExchangedForALinkIsNotEntered) {
  proves("FILES-13");
  _folder.makeFile("secret/file", "", 0600);
  _folder.makeFile("tree/folder/file", "", 0640);
  _folder.makeFolder("tree/folder", 0700);
  _files.beforeNext(FileOperation::kChangeMode, [this] {
    ASSERT_EQ(::rename(path("tree/folder").c_str(), path("away").c_str()), 0);
    _folder.makeLink("tree/folder", "../secret");
  });

  EXPECT_FALSE(changeMode("tree", 0775));

  EXPECT_EQ(modeOf("secret/file"), 0600u);
}

TEST_F(FileManagerAttributesTest, AnUnknownOwnerIsAFailureThatStillSetsModes) {
  _folder.makeFile("tree/a/file", "", 0600);
  _folder.makeFile("tree/right", "", 0775);
  _folder.makeLink("tree/link", "right");

  EXPECT_FALSE(change("tree", {"stranger", "admin", 0775}));

  EXPECT_EQ(modeOf("tree/a"), 0775u);
  EXPECT_EQ(modeOf("tree/a/file"), 0775u);
  EXPECT_EQ(statusOf("tree/a/file").st_uid, ::geteuid());
  EXPECT_THAT(_files.operations(), Not(Contains(FileOperation::kChangeOwner)));
}

TEST_F(FileManagerAttributesTest, AnUnknownOwnerIsAFailureAlsoWhereModesAreRight) {
  proves("RIGHTS-4");
  _folder.makeFile("tree/right", "", 0775);

  EXPECT_FALSE(change("tree", {"stranger", "own", 0775}));
  EXPECT_FALSE(change("tree", {"self", "strange group", 0775}));
}

TEST_F(FileManagerAttributesTest, AnUnknownOwnersHardLinksAreLeftAlone) {
  proves("FILES-14");
  _folder.makeFile("secret", "", 0600);
  _folder.makeFolder("tree");
  _folder.makeHardLink("tree/file", "secret");

  EXPECT_FALSE(change("tree", {"stranger", "own", 0775}));

  EXPECT_EQ(modeOf("secret"), 0600u);
}

TEST_F(FileManagerAttributesTest, WithoutAGroupAdminTheOwnersOwnGroupIsGiven) {
  proves("RIGHTS-5");
  if (!isRoot()) GTEST_SKIP() << "only root can give files away";
  _folder.makeFile("tree/file", "");

  EXPECT_TRUE(change("tree", {"ada", "admin", 0775}));

  EXPECT_EQ(statusOf("tree/file").st_gid, 2345u);
}

TEST_F(FileManagerAttributesTest, AFailureDoesNotStopTheWalk) {
  proves("RIGHTS-6");
  for (int number = 0; number < 10; ++number) {
    _folder.makeFile("tree/" + std::to_string(number), "", 0600);
  }
  _files.failAt(3, EIO);

  EXPECT_FALSE(changeMode("tree", 0775));

  int changed = 0;
  for (const auto& [name, entry] : snapshot("tree")) changed += entry.mode == 0775 ? 1 : 0;
  EXPECT_EQ(changed, 9);
}

TEST_F(FileManagerAttributesTest, ARefusedOwnerStillGetsTheModeSet) {
  proves("RIGHTS-6");
  if (!isRoot()) GTEST_SKIP() << "only root can give files away";
  _folder.makeFile("tree/file", "", 0600);
  _files.failNext(FileOperation::kChangeOwner, EPERM);

  EXPECT_FALSE(change("tree", {"ada", "crew", 0775}));

  EXPECT_EQ(modeOf("tree/file"), 0775u);
}

TEST_F(FileManagerAttributesTest, AnOrdinaryUserChangesHisOwnEntries) {
  giveToOrdinaryUser(_folder.makeFolder("tree"));
  giveToOrdinaryUser(_folder.makeFolder("tree/barred", 0));
  giveToOrdinaryUser(_folder.makeFile("tree/file", "", 0));

  EXPECT_TRUE(asOrdinaryUser([&] {
    MadeUpUsers users;
    PosixFileManager files(users);
    return files.changeAttributesBelow(path("tree"), {"self", "own", 0775});
  }));

  EXPECT_EQ(modeOf("tree/barred"), 0775u);
  EXPECT_EQ(modeOf("tree/file"), 0775u);
}

TEST_F(FileManagerAttributesTest, AnOrdinaryUserFailsAtForeignEntriesAndGoesOn) {
  if (!isRoot()) GTEST_SKIP() << "needs files of somebody else";
  giveToOrdinaryUser(_folder.makeFolder("tree"));
  _folder.makeFile("tree/foreign", "", 0600);
  giveToOrdinaryUser(_folder.makeFile("tree/mine", "", 0600));

  EXPECT_TRUE(asOrdinaryUser([&] {
    MadeUpUsers users;
    PosixFileManager files(users);
    return !files.changeAttributesBelow(path("tree"), {"self", "own", 0775});
  }));

  EXPECT_EQ(modeOf("tree/foreign"), 0600u);
  EXPECT_EQ(modeOf("tree/mine"), 0775u);
}

TEST_F(FileManagerAttributesTest, AFolderThatCannotBeListedIsAFailure) {
  proves("RIGHTS-6");
  if (!isRoot()) GTEST_SKIP() << "needs a folder of somebody else";
  _folder.makeFolder("tree", 0711);

  EXPECT_TRUE(asOrdinaryUser([&] {
    MadeUpUsers users;
    PosixFileManager files(users);
    return !files.changeAttributesBelow(path("tree"), {"self", "own", 0775});
  }));
}

}  // namespace
}  // namespace installer::test
