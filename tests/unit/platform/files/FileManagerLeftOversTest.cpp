#include <sys/file.h>
#include <sys/stat.h>

#include <cerrno>
#include <filesystem>
#include <functional>
#include <string>

#include "platform/files/Claim.h"
#include "platform/files/Opening.h"
#include "platform/files/TemporaryNames.h"
#include "support/Proves.h"
#include "unit/platform/files/FileManagerFixture.h"

namespace installer::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr uid_t kStranger = 4242;

// Does something whenever it is asked whom to trust.
class AskedUsers : public MadeUpUsers {
 public:
  std::function<void()> whenAsked = [] {};

  std::optional<std::string> environment(const std::string& variable) override {
    whenAsked();
    return MadeUpUsers::environment(variable);
  }
};

class FileManagerLeftOversTest : public FileManagerFixture {
 protected:
  // What other tests must not leave is here on purpose.
  void TearDown() override {
    for (const auto& entry : std::filesystem::directory_iterator(_folder.path()))
      std::filesystem::remove_all(entry);
    FileManagerFixture::TearDown();
  }

  void removeBelow() { _files.removeLeftOvers(path(""), LeftOvers::below); }
  void removeWithin() { _files.removeLeftOvers(path(""), LeftOvers::within); }
  auto paths() const { return pathsIn(snapshot()); }

  Descriptor claimed(std::string_view relative) const {
    Descriptor item = openEntry(AT_FDCWD, path(relative), O_RDONLY);
    EXPECT_TRUE(claim(item));
    return item;
  }
};

TEST_F(FileManagerLeftOversTest, FilesFoldersAndLinksGoAtEveryDepth) {
  proves("AGAIN-1");
  _folder.makeFile(".hotfix-1");
  _folder.makeFile("a/b/.hotfix-18446744073709551615");
  _folder.makeFile("a/b/.hotfix-3/c/file");
  _folder.makeFile("a/kept");
  _folder.makeLink("a/.hotfix-4", "kept");
  _folder.makeLink("a/.hotfix-5", "nowhere");

  removeBelow();

  EXPECT_THAT(paths(), ElementsAre("a", "a/b", "a/kept"));
}

TEST_F(FileManagerLeftOversTest, OtherNamesStay) {
  proves("AGAIN-2");
  for (const char* name :
       {".hotfix-", ".hotfix-1a", ".hotfix-01", ".hotfix--1", ".hotfix-+1", ".hotfix- 1",
        "x.hotfix-1", ".Hotfix-1", "hotfix-1", ".hotfix-1.old", ".hotfix-18446744073709551616"})
    _folder.makeFile(name);
  const auto before = snapshot();

  removeBelow();
  removeWithin();

  EXPECT_THAT(TreeDiff(before, snapshot()).lines(), IsEmpty());
}

TEST_F(FileManagerLeftOversTest, WhatTheFileManagerMakesCountsAsItsName) {
  FileChanges changes([](FileOperation) { return 0; });
  for (int number = 0; number < 100; ++number)
    EXPECT_TRUE(TemporaryNames::canBeOne(changes.freeTemporaryName(AT_FDCWD)));
  EXPECT_TRUE(TemporaryNames::canBeOne(".hotfix-0"));
}

TEST_F(FileManagerLeftOversTest, NoLinkIsFollowed) {
  proves("AGAIN-2");
  const TemporaryFolder elsewhere;
  elsewhere.makeFile(".hotfix-1");
  elsewhere.makeFile("below/.hotfix-2");
  _folder.makeLink("link", elsewhere.path());
  _folder.makeLink(".hotfix-3", elsewhere.path("below"));

  removeBelow();

  EXPECT_THAT(paths(), ElementsAre("link"));
  EXPECT_THAT(pathsIn(snapshotOf(elsewhere.path())),
              ElementsAre(".hotfix-1", "below", "below/.hotfix-2"));
}

TEST_F(FileManagerLeftOversTest, ALinkToTheFolderItselfIsFollowed) {
  _folder.makeFile("folder/.hotfix-1");
  _folder.makeLink("link", "folder");

  _files.removeLeftOvers(path("link"), LeftOvers::within);

  EXPECT_FALSE(isThere("folder/.hotfix-1"));
}

TEST_F(FileManagerLeftOversTest, WhatOtherUsersOwnStays) {
  proves("AGAIN-2");
  if (::geteuid() != 0) GTEST_SKIP() << "needs root to give files away";
  _users.add({"console", 4711, 4711, "/home/console"});
  _users.variables["USER"] = "console";
  for (const char* name : {".hotfix-1", ".hotfix-2", "a/.hotfix-3", "a/.hotfix-4"})
    _folder.makeFile(name);
  for (const char* name : {".hotfix-1", "a/.hotfix-3"})
    ASSERT_EQ(::chown(path(name).c_str(), kStranger, kStranger), 0);
  for (const char* name : {".hotfix-2", "a/.hotfix-4"})
    ASSERT_EQ(::chown(path(name).c_str(), 4711, 4711), 0);

  removeWithin();
  EXPECT_THAT(paths(), ElementsAre(".hotfix-1", "a", "a/.hotfix-3", "a/.hotfix-4"));

  removeBelow();
  EXPECT_THAT(paths(), ElementsAre(".hotfix-1", "a", "a/.hotfix-3"));
}

TEST_F(FileManagerLeftOversTest, OnlyWhatIsInASharedFolderItselfGoes) {
  proves("AGAIN-1");
  _folder.makeFile(".hotfix-1");
  _folder.makeFile(".hotfix-2/file");
  _folder.makeLink(".hotfix-3", "nowhere");
  _folder.makePipe(".hotfix-4");
  _folder.makeFile("below/.hotfix-5");

  removeWithin();

  EXPECT_THAT(paths(), ElementsAre(".hotfix-3", ".hotfix-4", "below", "below/.hotfix-5"));
}

