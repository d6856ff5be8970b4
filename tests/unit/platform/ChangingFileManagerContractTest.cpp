#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include "unit/platform/FileManagerContract.h"

namespace installer::test {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Optional;

ChangingFileManagerContractTest::ChangingFileManagerContractTest() {
  _users.effectiveUser = ::geteuid();
  _users.add({"self", ::geteuid(), ::getegid(), "/home/self"});
  _users.add({"stranger", ::geteuid() + 1, ::getegid() + 1, "/home/stranger"});
  _users.groups = {{"own", ::getegid()}};
}

const TreeEntry& ChangingFileManagerContractTest::now(const std::string& name) {
  _now = _subject->now();
  return _now[name];
}

namespace {

// --- Looks ---------------------------------------------------------------------------------------

TEST_P(ChangingFileManagerContractTest, LinksLeadToWhatIsThere) {
  _disk.makeFile("folder/file", "bytes");
  _disk.makeLink("link", "folder");
  _disk.makeLink("dangling", "nowhere");
  _disk.makeLink("loop", "loop");

  EXPECT_TRUE(_files.isDirectory(path("link")));
  EXPECT_EQ(_files.read(path("link/file")), "bytes");
  EXPECT_EQ(_files.read(path("link/../folder/./file")), "bytes");
  EXPECT_FALSE(_files.exists(path("dangling"), &_error));
  EXPECT_EQ(_error.code, FileError::kMissing);
  EXPECT_FALSE(_files.exists(path("loop"), &_error));
  EXPECT_EQ(_error.code, FileError::kOther);
  EXPECT_EQ(_files.owner(path("dangling")), ::geteuid());
}

TEST_P(ChangingFileManagerContractTest, ASlashAtTheEndAsksForAFolder) {
  _disk.makeFile("file");
  _disk.makeFolder("folder");

  EXPECT_FALSE(_files.exists(path("file/"), &_error));
  EXPECT_EQ(_error.code, FileError::kMissing);
  EXPECT_FALSE(_files.exists(path("file/below")));
  EXPECT_TRUE(_files.exists(path("folder/")));
}

TEST_P(ChangingFileManagerContractTest, OnlyRegularFilesAreRead) {
  _disk.makePipe("pipe");
  _disk.makeFolder("folder");

  EXPECT_EQ(_files.read(path("pipe"), &_error), std::nullopt);
  EXPECT_EQ(_error.code, FileError::kNoFile);
  EXPECT_EQ(_files.read(path("folder"), &_error), std::nullopt);
  EXPECT_EQ(_error.code, FileError::kNoFile);
  EXPECT_EQ(_files.list(path("pipe"), ""), std::nullopt);
}

TEST_P(ChangingFileManagerContractTest, AnUnlinkedReadFollowsNoLinkAndTellsOtherNames) {
  _disk.makeFile("file", "bytes");
  _disk.makeLink("link", "file");
  _disk.makeHardLink("other", "file");
  FileOrigin origin;

  EXPECT_EQ(_files.readUnlinked(path("link"), nullptr, &_error), std::nullopt);
  EXPECT_EQ(_error.code, FileError::kNoFile);
  EXPECT_EQ(_files.readUnlinked(path("file"), &origin), "bytes");
  EXPECT_EQ(origin.owner, ::geteuid());
  EXPECT_TRUE(origin.hasOtherNames);
  EXPECT_TRUE(_files.remove(path("other")));
  EXPECT_EQ(_files.readUnlinked(path("file"), &origin), "bytes");
  EXPECT_FALSE(origin.hasOtherNames);
}

TEST_P(ChangingFileManagerContractTest, AListingHasThePrefixAndWhatIsNew) {
  _disk.makeFile("b1");
  _disk.makeFile("a");
  _disk.makeFile("gone");
  EXPECT_TRUE(_files.write(path("b2"), ""));
  EXPECT_TRUE(_files.remove(path("gone")));

  EXPECT_THAT(_files.list(_disk.path(), "b"), Optional(ElementsAre("b1", "b2")));
  EXPECT_THAT(_files.list(_disk.path(), ""), Optional(ElementsAre("a", "b1", "b2")));
}

// --- Writing -------------------------------------------------------------------------------------

TEST_P(ChangingFileManagerContractTest, WhatIsWrittenIsRead) {
  EXPECT_TRUE(_files.write(path("file"), "old"));
  EXPECT_TRUE(_files.write(path("file"), "new"));

  EXPECT_EQ(_files.read(path("file")), "new");
}

TEST_P(ChangingFileManagerContractTest, AWriteTakesOverTheModeOrForgetsIt) {
  _disk.makeFile("kept", "old", 0604);
  _disk.makeFile("forgotten", "old", 0604);
  _disk.makeFile("given", "old", 0604);

  EXPECT_TRUE(_files.write(path("kept"), "new"));
  EXPECT_TRUE(_files.write(path("forgotten"), "new", ReplacedFile::forget));
  EXPECT_TRUE(_files.write(path("given"), "new", ReplacedFile::forget, 0751));

  EXPECT_EQ(now("kept").mode, 0604u);
  EXPECT_EQ(now("forgotten").mode, 0644u);
  EXPECT_EQ(now("given").mode, 0751u);
  EXPECT_EQ(now("given").content, "new");
}

TEST_P(ChangingFileManagerContractTest, AWriteReplacesALinkAndNoFolder) {
  _disk.makeFile("file", "mine");
  _disk.makeLink("link", "file");
  _disk.makeFolder("folder");

  EXPECT_TRUE(_files.write(path("link"), "new"));
  EXPECT_FALSE(_files.write(path("folder"), "new", ReplacedFile::takeOver, {}, &_error));

  EXPECT_EQ(now("link").kind, "file");
  EXPECT_EQ(now("file").content, "mine");
  EXPECT_EQ(now("folder").kind, "folder");
  EXPECT_THAT(_error.description, HasSubstr("Is a directory"));
}

TEST_P(ChangingFileManagerContractTest, ANewNameOfAFileTakesNothingFromTheOther) {
  _disk.makeFile("one", "old");
  _disk.makeHardLink("other", "one");

  EXPECT_TRUE(_files.write(path("one"), "new"));

  EXPECT_EQ(now("one").content, "new");
  EXPECT_EQ(now("other").content, "old");
}

TEST_P(ChangingFileManagerContractTest, ACreatedFileHasItsAttributes) {
  _disk.makeFile("file", "old", 0600);
  _disk.makeFolder("folder");

  EXPECT_TRUE(_files.createFile(path("file"), "new", own(0777)));
  EXPECT_TRUE(_files.createFile(path("of nobody"), "", {"nobody knows", "nor this", 0640}));
  EXPECT_FALSE(_files.createFile(path("folder"), "new", own(0777)));

  EXPECT_EQ(now("file").mode, 0777u);
  EXPECT_EQ(now("file").content, "new");
  EXPECT_EQ(now("of nobody").mode, 0640u);
  EXPECT_EQ(now("of nobody").owner, ::geteuid());
}

TEST_P(ChangingFileManagerContractTest, ALogIsEmptyAndAFileOfItsOwn) {
  _disk.makeFile("ours", "a long line", 0600);
  _disk.makeFile("target", "mine");
  _disk.makeLink("link", "target");
  _disk.makeFolder("folder");

  for (const char* name : {"new", "ours", "link"}) {
    const int log = _files.openLog(path(name));
    EXPECT_NE(log, -1) << name;
    _files.closeLog(log);
  }
  EXPECT_EQ(_files.openLog(path("folder")), -1);

  EXPECT_EQ(now("new").mode, 0644u);
  EXPECT_EQ(now("ours").mode, 0600u);
  EXPECT_EQ(now("ours").content, "");
  EXPECT_EQ(now("link").kind, "file");
  EXPECT_EQ(now("target").content, "mine");
}

// --- Copies --------------------------------------------------------------------------------------

TEST_P(ChangingFileManagerContractTest, ACopyKeepsOrFailsOnWhatIsThere) {
  _disk.makeFile("from", "bytes");
  _disk.makeFile("there", "mine");
  _disk.makeLink("dangling", "nowhere");

  EXPECT_TRUE(copy(path("from"), "to"));
  EXPECT_TRUE(copy(path("from"), "there", ExistingItem::keep));
  EXPECT_TRUE(copy(path("from"), "dangling", ExistingItem::keep));
  EXPECT_FALSE(copy(path("from"), "there"));

  EXPECT_EQ(_files.read(path("to")), "bytes");
  EXPECT_EQ(_files.read(path("there")), "mine");
  EXPECT_EQ(now("dangling").kind, "link");
  EXPECT_EQ(_error.code, FileError::kExists);
}

TEST_P(ChangingFileManagerContractTest, ATreeIsCopiedWithModesAndLinks) {
  _disk.makeFile("tree/sub/file", "bytes", 04751);
  _disk.makeLink("tree/link", "sub/file");
  _disk.makeFolder("tree/empty", 0711);

  EXPECT_TRUE(copy(path("tree"), "copy"));

  EXPECT_THAT(names(), ElementsAre("copy", "copy/empty", "copy/link", "copy/sub", "copy/sub/file",
                                   "tree", "tree/empty", "tree/link", "tree/sub", "tree/sub/file"));
  EXPECT_EQ(now("copy/sub/file").mode, 0751u);
  EXPECT_EQ(now("copy/sub/file").content, "bytes");
  EXPECT_EQ(now("copy/empty").mode, 0711u);
  EXPECT_EQ(now("copy/link").content, "sub/file");
}

TEST_P(ChangingFileManagerContractTest, ACopyOfWhatWasChangedHasTheChanges) {
  _disk.makeFile("tree/old", "old");
  _disk.makeFile("tree/gone", "");
  EXPECT_TRUE(_files.write(path("tree/old"), "new"));
  EXPECT_TRUE(_files.remove(path("tree/gone")));

  EXPECT_TRUE(copy(path("tree"), "copy"));
  EXPECT_TRUE(_files.remove(path("tree")));

  EXPECT_THAT(names(), ElementsAre("copy", "copy/old"));
  EXPECT_EQ(_files.read(path("copy/old")), "new");
}

TEST_P(ChangingFileManagerContractTest, ACopyStopsAtWhatCannotBeCopied) {
  _disk.makePipe("tree/sub/pipe");

  EXPECT_FALSE(copy(path("tree"), "copy"));

  EXPECT_THAT(_error.description, HasSubstr("tree/sub/pipe\" cannot be copied"));
  EXPECT_THAT(names(), ElementsAre("copy", "copy/sub", "tree", "tree/sub", "tree/sub/pipe"));
}

TEST_P(ChangingFileManagerContractTest, AFolderIsNotCopiedIntoItself) {
  _disk.makeFile("tree/file");

  EXPECT_FALSE(copy(path("tree"), "tree/copy"));

  EXPECT_THAT(names(), ElementsAre("tree", "tree/file"));
}

TEST_P(ChangingFileManagerContractTest, WhatStandsThereGivesWay) {
  _disk.makeFile("from", "bytes");
  _disk.makeFile("folder/below");
  _disk.makeFile("file");
  _disk.makeFolder("tree");

  EXPECT_TRUE(copy(path("from"), "folder", ExistingItem::replace));
  EXPECT_TRUE(copy(path("tree"), "file", ExistingItem::replace));
  EXPECT_FALSE(copy(path("missing"), "tree", ExistingItem::replace));
  EXPECT_EQ(_error.code, FileError::kMissing);

  EXPECT_THAT(names(), ElementsAre("file", "folder", "from"));
  EXPECT_EQ(now("file").kind, "folder");
  EXPECT_EQ(now("folder").content, "bytes");
}

TEST_P(ChangingFileManagerContractTest, WhatIsToTakeItsOwnPlaceIsGone) {
  _disk.makeFile("file");
  _disk.makeFile("one", "bytes");
  _disk.makeHardLink("other", "one");

  EXPECT_FALSE(copy(path("file"), "file", ExistingItem::replace));
  EXPECT_TRUE(copy(path("one"), "other", ExistingItem::replace));

  EXPECT_THAT(names(), ElementsAre("one", "other"));
}

TEST_P(ChangingFileManagerContractTest, ContentIsTakenFromBesideOrWithinOnly) {
  _disk.makeFile("package/file", "bytes");
  _disk.makeFile("site/file", "other bytes");
  _disk.makeLink("package/beside", "file");
  _disk.makeLink("package/out", "../site/file");

  EXPECT_TRUE(copy({path("package/beside"), {}}, "a"));
  EXPECT_FALSE(copy({path("package/out"), {}}, "b"));
  EXPECT_TRUE(copy({path("package/out"), {path("site")}}, "c"));

  EXPECT_EQ(now("a").content, "bytes");
  EXPECT_EQ(now("c").content, "other bytes");
  EXPECT_TRUE(_files.hasContent({path("package/beside"), {}}));
  EXPECT_FALSE(_files.hasContent({path("package/out"), {}}));
  EXPECT_FALSE(_files.exists(path("b")));
}

TEST_P(ChangingFileManagerContractTest, AnItemOfSomebodyElseIsNotTaken) {
  _disk.makeFile("tree/file");
  CopySource source(path("tree"));
  source.mayOwn = [](uid_t owner) { return owner != ::geteuid(); };

  EXPECT_FALSE(copy(source, "copy"));

  EXPECT_THAT(_error.description, HasSubstr("belongs to another user"));
  EXPECT_THAT(names(), ElementsAre("tree", "tree/file"));
}

// --- Merges --------------------------------------------------------------------------------------

TEST_P(ChangingFileManagerContractTest, AMergeReplacesAddsAndKeeps) {
  _disk.makeFile("from/a/x", "new");
  _disk.makeFile("from/b", "new");
  _disk.makeFile("from/c/d", "new");
  _disk.makeFile("to/a/y", "kept");
  _disk.makeFile("to/b/below", "old");
  _disk.makeFile("to/c", "kept");

  _files.merge(path("from"), path("to"), _disk.path());

  EXPECT_EQ(now("to/a/x").content, "new");
  EXPECT_EQ(now("to/a/y").content, "kept");
  EXPECT_EQ(now("to/b").content, "new");
  EXPECT_EQ(now("to/c").content, "kept");
}

TEST_P(ChangingFileManagerContractTest, AMergeTakesAwayWhatItCannotReplace) {
  _disk.makePipe("from/pipe");
  _disk.makeFile("to/pipe", "old");

  _files.merge(path("from"), path("to"), _disk.path());

  EXPECT_FALSE(_files.exists(path("to/pipe")));
}

TEST_P(ChangingFileManagerContractTest, AMergeEntersLinksInsideItsBoundaryOnly) {
  _disk.makeFile("from/inside/file", "new");
  _disk.makeFile("from/outside/file", "new");
  _disk.makeFolder("bundle/real");
  _disk.makeFile("elsewhere/mine", "mine");
  _disk.makeLink("bundle/to/inside", "../real");
  _disk.makeLink("bundle/to/outside", "../../elsewhere");

  _files.merge(path("from"), path("bundle/to"), path("bundle"));

  EXPECT_EQ(now("bundle/real/file").content, "new");
  EXPECT_EQ(now("bundle/to/outside").kind, "folder");
  EXPECT_EQ(now("bundle/to/outside/file").content, "new");
  EXPECT_FALSE(_files.exists(path("elsewhere/file")));
}

TEST_P(ChangingFileManagerContractTest, AFolderBehindALinkIsMergedButCopiedAsALink) {
  _disk.makeFile("other/file", "new");
  _disk.makeLink("from/there", "../other");
  _disk.makeLink("from/missing", "../other");
  _disk.makeFolder("to/there");

  _files.merge(path("from"), path("to"), _disk.path());

  EXPECT_EQ(now("to/there/file").content, "new");
  EXPECT_EQ(now("to/missing").kind, "link");
}

TEST_P(ChangingFileManagerContractTest, AMergeDoesNotReachIntoItsSource) {
  _disk.makeFile("from/sub/file", "mine");
  _disk.makeLink("to/sub", "../from");

  _files.merge(path("from"), path("to"), _disk.path());

  EXPECT_EQ(now("to/sub").kind, "folder");
  EXPECT_FALSE(_files.exists(path("from/file")));
}

// By the other held folder's way the package leads out of it.
TEST_P(ChangingFileManagerContractTest, AHeldFolderIsMergedWhereTheWayToItIsBarred) {
  _disk.makeFile("elsewhere/package/file");
  _disk.makeFile("elsewhere/deploy/file", "new");
  _disk.makeLink("packages/package", "../elsewhere/package");
  _disk.makeFolder("to");
  const std::string deploy = path("packages/package/../deploy");
  const auto inner = _files.hold(deploy, std::nullopt);
  const auto outer = _files.hold(path("packages"), std::nullopt);

  _files.merge(deploy, path("to"), _disk.path());
  _files.merge(deploy, path("missing"), _disk.path());

  EXPECT_EQ(now("to/file").content, "new");
  EXPECT_FALSE(_files.exists(path("missing")));
}

TEST_P(ChangingFileManagerContractTest, OfAHeldFolderThatIsGoneNothingIsMerged) {
  _disk.makeFile("from/file");
  _disk.makeFile("to/kept");
  const auto held = _files.hold(path("from"), std::nullopt);
  EXPECT_TRUE(_files.remove(path("from")));

  _files.merge(path("from"), path("to"), _disk.path());
  _files.merge(path("from"), path("missing"), _disk.path());

  EXPECT_THAT(names(), ElementsAre("to", "to/kept"));
}

// --- Removals ------------------------------------------------------------------------------------

TEST_P(ChangingFileManagerContractTest, WhatIsRemovedIsGone) {
  _disk.makeFile("file");
  _disk.makeFile("tree/sub/file");
  _disk.makeFile("kept/file");
  _disk.makeLink("tree/link", "../kept");

  EXPECT_TRUE(_files.remove(path("file")));
  EXPECT_TRUE(_files.remove(path("tree")));

  EXPECT_THAT(names(), ElementsAre("kept", "kept/file"));
  EXPECT_FALSE(_files.remove(path("file"), &_error));
  EXPECT_EQ(_error.code, FileError::kMissing);
  EXPECT_FALSE(_files.remove(path("kept/..")));
}

TEST_P(ChangingFileManagerContractTest, WhatComesAgainWhereATreeWasIsNew) {
  _disk.makeFile("tree/old");
  EXPECT_TRUE(_files.remove(path("tree")));

  EXPECT_TRUE(_files.createDirectory(path("tree"), Intermediates::refuse));

  EXPECT_THAT(_files.list(path("tree"), ""), Optional(IsEmpty()));
}

TEST_P(ChangingFileManagerContractTest, LeftOversGoWithinOrBelow) {
  for (const char* name : {".hotfix-1", "sub/.hotfix-2", ".hotfix-x", ".hotfix-01", "own"})
    _disk.makeFile(name);
  _disk.makeFile(".hotfix-3/below");
  _disk.makeLink(".hotfix-4", "own");

  _files.removeLeftOvers(_disk.path(), LeftOvers::within);
  EXPECT_THAT(names(),
              ElementsAre(".hotfix-01", ".hotfix-4", ".hotfix-x", "own", "sub", "sub/.hotfix-2"));

  _files.removeLeftOvers(_disk.path(), LeftOvers::below);
  EXPECT_THAT(names(), ElementsAre(".hotfix-01", ".hotfix-x", "own", "sub"));
}

// --- Folders -------------------------------------------------------------------------------------

TEST_P(ChangingFileManagerContractTest, MadeFoldersAreThere) {
  EXPECT_TRUE(_files.createDirectory(path("a/b"), Intermediates::create));
  EXPECT_TRUE(_files.createDirectory(path("a/b"), Intermediates::create));
  EXPECT_FALSE(_files.createDirectory(path("a/b"), Intermediates::refuse, {}, &_error));

  EXPECT_TRUE(_files.isDirectory(path("a/b")));
  EXPECT_EQ(now("a").mode, 0755u);
  EXPECT_EQ(_error.code, FileError::kExists);
}

TEST_P(ChangingFileManagerContractTest, AFolderHasItsAttributesOrIsNotMade) {
  EXPECT_TRUE(_files.createDirectory(path("own"), Intermediates::refuse, own(0731)));
  EXPECT_FALSE(_files.createDirectory(path("none"), Intermediates::refuse,
                                      FileAttributes{"nobody knows", "own", 0775}));

  EXPECT_EQ(now("own").mode, 0731u);
  EXPECT_THAT(names(), ElementsAre("own"));
}

TEST_P(ChangingFileManagerContractTest, NoFolderIsMadeBelowAFile) {
  _disk.makeFile("file");

  EXPECT_FALSE(_files.createDirectory(path("file/a/b"), Intermediates::create));
  EXPECT_FALSE(_files.createDirectory(path("file"), Intermediates::create));
}

TEST_P(ChangingFileManagerContractTest, AFolderHandsItsGroupBitOn) {
  _disk.makeFolder("folder");
  ASSERT_EQ(::chmod(path("folder").c_str(), 02755), 0);

  EXPECT_TRUE(_files.createDirectory(path("folder/new"), Intermediates::refuse));

  struct stat made {};
  const std::string witness = path("folder/witness");
  ASSERT_EQ(::mkdir(witness.c_str(), 0755), 0);
  ASSERT_EQ(::lstat(witness.c_str(), &made), 0);
  EXPECT_EQ(now("folder/new").mode & S_ISGID, made.st_mode & S_ISGID);
}

TEST_P(ChangingFileManagerContractTest, FoldersAreFlushedAndLocked) {
  _disk.makeFile("file");

  EXPECT_TRUE(_files.flush(_disk.path()));
  EXPECT_FALSE(_files.flush(path("none")));
  EXPECT_FALSE(_files.flush(path("file")));
  EXPECT_NE(_files.tryLock(_disk.path()).hold, nullptr);
  EXPECT_EQ(_files.tryLock(path("none"), &_error).hold, nullptr);
  EXPECT_EQ(_error.code, FileError::kMissing);
}

// --- Attributes ----------------------------------------------------------------------------------

TEST_P(ChangingFileManagerContractTest, AttributesReachEverythingBelowAFolder) {
  _disk.makeFile("folder/sub/file", "", 0600);
  _disk.makeFile("elsewhere", "", 0600);
  _disk.makeLink("folder/link", "../elsewhere");
  ASSERT_EQ(::chmod(path("folder").c_str(), 0700), 0);

  EXPECT_TRUE(_files.changeAttributesBelow(path("folder"), own(0775)));

  EXPECT_EQ(now("folder").mode, 0700u);
  EXPECT_EQ(now("folder/sub").mode, 0775u);
  EXPECT_EQ(now("folder/sub/file").mode, 0775u);
  EXPECT_EQ(now("elsewhere").mode, 0600u);
}

TEST_P(ChangingFileManagerContractTest, ANewModeOfAFileIsOneOfAllItsNames) {
  _disk.makeFile("folder/file", "", 0600);
  EXPECT_TRUE(_files.write(path("folder/new"), ""));

  EXPECT_TRUE(_files.changeAttributesBelow(path("folder"), own(0775)));

  EXPECT_EQ(now("folder/file").mode, 0775u);
  EXPECT_EQ(now("folder/new").mode, 0775u);
}

TEST_P(ChangingFileManagerContractTest, AFileOfSomebodyElseWithOtherNamesIsLeftAlone) {
  _disk.makeFile("elsewhere", "", 0600);
  _disk.makeFolder("folder");
  _disk.makeHardLink("folder/file", "elsewhere");
  const FileAttributes strangers{.owner = "stranger", .group = "own", .mode = 0775};

  EXPECT_FALSE(_files.changeAttributesBelow(path("folder"), strangers));

  EXPECT_EQ(now("folder/file").mode, 0600u);
  EXPECT_EQ(now("elsewhere").owner, ::geteuid());
}

TEST_P(ChangingFileManagerContractTest, UnknownAccountsAreAFailureButModesAreGiven) {
  _disk.makeFile("folder/file", "", 0600);

  EXPECT_FALSE(_files.changeAttributesBelow(path("folder"), {"nobody knows", "nor this", 0775}));

  EXPECT_EQ(now("folder/file").mode, 0775u);
}

TEST_P(ChangingFileManagerContractTest, AFolderIsEnteredThroughAnOwnLinkOfOneName) {
  _disk.makeFile("folder/file", "", 0600);
  _disk.makeLink("link", "folder");
  _disk.makeLink("planted", "folder");
  _disk.makeHardLink("second name", "planted");

  EXPECT_TRUE(_files.mayEnter(path("folder")));
  EXPECT_TRUE(_files.mayEnter(path("link")));
  EXPECT_FALSE(_files.mayEnter(path("planted")));
  EXPECT_FALSE(_files.mayEnter(path("folder/file")));
  EXPECT_FALSE(_files.changeAttributesBelow(path("planted"), own(0775)));
  EXPECT_EQ(now("folder/file").mode, 0600u);
  EXPECT_TRUE(_files.changeAttributesBelow(path("link"), own(0775)));
  EXPECT_EQ(now("folder/file").mode, 0775u);
}

// --- Held folders --------------------------------------------------------------------------------

TEST_P(ChangingFileManagerContractTest, NothingBelowAHeldFolderLeadsElsewhere) {
  _disk.makeFile("elsewhere/file", "mine");
  _disk.makeFile("held/sub/file", "bytes");
  _disk.makeLink("held/out", "../elsewhere");
  _disk.makeLink("held/in", "sub");
  const auto hold = _files.hold(path("held"), std::nullopt);

  EXPECT_EQ(_files.read(path("held/in/file")), "bytes");
  EXPECT_EQ(_files.read(path("held/out/file"), &_error), std::nullopt);
  EXPECT_EQ(_error.code, FileError::kOther);
  EXPECT_FALSE(_files.write(path("held/out/file"), "new"));
  EXPECT_FALSE(_files.remove(path("held/out/file")));
  EXPECT_TRUE(_files.write(path("held/in/new"), "new"));

  EXPECT_EQ(now("elsewhere/file").content, "mine");
  EXPECT_EQ(now("held/sub/new").content, "new");
}

TEST_P(ChangingFileManagerContractTest, AFolderThatIsHeldBeforeItIsThereIsHeldThen) {
  const auto hold = _files.hold(path("held"), std::nullopt);
  EXPECT_FALSE(_files.exists(path("held/file")));

  EXPECT_TRUE(_files.createDirectory(path("held"), Intermediates::refuse));

  EXPECT_TRUE(_files.write(path("held/file"), "bytes"));
  EXPECT_EQ(_files.read(path("held/file")), "bytes");
}

TEST_P(ChangingFileManagerContractTest, ADotAtTheEndOfAHeldFolderIsNoOtherFolder) {
  _disk.makeFolder("folder");
  _disk.makeLink("link", "folder");
  const auto missing = _files.hold(path("held/./"), std::nullopt);
  const auto linked = _files.hold(path("link/."), std::nullopt);
  EXPECT_FALSE(_files.exists(path("held/file")));

  EXPECT_TRUE(_files.createDirectory(path("held"), Intermediates::refuse));

  EXPECT_TRUE(_files.write(path("held/./file"), "bytes"));
  EXPECT_EQ(_files.read(path("held/file")), "bytes");
  EXPECT_TRUE(_files.write(path("link/file"), "bytes"));
  EXPECT_EQ(_files.read(path("folder/file")), "bytes");
}

TEST_P(ChangingFileManagerContractTest, AHeldFolderStaysTheSameWhateverItsName) {
  _disk.makeFile("held/file", "bytes");
  const auto hold = _files.hold(path("held"), std::nullopt);

  EXPECT_TRUE(_files.remove(path("held")));
  EXPECT_TRUE(_files.createDirectory(path("held"), Intermediates::refuse));

  EXPECT_FALSE(_files.write(path("held/file"), "new"));
  EXPECT_THAT(names(), ElementsAre("held"));
}

TEST_P(ChangingFileManagerContractTest, AFileOfSomebodyElseWithOtherNamesIsNotReadForItsNewOwner) {
  _disk.makeFile("elsewhere", "secret");
  _disk.makeFolder("held");
  _disk.makeHardLink("held/file", "elsewhere");
  const auto hold = _files.hold(path("held"), "stranger");

  EXPECT_EQ(_files.read(path("held/file"), &_error), std::nullopt);
  EXPECT_FALSE(copy(path("held/file"), "copy"));

  EXPECT_FALSE(_files.exists(path("copy")));
  EXPECT_EQ(_files.read(path("elsewhere")), "secret");
}

TEST_P(ChangingFileManagerContractTest, TheRootCannotBeHeld) {
  EXPECT_EQ(_files.hold("/", std::nullopt), nullptr);
  EXPECT_EQ(_files.hold("", std::nullopt), nullptr);
}

}  // namespace
}  // namespace installer::test
