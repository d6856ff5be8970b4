#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <string>

#include "support/ChildRun.h"
#include "support/Proves.h"
#include "unit/platform/files/FileManagerFixture.h"

namespace installer::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class FileManagerMergeTest : public FileManagerFixture {
 protected:
  // The destination is below the folder "app", which is the boundary.
  void merge() { _files.merge(path("from"), path("app/to"), path("app")); }

  long countOf(FileOperation operation) const {
    return std::count(_files.operations().begin(), _files.operations().end(), operation);
  }
};

TEST_F(FileManagerMergeTest, FilesAreReplacedFoldersAreMergedAndTheRestStays) {
  proves("FILES-10");
  _folder.makeFile("from/a/x", "new x", 0640);
  _folder.makeFile("from/b", "new b", 0751);
  _folder.makeFile("app/to/a/y", "old y");
  _folder.makeFile("app/to/b", "old b", 0600);
  _folder.makeFolder("app/to/a", 0700);

  merge();

  EXPECT_THAT(pathsIn(snapshot("app/to")), ElementsAre("a", "a/x", "a/y", "b"));
  EXPECT_EQ(_folder.content("app/to/a/x"), "new x");
  EXPECT_EQ(modeOf("app/to/a/x"), 0640u);
  EXPECT_EQ(_folder.content("app/to/a/y"), "old y");
  EXPECT_EQ(_folder.content("app/to/b"), "new b");
  EXPECT_EQ(modeOf("app/to/b"), 0751u) << "nothing is taken over";
  EXPECT_EQ(modeOf("app/to/a"), 0700u) << "an existing folder keeps its attributes";
}

TEST_F(FileManagerMergeTest, AMissingFolderIsCopiedWhole) {
  _folder.makeFile("from/new/deep/file", "x", 0600);
  _folder.makeLink("from/new/link", "deep");
  _folder.makeFolder("from/new", 0711);
  _folder.makeFolder("app/to");

  merge();

  EXPECT_THAT(TreeDiff(snapshot("from/new"), snapshot("app/to/new")).lines(), IsEmpty());
}

TEST_F(FileManagerMergeTest, ALinkReplacesAFileAndAFileReplacesALink) {
  _folder.makeLink("from/becomesLink", "somewhere");
  _folder.makeFile("from/becomesFile", "new");
  _folder.makeFile("app/to/becomesLink", "old");
  _folder.makeFile("app/target", "old");
  _folder.makeLink("app/to/becomesFile", "../target");

  merge();

  EXPECT_EQ(snapshot("app/to")["becomesLink"].content, "somewhere");
  EXPECT_EQ(snapshot("app/to")["becomesFile"].kind, "file");
  EXPECT_EQ(_folder.content("app/to/becomesFile"), "new");
  EXPECT_EQ(_folder.content("app/target"), "old");
}

TEST_F(FileManagerMergeTest, AFileReplacesAFolderWithAllBelowIt) {
  proves("FILES-10");
  _folder.makeFile("from/name", "file");
  _folder.makeLink("from/link", "somewhere");
  _folder.makeFile("app/to/name/deep/file", "old");
  _folder.makeFile("app/to/link/file", "old");

  merge();

  EXPECT_EQ(_folder.content("app/to/name"), "file");
  EXPECT_EQ(snapshot("app/to")["link"].content, "somewhere");
}

TEST_F(FileManagerMergeTest, AFileInTheWayOfAFolderStays) {
  proves("FILES-10");
  _folder.makeFile("from/name/file", "new");
  _folder.makeFile("from/link/file", "new");
  _folder.makeFile("from/pipe/file", "new");
  _folder.makeFile("app/to/name", "old");
  _folder.makeLink("app/to/link", "name");
  _folder.makePipe("app/to/pipe");
  const auto before = snapshot("app");

  merge();

  EXPECT_THAT(TreeDiff(before, snapshot("app")).lines(), IsEmpty());
}

TEST_F(FileManagerMergeTest, ADanglingLinkInTheWayOfAFolderStays) {
  _folder.makeFile("from/name/file", "new");
  _folder.makeLink("app/to/name", "nowhere");
  const auto before = snapshot("app");

  merge();

  EXPECT_THAT(TreeDiff(before, snapshot("app")).lines(), IsEmpty());
}

