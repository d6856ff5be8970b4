#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <memory>
#include <string>

#include "support/Proves.h"
#include "unit/platform/files/FileManagerFixture.h"

namespace installer::test {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

constexpr uid_t kAlice = 23001;
constexpr uid_t kBob = 23002;

// What is below a folder that the file manager holds.
class FileManagerHeldFolderTest : public FileManagerFixture {
 protected:
  void SetUp() override {
    _users.add({"alice", kAlice, kAlice, "/home/alice"});
    _folder.makeFile("out/guarded", "secret", 0600);
    _folder.makeFile("home/deploy/file", "own");
  }
  void TearDown() override {
    _hold.reset();
    FileManagerFixture::TearDown();
  }

  void hold(std::string_view relative = "home",
            const std::optional<std::string>& newOwner = std::nullopt) {
    _hold = _files.hold(path(relative), newOwner);
    ASSERT_NE(nullptr, _hold) << relative;
  }
  void rename(std::string_view from, std::string_view to) const {
    std::filesystem::rename(path(from), path(to));
  }
  // Puts a link to the guarded folder in the entry's place.
  void exchange(std::string_view relative) const {
    rename(relative, std::string(relative) + ".old");
    _folder.makeLink(relative, path("out"));
  }
  void giveAway(std::string_view relative, uid_t owner) const {
    ASSERT_EQ(0, ::lchown(path(relative).c_str(), owner, owner));
  }
  void expectGuarded() const {
    EXPECT_THAT(pathsIn(snapshot("out")), ElementsAre("guarded"));
    EXPECT_EQ(_folder.content("out/guarded"), "secret");
    EXPECT_EQ(modeOf("out/guarded"), 0600u);
    EXPECT_EQ(modeOf("out"), 0755u);
  }