TEST_F(FileManagerLeftOversTest, AFolderThatOthersCouldHaveNamedStays) {
  proves("AGAIN-2");
  const auto stays = [this](mode_t mode) {
    _folder.makeFile("shared/.hotfix-1/file");
    _folder.makeFile("shared/.hotfix-2");
    _folder.makeFolder("shared", mode);
    _files.removeLeftOvers(path("shared"), LeftOvers::within);
    EXPECT_FALSE(isThere("shared/.hotfix-2")) << "anybody who may name a file may remove it";
    return isThere("shared/.hotfix-1/file");
  };

  EXPECT_FALSE(stays(0755));
  EXPECT_FALSE(stays(0775));
  EXPECT_TRUE(stays(0777));
  EXPECT_FALSE(stays(01777));
  if (::geteuid() != 0) return;
  ASSERT_EQ(::chown(path("shared").c_str(), kStranger, kStranger), 0);
  EXPECT_TRUE(stays(0755));
}

TEST_F(FileManagerLeftOversTest, WhatIsClaimedStaysInASharedFolderUntilItsMakerIsGone) {
  proves("AGAIN-2");
  _folder.makeFile(".hotfix-1");
  _folder.makeFile(".hotfix-2/file");
  {
    const Descriptor file = claimed(".hotfix-1");
    const Descriptor folder = claimed(".hotfix-2");

    removeWithin();
    EXPECT_THAT(paths(), ElementsAre(".hotfix-1", ".hotfix-2", ".hotfix-2/file"));
  }

  removeWithin();
  EXPECT_THAT(paths(), IsEmpty());
}

TEST_F(FileManagerLeftOversTest, WhatIsBeingWrittenOrCopiedIsNoLeftOver) {
  proves("AGAIN-2");
  _folder.makeFile("file", "old");
  _folder.makeFile("tree/below/file", "x");
  FailingFileManager other(_users);
  const auto look = [&] { other.removeLeftOvers(path(""), LeftOvers::within); };
  using enum FileOperation;

  for (const FileOperation operation : {kWrite, kChangeMode, kSync, kRename}) {
    _files.beforeNext(operation, look);
    EXPECT_TRUE(_files.write(path("file"), "new", ReplacedFile::takeOver, 0600));
    _files.beforeNext(operation, look);
    EXPECT_TRUE(_files.copy(path("file"), path("copy"), ExistingItem::replace));
    _files.beforeNext(operation, look);
    EXPECT_TRUE(_files.copy(path("tree"), path("tree copy"), ExistingItem::fail));
    EXPECT_EQ(_folder.content("tree copy/below/file"), "x");
    removeTree(path("tree copy"));
  }

  EXPECT_THAT(other.operations(), IsEmpty());
}

TEST_F(FileManagerLeftOversTest, WhatTookThePlaceOfALeftOverMeanwhileStays) {
  proves("AGAIN-2");
  _folder.makeFile(".hotfix-1", "left over");
  _folder.makeFile("other", "another's");
  AskedUsers users;
  FailingFileManager files(users);
  users.whenAsked = [this] {
    std::filesystem::rename(path(".hotfix-1"), path("away"));
    std::filesystem::rename(path("other"), path(".hotfix-1"));
  };

  files.removeLeftOvers(path(""), LeftOvers::within);

  EXPECT_EQ(_folder.content(".hotfix-1"), "another's");
}

TEST_F(FileManagerLeftOversTest, AFolderThatTakesAFilesPlaceAtTheLastMomentStays) {
  proves("AGAIN-2");
  for (const LeftOvers which : {LeftOvers::below, LeftOvers::within}) {
    _folder.makeFile("shared/.hotfix-1", "left over");
    _folder.makeFile("guarded/file");
    _files.beforeNext(FileOperation::kUnlink, [this] {
      std::filesystem::remove(path("shared/.hotfix-1"));
      std::filesystem::rename(path("guarded"), path("shared/.hotfix-1"));
    });

    _files.removeLeftOvers(path("shared"), which);

    EXPECT_TRUE(isThere("shared/.hotfix-1/file"));
    removeTree(path("shared"));
  }
}

TEST_F(FileManagerLeftOversTest, AClaimIsLostWithTheItem) {
  _folder.makeFile("file");
  const Descriptor first = openEntry(AT_FDCWD, path("file"), O_RDONLY);
  const Descriptor second = openEntry(AT_FDCWD, path("file"), O_RDONLY);

  EXPECT_TRUE(claim(first));
  EXPECT_FALSE(claim(second));
  ASSERT_TRUE(_files.remove(path("file")));
  EXPECT_FALSE(claim(first)) << "it was taken for a left-over";
}

TEST_F(FileManagerLeftOversTest, WhatCannotBeRemovedStopsNothing) {
  _folder.makeFile("a/.hotfix-1");
  _folder.makeFile("b/.hotfix-2");
  _files.failNext(FileOperation::kUnlink, EPERM);

  removeBelow();
  EXPECT_EQ(paths().size(), 3u);

  removeBelow();
  EXPECT_THAT(paths(), ElementsAre("a", "b"));
}

TEST_F(FileManagerLeftOversTest, WhereThereIsNoFolderNothingHappens) {
  _folder.makeFile("file");

  for (const std::string& folder : {path("missing"), path("file"), std::string()})
    for (const LeftOvers which : {LeftOvers::below, LeftOvers::within})
      _files.removeLeftOvers(folder, which);

  EXPECT_THAT(_files.operations(), IsEmpty());
}

}  // namespace
}  // namespace installer::test