TEST_F(FileManagerMergeTest, ASourceLinkToAFolderIsMergedIntoAnExistingFolder) {
  proves("FILES-11");
  _folder.makeFile("elsewhere/file", "new");
  _folder.makeLink("from/name", "../elsewhere");
  _folder.makeFile("app/to/name/old", "old");

  merge();

  EXPECT_EQ(snapshot("app/to")["name"].kind, "folder");
  EXPECT_THAT(pathsIn(snapshot("app/to/name")), ElementsAre("file", "old"));
}

TEST_F(FileManagerMergeTest, ASourceLinkToAFolderIsCopiedAsALinkWhereThereIsNone) {
  proves("FILES-11");
  _folder.makeFile("elsewhere/file", "new");
  _folder.makeLink("from/name", "../elsewhere");
  _folder.makeFolder("app/to");

  merge();

  EXPECT_EQ(snapshot("app/to")["name"].kind, "link");
  EXPECT_EQ(snapshot("app/to")["name"].content, "../elsewhere");
}

TEST_F(FileManagerMergeTest, ASourceLinkToAFileOrToNothingReplacesAsALink) {
  _folder.makeFile("file", "x");
  _folder.makeLink("from/link", "../file");
  _folder.makeLink("from/dangling", "nowhere");
  _folder.makeFile("app/to/link", "old");
  _folder.makeFile("app/to/dangling/old", "old");

  merge();

  EXPECT_EQ(snapshot("app/to")["link"].content, "../file");
  EXPECT_EQ(snapshot("app/to")["dangling"].content, "nowhere");
}

TEST_F(FileManagerMergeTest, WhatCannotBeCopiedStillLosesItsOldEntry) {
  proves("FILES-10");
  _folder.makePipe("from/pipe");
  _folder.makeSocket("from/socket");
  _folder.makePipe("from/none");
  _folder.makeFile("from/z", "new");
  _folder.makeFile("app/to/pipe", "old");
  _folder.makeFile("app/to/socket/deep/file", "old");
  _folder.makeFile("app/to/z", "old");

  merge();

  EXPECT_THAT(pathsIn(snapshot("app/to")), ElementsAre("z"));
  EXPECT_EQ(_folder.content("app/to/z"), "new");
}

TEST_F(FileManagerMergeTest, AFolderThatCanBeCopiedInPartOnlyGetsItsName) {
  _folder.makePipe("from/new/pipe");
  _folder.makeFolder("from/new", 0751);
  _folder.makeFolder("app/to");

  merge();

  EXPECT_THAT(pathsIn(snapshot("app/to")), ElementsAre("new"));
  EXPECT_EQ(modeOf("app/to/new"), 0751u);
}

TEST_F(FileManagerMergeTest, ALinkInsideTheBoundaryIsEntered) {
  proves("FILES-12");
  _folder.makeFile("from/name/file", "new");
  _folder.makeFolder("app/to");
  _folder.makeFile("app/real/old", "old");
  _folder.makeLink("app/to/name", "../real");

  merge();

  EXPECT_EQ(snapshot("app/to")["name"].kind, "link");
  EXPECT_THAT(pathsIn(snapshot("app/real")), ElementsAre("file", "old"));
}

TEST_F(FileManagerMergeTest, ALinkToTheBoundaryItselfIsEntered) {
  _folder.makeFile("from/name/file", "new");
  _folder.makeFolder("app/to");
  _folder.makeLink("app/to/name", "..");

  merge();

  EXPECT_EQ(_folder.content("app/file"), "new");
}

TEST_F(FileManagerMergeTest, TheBoundaryMayBeNamedThroughALink) {
  _folder.makeFile("from/name/file", "new");
  _folder.makeFolder("app/to");
  _folder.makeFolder("app/real");
  _folder.makeLink("app/to/name", "../real");
  _folder.makeLink("alias", "app");

  _files.merge(path("from/"), path("app/to/"), path("alias/"));

  EXPECT_EQ(_folder.content("app/real/file"), "new");
}

TEST_F(FileManagerMergeTest, ALinkOutOfTheBoundaryIsReplacedByTheWholeFolder) {
  proves("FILES-12");
  _folder.makeFile("from/name/file", "new");
  _folder.makeFolder("from/name", 0750);
  _folder.makeFolder("app/to");
  _folder.makeFile("outside/file", "old");
  _folder.makeFile("outside/other", "old");
  _folder.makeLink("app/to/name", "../../outside");
  const auto before = snapshot("outside");

  merge();

  EXPECT_THAT(TreeDiff(before, snapshot("outside")).lines(), IsEmpty());
  EXPECT_THAT(TreeDiff(snapshot("from/name"), snapshot("app/to/name")).lines(), IsEmpty());
}