  std::shared_ptr<const void> _hold;
  FileError _error;
};

TEST_F(FileManagerHeldFolderTest, AllGoesOnInTheFolderThatWasOpened) {
  proves("FILES-23");
  hold();
  _folder.makeFile("tree/new", "x");
  exchange("home");

  EXPECT_TRUE(_files.exists(path("home/deploy/file")));
  EXPECT_FALSE(_files.exists(path("home/guarded")));
  EXPECT_EQ(_files.read(path("home/deploy/file")), "own");
  EXPECT_EQ(_files.list(path("home")), std::vector<std::string>{"deploy"});
  EXPECT_TRUE(_files.write(path("home/written"), "w"));
  EXPECT_TRUE(_files.copy(path("tree"), path("home/copied"), ExistingItem::fail));
  EXPECT_TRUE(_files.copy(path("home/deploy/file"), path("taken"), ExistingItem::fail));
  _files.merge(path("tree"), path("home/deploy"), path("home"));
  EXPECT_TRUE(_files.createDirectory(path("home/a/b"), Intermediates::create));
  EXPECT_TRUE(_files.createFile(path("home/made"), "m", {"self", "own", 0640}));
  EXPECT_TRUE(_files.remove(path("home/deploy/file")));
  EXPECT_TRUE(_files.changeAttributesBelow(path("home"), {"self", "own", 0700}));
  EXPECT_NE(nullptr, _files.tryLock(path("home")).hold);

  EXPECT_THAT(
      pathsIn(snapshot("home.old")),
      ElementsAre("a", "a/b", "copied", "copied/new", "deploy", "deploy/new", "made", "written"));
  EXPECT_EQ(_folder.content("taken"), "own");
  EXPECT_EQ(modeOf("home.old/written"), 0700u);
  expectGuarded();
}

TEST_F(FileManagerHeldFolderTest, WhatWasOpenedIsFlushed) {
  proves("FILES-23");
  hold();
  rename("home", "home.old");
  _folder.makeFile("home");

  EXPECT_TRUE(_files.flush(path("home"), &_error)) << _error.description;
  EXPECT_TRUE(_files.flush(path("home/deploy"), &_error)) << _error.description;
}

TEST_F(FileManagerHeldFolderTest, AFolderThatLeadsElsewhereIsNotFlushed) {
  proves("FILES-23");
  hold();
  exchange("home/deploy");

  EXPECT_FALSE(_files.flush(path("home/deploy"), &_error));

  EXPECT_THAT(_error.description, HasSubstr("Operation not permitted"));
  EXPECT_THAT(_files.operations(), IsEmpty());
}

TEST_F(FileManagerHeldFolderTest, NothingIsChangedThroughAFolderThatLeadsElsewhere) {
  proves("FILES-23");
  hold();
  _folder.makeFile("tree/guarded", "x");
  exchange("home/deploy");

  EXPECT_FALSE(_files.write(path("home/deploy/new"), "x", ReplacedFile::takeOver, {}, &_error));
  EXPECT_THAT(_error.description, HasSubstr("Operation not permitted"));
  EXPECT_EQ(FileError::kOther, _error.code);
  EXPECT_FALSE(
      _files.copy(path("tree/guarded"), path("home/deploy/guarded"), ExistingItem::replace));
  EXPECT_FALSE(_files.copy(path("tree"), path("home/deploy/tree"), ExistingItem::keep));
  _files.merge(path("tree"), path("home/deploy/tree"), path("home"));
  EXPECT_FALSE(_files.createDirectory(path("home/deploy/a"), Intermediates::refuse));
  EXPECT_FALSE(_files.createDirectory(path("home/deploy/a/b"), Intermediates::create));
  EXPECT_FALSE(_files.createFile(path("home/deploy/guarded"), "m", {"self", "own", 0640}));
  EXPECT_FALSE(_files.remove(path("home/deploy/guarded")));
  EXPECT_EQ(-1, _files.openLog(path("home/deploy/guarded")));

  expectGuarded();
}

TEST_F(FileManagerHeldFolderTest, NothingIsReadThroughAFolderThatLeadsElsewhere) {
  proves("FILES-23");
  hold();
  exchange("home/deploy");

  EXPECT_FALSE(_files.read(path("home/deploy/guarded"), &_error));
  EXPECT_EQ(FileError::kOther, _error.code);
  EXPECT_FALSE(_files.readUnlinked(path("home/deploy/guarded"), nullptr));
  EXPECT_FALSE(_files.list(path("home/deploy")));
  EXPECT_FALSE(_files.exists(path("home/deploy/guarded"), &_error));
  EXPECT_EQ(FileError::kOther, _error.code);
  EXPECT_FALSE(_files.owner(path("home/deploy/guarded")));
  EXPECT_FALSE(_files.copy(path("home/deploy/guarded"), path("taken"), ExistingItem::fail));
  EXPECT_EQ(nullptr, _files.tryLock(path("home/deploy")).hold);

  EXPECT_FALSE(isThere("taken"));
}

TEST_F(FileManagerHeldFolderTest, AFileThatIsALinkToElsewhereIsThereAndCannotBeRead) {
  proves("FILES-23");
  hold();
  _folder.makeLink("home/link", path("out/guarded"));
  _folder.makeLink("home/climbing", "../out/guarded");

  for (const std::string link : {"home/link", "home/climbing"}) {
    EXPECT_TRUE(_files.exists(path(link))) << link;
    EXPECT_FALSE(_files.read(path(link), &_error)) << link;
    EXPECT_EQ(FileError::kOther, _error.code) << link;
    EXPECT_THAT(_error.description, HasSubstr("Operation not permitted")) << link;
  }
}

TEST_F(FileManagerHeldFolderTest, LinksToPlacesInsideAreFollowed) {
  proves("FILES-23");
  hold();
  _folder.makeLink("home/relative", "deploy");
  _folder.makeLink("home/absolute", path("home/deploy"));
  _folder.makeLink("home/a/up", "../deploy/../deploy");
  _folder.makeLink("home/file", path("home/absolute/file"));
  _folder.makeLink("home/itself", path("home"));

  for (const std::string link : {"home/relative", "home/absolute", "home/a/up"}) {
    EXPECT_EQ(_files.read(path(link + "/file")), "own") << link;
    EXPECT_TRUE(_files.write(path(link + "/file"), "own")) << link;
    EXPECT_EQ(_files.list(path(link)), std::vector<std::string>{"file"}) << link;
    EXPECT_TRUE(_files.isDirectory(path(link))) << link;
  }
  EXPECT_EQ(_files.read(path("home/file")), "own");
  EXPECT_EQ(_files.read(path("home/itself/deploy/file")), "own");
  EXPECT_TRUE(_files.list(path("home/itself")).has_value());
  EXPECT_EQ(_files.read(path("home/a/../deploy/file")), "own");
}

TEST_F(FileManagerHeldFolderTest, AFileOfAnotherHeldFolderMayBeLinked) {
  const auto other = _files.hold(path("out"), std::nullopt);
  hold();
  _folder.makeLink("home/link", path("out/guarded"));

  EXPECT_EQ(_files.read(path("home/link")), "secret");
}

TEST_F(FileManagerHeldFolderTest, PathsThatOnlyBeginAlikeAreNobodysBusiness) {
  hold();
  _folder.makeFile("homes/file", "x");
  _folder.makeLink("homes/link", path("out/guarded"));

  EXPECT_EQ(_files.read(path("homes/file")), "x");
  EXPECT_EQ(_files.read(path("homes/link")), "secret");
  EXPECT_EQ(_files.read(path("home/../out/guarded")), "secret");
}

TEST_F(FileManagerHeldFolderTest, ATrailingSlashAsksForAFolder) {
  hold();

  EXPECT_TRUE(_files.exists(path("home/deploy/")));
  EXPECT_FALSE(_files.exists(path("home/deploy/file/")));
  EXPECT_FALSE(_files.read(path("home/deploy/file/")));
  EXPECT_TRUE(_files.list(path("home/deploy//")).has_value());
  EXPECT_TRUE(_files.list(path("home/deploy/.")).has_value());
  EXPECT_FALSE(_files.write(path("home/deploy/.."), "x"));
}

TEST_F(FileManagerHeldFolderTest, TheInnermostHeldFolderCounts) {
  _folder.makeLink("home/data", path("out"));
  hold();
  ASSERT_FALSE(_files.read(path("home/data/guarded")));
  const auto inner = _files.hold(path("home/data"), std::nullopt);

  EXPECT_EQ(_files.read(path("home/data/guarded")), "secret");
}

TEST_F(FileManagerHeldFolderTest, AFolderThatIsMissingIsHeldOnceItIsThere) {
  proves("FILES-23");
  hold("later");
  EXPECT_FALSE(_files.exists(path("later")));
  EXPECT_FALSE(_files.write(path("later/file"), "x", ReplacedFile::takeOver, {}, &_error));
  EXPECT_THAT(_error.description, HasSubstr("No such file"));

  EXPECT_TRUE(_files.createDirectory(path("later/a"), Intermediates::create));
  exchange("later");
  EXPECT_TRUE(_files.write(path("later/file"), "x"));

  EXPECT_THAT(pathsIn(snapshot("later.old")), ElementsAre("a", "file"));
  expectGuarded();
}

TEST_F(FileManagerHeldFolderTest, WhatIsNoFolderHoldsNothing) {
  hold("home/deploy/file");

  EXPECT_TRUE(_files.exists(path("home/deploy/file")));
  EXPECT_FALSE(_files.isDirectory(path("home/deploy/file")));
  EXPECT_FALSE(_files.exists(path("home/deploy/file/x"), &_error));
  EXPECT_EQ(FileError::kMissing, _error.code);
}

TEST_F(FileManagerHeldFolderTest, AHoldEndsWithItsLastCopy) {
  hold();
  auto again = _files.hold(path("home"), std::nullopt);
  EXPECT_EQ(_hold, again);
  exchange("home");

  _hold.reset();
  EXPECT_FALSE(_files.read(path("home/guarded")));
  again.reset();

  EXPECT_EQ(_files.read(path("home/guarded")), "secret");
}

TEST_F(FileManagerHeldFolderTest, TheRootAndNoPathCannotBeHeld) {
  for (const std::string& folder : {std::string("/"), std::string(), std::string("/tmp\0x", 6)})
    EXPECT_EQ(nullptr, _files.hold(folder, std::nullopt));
}

// --- Folders behind links ------------------------------------------------------------------------

TEST_F(FileManagerHeldFolderTest, OwnLinksToTheFolderAreFollowed) {
  _folder.makeLink("name", "home");
  hold("name");

  EXPECT_EQ(_files.read(path("name/deploy/file")), "own");
  EXPECT_TRUE(_files.mayEnter(path("name")));
}

TEST_F(FileManagerHeldFolderTest, AnotherUsersLinkIsFollowedToHisOwnFolderOnly) {
  proves("FILES-23");
  if (::geteuid() != 0) GTEST_SKIP() << "needs to give files away";
  _folder.makeLink("mine", path("home"));
  _folder.makeLink("theirs", path("out"));
  giveAway("mine", kBob);
  giveAway("theirs", kBob);
  giveAway("home", kBob);
  hold("mine");
  const auto other = _files.hold(path("theirs"), std::nullopt);

  EXPECT_EQ(_files.read(path("mine/deploy/file")), "own");
  EXPECT_FALSE(_files.mayEnter(path("mine")));
  EXPECT_FALSE(_files.changeAttributesBelow(path("mine"), {"self", "own", 0700}));
  EXPECT_FALSE(_files.read(path("theirs/guarded")));
  EXPECT_FALSE(_files.write(path("theirs/new"), "x"));
  EXPECT_FALSE(_files.mayEnter(path("theirs")));
  EXPECT_TRUE(_files.exists(path("theirs/guarded")));
  EXPECT_TRUE(_files.isDirectory(path("theirs")));
  expectGuarded();
}

TEST_F(FileManagerHeldFolderTest, LinksAboveTheFolderAreJudgedToo) {
  proves("FILES-23");
  if (::geteuid() != 0) GTEST_SKIP() << "needs to give files away";
  _folder.makeFile("a/out/file", "x");
  _folder.makeLink("user", path(""));
  giveAway("user", kBob);
  hold("user/out");
  const auto whole = _files.hold(path("user/a"), std::nullopt);
  giveAway("a", kBob);

  EXPECT_FALSE(_files.read(path("user/out/guarded")));
  EXPECT_FALSE(_files.read(path("user/a/out/file"))) << "judged when it was held";
}

TEST_F(FileManagerHeldFolderTest, ALinkWithASecondNameIsNobodys) {
  proves("FILES-23");
  _folder.makeLink("name", path("out"));
  ASSERT_EQ(0, ::linkat(AT_FDCWD, path("name").c_str(), AT_FDCWD, path("again").c_str(), 0));
  hold("again");

  EXPECT_FALSE(_files.read(path("again/guarded")));
}

TEST_F(FileManagerHeldFolderTest, AnExchangedFolderIsHandedOverAsItWasHeld) {
  proves("FILES-23");
  hold();
  exchange("home");

  EXPECT_TRUE(_files.mayEnter(path("home")));
  EXPECT_TRUE(_files.changeAttributesBelow(path("home"), {"self", "own", 0711}));

  EXPECT_EQ(modeOf("home.old/deploy/file"), 0711u);
  expectGuarded();
}

// --- Files with several names --------------------------------------------------------------------

TEST_F(FileManagerHeldFolderTest, AFileWithSeveralNamesOfAnotherOwnerIsUnreadable) {
  proves("FILES-24");
  if (::geteuid() != 0) GTEST_SKIP() << "needs to give files away";
  _folder.makeHardLink("home/planted", "out/guarded");
  hold("home", "alice");

  EXPECT_TRUE(_files.exists(path("home/planted")));
  EXPECT_FALSE(_files.read(path("home/planted"), &_error));
  EXPECT_EQ(FileError::kOther, _error.code);
  EXPECT_FALSE(_files.readUnlinked(path("home/planted"), nullptr));
  EXPECT_FALSE(_files.copy(path("home/planted"), path("taken"), ExistingItem::fail, &_error));
  EXPECT_THAT(_error.description, HasSubstr("Operation not permitted"));
  EXPECT_FALSE(isThere("taken"));
}

TEST_F(FileManagerHeldFolderTest, OfATreeTheFileWithSeveralNamesIsNotCopied) {
  proves("FILES-24");
  if (::geteuid() != 0) GTEST_SKIP() << "needs to give files away";
  _folder.makeHardLink("home/deploy/planted", "out/guarded");
  hold("home", "alice");

  EXPECT_FALSE(_files.copy(path("home/deploy"), path("taken"), ExistingItem::fail, &_error));

  EXPECT_THAT(_error.description, HasSubstr("/home/deploy/planted\""));
  EXPECT_FALSE(isThere("taken/planted"));
}

TEST_F(FileManagerHeldFolderTest, RootsFileWithSeveralNamesIsUnreadableForRootToo) {
  proves("FILES-24");
  _users.add({"root", 0, 0, "/root"});
  _folder.makeHardLink("home/planted", "out/guarded");
  hold("home", "root");

  EXPECT_FALSE(_files.read(path("home/planted"), &_error));
  EXPECT_THAT(_error.description, HasSubstr("Operation not permitted"));
  EXPECT_EQ(_files.read(path("home/deploy/file")), "own");
}

TEST_F(FileManagerHeldFolderTest, AFolderThatIsHeldTwiceIsHeldForTheStricterOwner) {
  proves("FILES-24");
  if (::geteuid() != 0) GTEST_SKIP() << "needs to give files away";
  _users.add({"bob", kBob, kBob, "/home/bob"});
  _folder.makeFolder("again");
  for (const char* name : {"roots", "alices", "bobs"}) {
    _folder.makeFile(std::string("home/") + name, "x");
    _folder.makeHardLink(std::string("again/") + name, std::string("home/") + name);
  }
  giveAway("home/alices", kAlice);
  giveAway("home/bobs", kBob);
  const auto readable = [this] {
    std::string names;
    for (const char* name : {"roots", "alices", "bobs"})
      if (_files.read(path(std::string("home/") + name))) names += std::string(name) + " ";
    return names;
  };

  hold();
  EXPECT_EQ(readable(), "roots alices bobs ");
  hold("home/", "alice");
  EXPECT_EQ(readable(), "alices ");
  hold("home");
  EXPECT_EQ(readable(), "alices ");
  hold("home", "bob");
  EXPECT_EQ(readable(), "") << "either could see what the other may not";
}

TEST_F(FileManagerHeldFolderTest, ALinkIntoAnotherHeldFolderIsJudgedThere) {
  proves("FILES-24");
  if (::geteuid() != 0) GTEST_SKIP() << "needs to give files away";
  _folder.makeHardLink("home/deploy/planted", "out/guarded");
  _folder.makeLink("package/planted", "../home/deploy/planted");
  _folder.makeLink("package/file", "../home/deploy/file");
  hold("home", "alice");
  const auto package = _files.hold(path("package"), std::nullopt);
  const auto copied = [this](const std::string& name) {
    const CopySource source(path("package/" + name), {path("home")});
    return _files.copy(source, path("taken"), ExistingItem::replace, &_error);
  };

  EXPECT_FALSE(_files.read(path("package/planted"), &_error));
  EXPECT_THAT(_error.description, HasSubstr("Operation not permitted"));
  EXPECT_FALSE(copied("planted"));
  EXPECT_THAT(_error.description, HasSubstr("Operation not permitted"));
  EXPECT_EQ(_files.read(path("package/file")), "own");
  EXPECT_TRUE(copied("file")) << _error.description;
}

TEST_F(FileManagerHeldFolderTest, ALinkOutOfTheNewOwnersFolderIsJudgedHereToo) {
  proves("FILES-24");
  if (::geteuid() != 0) GTEST_SKIP() << "needs to give files away";
  _folder.makeFolder("package");
  _folder.makeHardLink("package/guarded", "out/guarded");
  _folder.makeLink("home/planted", "../package/guarded");
  hold("home", "alice");
  const auto package = _files.hold(path("package"), std::nullopt);

  EXPECT_FALSE(_files.read(path("home/planted")));
  EXPECT_EQ(_files.read(path("package/guarded")), "secret");
}

TEST_F(FileManagerHeldFolderTest, OneNameOrTheNewOwnersSeveralAreRead) {
  proves("FILES-24");
  if (::geteuid() != 0) GTEST_SKIP() << "needs to give files away";
  _folder.makeFile("home/alices", "hers");
  _folder.makeHardLink("home/again", "home/alices");
  giveAway("home/alices", kAlice);
  hold("home", "alice");

  EXPECT_EQ(_files.read(path("home/again")), "hers");
  EXPECT_EQ(_files.read(path("home/deploy/file")), "own");
}

TEST_F(FileManagerHeldFolderTest, WithoutANewOwnerAnyFileIsRead) {
  _folder.makeHardLink("home/planted", "out/guarded");
  hold();
  const auto unknown = _files.hold(path("out"), "nobody knows");

  EXPECT_EQ(_files.read(path("home/planted")), "secret");
  EXPECT_EQ(_files.read(path("out/guarded")), "secret");
}

}  // namespace
}  // namespace installer::test