TEST_F(FileManagerMergeTest, WithoutABoundaryEveryLinkIsReplaced) {
  for (const std::string& boundary : {std::string(), path("missing")}) {
    removeTree(path("from"));
    removeTree(path("app"));
    _folder.makeFile("from/name/file", "new");
    _folder.makeFolder("app/to");
    _folder.makeFile("app/real/old", "old");
    _folder.makeLink("app/to/name", "../real");

    _files.merge(path("from"), path("app/to"), boundary);

    EXPECT_EQ(snapshot("app/to")["name"].kind, "folder") << boundary;
    EXPECT_THAT(pathsIn(snapshot("app/real")), ElementsAre("old")) << boundary;
  }
}

TEST_F(FileManagerMergeTest, ALinkDeepInAnEnteredFolderIsJudgedToo) {
  proves("FILES-12");
  _folder.makeFile("from/a/b/file", "new");
  _folder.makeFolder("app/to/a");
  _folder.makeFolder("outside");
  _folder.makeLink("app/to/a/b", path("outside"));

  merge();

  EXPECT_THAT(pathsIn(snapshot("outside")), IsEmpty());
  EXPECT_EQ(_folder.content("app/to/a/b/file"), "new");
}

TEST_F(FileManagerMergeTest, ADestinationThatIsALinkOutOfTheBoundaryIsReplaced) {
  _folder.makeFile("from/file", "new");
  _folder.makeFolder("app");
  _folder.makeFile("outside/old", "old");
  _folder.makeLink("app/to", "../outside");

  merge();

  EXPECT_THAT(pathsIn(snapshot("outside")), ElementsAre("old"));
  EXPECT_THAT(TreeDiff(snapshot("from"), snapshot("app/to")).lines(), IsEmpty());
}

TEST_F(FileManagerMergeTest, ADestinationThatIsALinkInsideTheBoundaryIsEntered) {
  _folder.makeFile("from/file", "new");
  _folder.makeFile("app/real/old", "old");
  _folder.makeLink("app/to", "real");

  merge();

  EXPECT_THAT(pathsIn(snapshot("app/real")), ElementsAre("file", "old"));
}

TEST_F(FileManagerMergeTest, ALinkIntoTheSourceIsReplaced) {
  _folder.makeFile("app/from/name/file", "new");
  _folder.makeFile("app/from/other/file", "other");
  _folder.makeFolder("app/to");
  _folder.makeLink("app/to/name", "../from/name");
  _folder.makeLink("app/to/other", "../from");
  const auto before = snapshot("app/from");

  _files.merge(path("app/from"), path("app/to"), path("app"));

  EXPECT_THAT(TreeDiff(before, snapshot("app/from")).lines(), IsEmpty());
  EXPECT_THAT(TreeDiff(before, snapshot("app/to")).lines(), IsEmpty());
}

TEST_F(FileManagerMergeTest, ALinkToTheVeryFolderThatASourceLinkNamesIsReplacedByThatLink) {
  _folder.makeFile("app/shared/file", "x");
  _folder.makeLink("from/name", path("app/shared"));
  _folder.makeFolder("app/to");
  _folder.makeLink("app/to/name", "../shared");

  merge();

  EXPECT_EQ(_folder.content("app/shared/file"), "x") << "not removed to be copied onto itself";
  EXPECT_EQ(snapshot("app/to")["name"].content, path("app/shared"));
}

TEST_F(FileManagerMergeTest, AFolderIsNotMergedIntoItselfOrBelowItself) {
  proves("FILES-11");
  _folder.makeFile("from/file", "x");
  _folder.makeFile("from/folder/file", "y");
  _folder.makeFile("from/folder/folder/file", "z");
  const auto before = snapshot();

  _files.merge(path("from"), path("from"), path(""));
  _files.merge(path("from"), path("from/folder"), path(""));
  _files.merge(path("from"), path("from/folder/folder"), path(""));

  EXPECT_THAT(TreeDiff(before, snapshot()).lines(), IsEmpty());
}

TEST_F(FileManagerMergeTest, ASourceLinkToTheDestinationIsNotMergedIntoItself) {
  _folder.makeFile("app/to/name/file", "x");
  _folder.makeLink("from/name", path("app/to/name"));
  const auto before = snapshot("app");

  merge();

  EXPECT_THAT(TreeDiff(before, snapshot("app")).lines(), IsEmpty());
}

TEST_F(FileManagerMergeTest, ASourceInsideTheDestinationIsLeftAlone) {
  proves("FILES-11");
  _folder.makeFile("app/to/from/from/file", "x");
  _folder.makeFile("app/to/from/new", "new");
  const auto before = snapshot("app/to/from");

  _files.merge(path("app/to/from"), path("app/to"), path("app"));

  EXPECT_THAT(TreeDiff(before, snapshot("app/to/from")).lines(), IsEmpty());
  EXPECT_EQ(_folder.content("app/to/new"), "new");
}

TEST_F(FileManagerMergeTest, ALoopOfSourceLinksEnds) {
  proves("FILES-11");
  _folder.makeFile("from/a/file", "x");
  _folder.makeLink("from/a/again", "..");
  _folder.makeFolder("app/to/a/again/a/again");

  merge();

  EXPECT_EQ(_folder.content("app/to/a/file"), "x");
  EXPECT_THAT(pathsIn(snapshot("app/to/a/again")), ElementsAre("a", "a/again"));
}

TEST_F(FileManagerMergeTest, AFolderIsEnteredOnce) {
  _folder.makeFile("elsewhere/file", "x");
  _folder.makeLink("from/a", "../elsewhere");
  _folder.makeLink("from/b", "../elsewhere");
  _folder.makeFolder("app/to/a");
  _folder.makeFolder("app/to/b");

  merge();

  EXPECT_NE(isThere("app/to/a/file"), isThere("app/to/b/file"));
}

TEST_F(FileManagerMergeTest, TwoNamesOfOneDestinationFolderAreMergedOneAfterTheOther) {
  _folder.makeFile("from/a/new/one", "1");
  _folder.makeFile("from/b/new/two", "2");
  _folder.makeFolder("app/to/b");
  _folder.makeLink("app/to/a", "b");

  merge();

  EXPECT_THAT(pathsIn(snapshot("app/to/b")), ElementsAre("new", "new/one", "new/two"));
}

TEST_F(FileManagerMergeTest, AFolderMadeMeanwhileIsKept) {
  _folder.makeFile("from/new/file", "x");
  _folder.makeFolder("app/to");
  _files.beforeNext(FileOperation::kRename, [this] { _folder.makeFile("app/to/new", "quicker"); });

  merge();

  EXPECT_EQ(_folder.content("app/to/new"), "quicker");
  EXPECT_THAT(pathsIn(snapshot("app/to")), ElementsAre("new"));
}

TEST_F(FileManagerMergeTest, OneFlushBeforeTheNamesAndOneAfterThemServeManyFiles) {
  proves("FILES-25");
  for (int number = 0; number < 50; ++number) {
    _folder.makeFile("from/" + std::to_string(number % 5) + "/" + std::to_string(number), "x");
  }
  for (int number = 0; number < 4; ++number) _folder.makeFolder("app/to/" + std::to_string(number));

  merge();

  EXPECT_EQ(countOf(FileOperation::kSync), 2);
  const auto& all = _files.operations();
  EXPECT_EQ(all.back(), FileOperation::kSync) << "else names are lost with the power";
  const auto flush = std::find(all.begin(), all.end(), FileOperation::kSync);
  EXPECT_EQ(std::count(all.begin(), flush, FileOperation::kRename), 0);
  EXPECT_EQ(std::count(flush, all.end(), FileOperation::kRename), 41);
  EXPECT_EQ(std::count(flush, all.end(), FileOperation::kWrite), 0);
}

TEST_F(FileManagerMergeTest, NothingToDoFlushesNothing) {
  _folder.makeFolder("from/a");
  _folder.makeFolder("app/to/a");

  merge();

  EXPECT_THAT(_files.operations(), IsEmpty());
}

TEST_F(FileManagerMergeTest, ABatchHoldsABoundedNumberOfNames) {
  for (int number = 0; number < 4097; ++number) {
    _folder.makeLink("from/" + std::to_string(number), "x");
  }
  _folder.makeFolder("app/to");

  merge();

  EXPECT_EQ(pathsIn(snapshot("app/to")).size(), 4097u);
  EXPECT_EQ(countOf(FileOperation::kSync), 3);
}

TEST_F(FileManagerMergeTest, ABatchOfTheLargestSizeIsOneBatch) {
  for (int number = 0; number < 4096; ++number) {
    _folder.makeLink("from/" + std::to_string(number), "x");
  }
  _folder.makeFolder("app/to");

  merge();

  EXPECT_EQ(countOf(FileOperation::kSync), 2);
}

TEST_F(FileManagerMergeTest, EveryFileSystemIsFlushedOnceAfterItsNames) {
  const TemporaryFolder other;
  other.makeFolder("elsewhere");
  _folder.makeFile("from/a/file", "x");
  _folder.makeFile("from/b/file", "x");
  _folder.makeFolder("app/to/a");
  _folder.makeLink("app/to/b", other.path("elsewhere"));
  struct stat status {};
  ASSERT_EQ(::stat(other.path().c_str(), &status), 0);
  if (status.st_dev == statusOf("app").st_dev) GTEST_SKIP() << "there is only one file system";

  _files.merge(path("from"), path("app/to"), "/");

  const auto& all = _files.operations();
  EXPECT_EQ(other.content("elsewhere/file"), "x");
  EXPECT_EQ(std::find(all.rbegin(), all.rend(), FileOperation::kRename) - all.rbegin(), 2);
  EXPECT_EQ(countOf(FileOperation::kSync), 4);
}

class FileManagerMergeBatchTest : public FileManagerMergeTest {
 protected:
  // The batches of a merge over so many folders when the process may have so many descriptors; -1
  // when something is missing afterwards. Each has a flush, and one more comes after the last.
  long batches(int folders, rlim_t descriptors) {
    for (int number = 0; number < folders; ++number) {
      _folder.makeFile("from/" + std::to_string(number) + "/file", "x");
      _folder.makeFolder("app/to/" + std::to_string(number));
    }
    long count = -1;
    rlimit old{};
    EXPECT_EQ(::getrlimit(RLIMIT_NOFILE, &old), 0);
    const rlimit limit{descriptors, old.rlim_max};
    EXPECT_EQ(::setrlimit(RLIMIT_NOFILE, &limit), 0);
    merge();
    EXPECT_EQ(::setrlimit(RLIMIT_NOFILE, &old), 0);
    count = countOf(FileOperation::kSync) - 1;
    for (int number = 0; number < folders; ++number) {
      if (!isThere("app/to/" + std::to_string(number) + "/file")) return -1;
    }
    return count;
  }
};

TEST_F(FileManagerMergeBatchTest, ABatchHoldsAThirdOfTheDescriptors) {
  EXPECT_EQ(batches(30, 90), 1);
}

TEST_F(FileManagerMergeBatchTest, OneFolderMoreIsASecondBatch) {
  EXPECT_EQ(batches(31, 90), 2);
}

TEST_F(FileManagerMergeBatchTest, FewDescriptorsStillMakeBatchesOfEight) {
  EXPECT_EQ(batches(9, 22), 2);
}

TEST_F(FileManagerMergeBatchTest, ManyDescriptorsMakeNoBatchOverFourHundredFolders) {
  rlimit limit{};
  ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &limit), 0);
  if (limit.rlim_max < 3000) GTEST_SKIP() << "the system allows too few descriptors";

  EXPECT_EQ(batches(401, 3000), 2);
}

TEST_F(FileManagerMergeTest, WhateverFailsEveryFileIsOldOrNewOrGone) {
  proves("FILES-1");
  const auto prepare = [this] {
    removeTree(path("from"));
    removeTree(path("app"));
    _folder.makeFile("from/a/replaced", "new");
    _folder.makeFile("from/a/added", "new");
    _folder.makeFile("from/whole/file", "new");
    _folder.makeFile("from/wasFolder", "new");
    _folder.makeLink("from/link", "new");
    _folder.makeFile("app/to/a/replaced", "old");
    _folder.makeFile("app/to/a/kept", "kept");
    _folder.makeFile("app/to/wasFolder/file", "old");
    _folder.makeFile("app/to/link", "old");
  };

  std::size_t failures = 0;
  for (std::size_t number = 1;; ++number) {
    prepare();
    FailingFileManager files(_users);
    files.failAt(number, EIO);
    files.merge(path("from"), path("app/to"), path("app"));
    if (!files.hasFailed()) break;
    ++failures;
    for (const auto& [name, entry] : snapshot("app/to")) {
      EXPECT_EQ(name.find(".hotfix-"), std::string::npos) << number << " " << name;
      if (entry.kind == "folder") continue;
      EXPECT_THAT(entry.content, ::testing::AnyOf("old", "new", "kept")) << number << " " << name;
    }
    EXPECT_EQ(_folder.content("app/to/a/kept"), "kept") << number;
  }

  EXPECT_GT(failures, 20u);
}

TEST_F(FileManagerMergeTest, WhateverFailsAtTheCopyTheOldFileIsGone) {
  const CreationMask mask(077);  // so that the mode is a change of its own
  _folder.makeFile("from/name", "new");
  using enum FileOperation;

  for (const FileOperation operation : {kCreateTemporary, kWrite, kChangeMode, kRename}) {
    removeTree(path("app"));
    _folder.makeFile("app/to/name", "old");
    _files.failNext(operation, EIO);

    merge();

    EXPECT_THAT(pathsIn(snapshot("app/to")), IsEmpty()) << static_cast<int>(operation);
  }
}

TEST_F(FileManagerMergeTest, AFailedFlushIsPassedOver) {
  _folder.makeFile("from/name", "new");
  _folder.makeFile("app/to/name", "old");
  _files.failAlways(FileOperation::kSync, EIO);

  merge();

  EXPECT_EQ(_folder.content("app/to/name"), "new");
}

TEST_F(FileManagerMergeTest, AReplacedFileIsNeverMissing) {
  proves("FILES-1");
  _folder.makeFile("from/name", "new");
  _folder.makeFile("app/to/name", "old");
  bool there = false;
  _files.beforeNext(FileOperation::kRename, [&] { there = isThere("app/to/name"); });

  merge();

  EXPECT_TRUE(there);
  EXPECT_EQ(countOf(FileOperation::kUnlink), 0);
}

TEST_F(FileManagerMergeTest, WhatIsNoFolderIsNotMerged) {
  _folder.makeFile("file", "x");
  _folder.makeFile("from/file", "x");
  _folder.makeFile("app/to", "old");
  const auto before = snapshot();

  merge();
  _files.merge(path("file"), path("app"), path("app"));
  _files.merge(path("file"), path("app/none"), path("app"));
  _files.merge(path("missing"), path("app"), path("app"));
  _files.merge("", path("app"), path("app"));
  _files.merge(path("from") + std::string("\0x", 2), path("app"), path("app"));
  _files.merge(path("from"), "", path("app"));
  _files.merge(path("from"), path("missing/to"), path("app"));

  EXPECT_THAT(TreeDiff(before, snapshot()).lines(), IsEmpty());
}

TEST_F(FileManagerMergeTest, TheSourceMayBeNamedThroughALink) {
  _folder.makeFile("real/file", "x");
  _folder.makeLink("from", "real");
  _folder.makeFolder("app/to");

  merge();

  EXPECT_EQ(_folder.content("app/to/file"), "x");
}

TEST_F(FileManagerMergeTest, NamesThatAreNoTextAreMerged) {
  _folder.makeFile("from/\xff\xfe/\n", "x");
  _folder.makeFolder("app/to/\xff\xfe");

  merge();

  EXPECT_EQ(_folder.content("app/to/\xff\xfe/\n"), "x");
}

TEST_F(FileManagerMergeTest, AnUnreadableSourceFolderAddsNothingForAnOrdinaryUser) {
  giveToOrdinaryUser(_folder.makeFolder("app/to"));
  giveToOrdinaryUser(_folder.makeFolder("app/to/barred"));
  giveToOrdinaryUser(_folder.makeFile("app/to/file", "old"));
  giveToOrdinaryUser(_folder.makeFolder("from/barred", 0));
  giveToOrdinaryUser(_folder.makeFolder("from/barredToo", 0));
  giveToOrdinaryUser(_folder.makeFile("from/file", "new", 0));
  _folder.makeLink("from/link", "barred");

  EXPECT_TRUE(asOrdinaryUser([&] {
    merge();
    return true;
  }));

  EXPECT_THAT(pathsIn(snapshot("app/to")), ElementsAre("barred", "link"));
}

}  // namespace
}  // namespace installer::test
