#include <csignal>

#include "platform/Interruption.h"
#include "support/ChildRun.h"
#include "support/Proves.h"
#include "unit/platform/files/FileManagerFixture.h"

namespace installer::test {
namespace {

using ::testing::ElementsAre;

// A signal that asks the process to end comes while the file manager is at work.
class FileManagerInterruptionTest : public FileManagerFixture {
 protected:
  // Whether the work is left by Interrupted, the signal coming just before the next change of that
  // kind. Done in a process of its own, which the signal stays with.
  template <class Work>
  bool isLeft(FileOperation operation, Work work) {
    return inChild([&] {
      noteInterruptions();
      _files.beforeNext(operation, [] { raise(SIGTERM); });
      try {
        work();
        return false;
      } catch (const Interrupted&) {
        return true;
      }
    });
  }
};

TEST_F(FileManagerInterruptionTest, MergeEndsAtTheNextEntryWithoutTemporaryFiles) {
  proves("SIGNAL-3");
  _folder.makeFile("from/a", "new");
  _folder.makeFile("from/b", "new");
  _folder.makeFile("from/sub/c", "new");
  _folder.makeFile("to/a", "old");

  EXPECT_TRUE(isLeft(FileOperation::kCreateTemporary,
                     [&] { _files.merge(path("from"), path("to"), path("")); }));

  EXPECT_EQ(_folder.content("to/a"), "old");
  EXPECT_FALSE(isThere("to/b"));
  EXPECT_FALSE(isThere("to/sub"));
}

TEST_F(FileManagerInterruptionTest, CopyOfATreeLeavesNothing) {
  proves("SIGNAL-3");
  _folder.makeFile("from/a/file");
  _folder.makeFile("from/b/file");

  EXPECT_TRUE(isLeft(FileOperation::kCreateTemporary,
                     [&] { (void)_files.copy(path("from"), path("to"), ExistingItem::fail); }));

  EXPECT_FALSE(isThere("to"));
}

TEST_F(FileManagerInterruptionTest, NoLinkIsCopiedAnyMore) {
  _folder.makeFile("from/a");
  _folder.makeLink("from/b", "nowhere");
  _folder.makeLink("from/c", "nowhere");

  EXPECT_TRUE(isLeft(FileOperation::kLink,
                     [&] { (void)_files.copy(path("from"), path("to"), ExistingItem::fail); }));

  EXPECT_FALSE(isThere("to"));
}

TEST_F(FileManagerInterruptionTest, FileThatIsBeingWrittenIsWrittenAndTheNextIsNot) {
  proves("SIGNAL-3");

  EXPECT_TRUE(isLeft(FileOperation::kRename, [&] {
    (void)_files.write(path("first"), "whole");
    (void)_files.write(path("second"), "whole");
  }));

  EXPECT_EQ(_folder.content("first"), "whole");
  EXPECT_FALSE(isThere("second"));
}

TEST_F(FileManagerInterruptionTest, NoFolderIsMadeAnyMore) {
  EXPECT_TRUE(isLeft(FileOperation::kMakeDirectory,
                     [&] { (void)_files.createDirectory(path("a/b"), Intermediates::create); }));

  EXPECT_TRUE(isThere("a"));
  EXPECT_FALSE(isThere("a/b"));
}

TEST_F(FileManagerInterruptionTest, ChangeOfAttributesEndsAtTheNextEntry) {
  proves("SIGNAL-3");
  _folder.makeFile("below/a", "", 0600);
  _folder.makeFile("below/b", "", 0600);

  EXPECT_TRUE(isLeft(FileOperation::kChangeMode, [&] {
    (void)_files.changeAttributesBelow(path("below"), {"self", "own", 0640});
  }));

  EXPECT_EQ((modeOf("below/a") == 0640) + (modeOf("below/b") == 0640), 1);
}

TEST_F(FileManagerInterruptionTest, RemovalEndsAtTheNextEntryAndIsDoneTheNextTime) {
  proves("SIGNAL-3");
  for (const char* name : {"tree/a", "tree/b", "tree/sub/c"}) _folder.makeFile(name);

  EXPECT_TRUE(isLeft(FileOperation::kUnlink, [&] { (void)_files.remove(path("tree")); }));
  EXPECT_EQ(isThere("tree/a") + isThere("tree/b") + isThere("tree/sub/c"), 2);

  EXPECT_TRUE(_files.remove(path("tree")));
  EXPECT_FALSE(isThere("tree"));
}

TEST_F(FileManagerInterruptionTest, NothingIsRemovedAnyMore) {
  _folder.makeFile("first");
  _folder.makeFile("second");

  EXPECT_TRUE(isLeft(FileOperation::kUnlink, [&] {
    (void)_files.remove(path("first"));
    (void)_files.remove(path("second"));
  }));

  EXPECT_FALSE(isThere("first"));
  EXPECT_TRUE(isThere("second"));
}

TEST_F(FileManagerInterruptionTest, LookForLeftOversEndsAtTheNextEntry) {
  proves("SIGNAL-3");
  _folder.makeFile("a/.hotfix-1");
  _folder.makeFile("b/.hotfix-2");

  EXPECT_TRUE(
      isLeft(FileOperation::kUnlink, [&] { _files.removeLeftOvers(path(""), LeftOvers::below); }));
  EXPECT_EQ(isThere("a/.hotfix-1") + isThere("b/.hotfix-2"), 1);

  _files.removeLeftOvers(path(""), LeftOvers::below);
  EXPECT_FALSE(isThere("a/.hotfix-1") || isThere("b/.hotfix-2"));
}

TEST_F(FileManagerInterruptionTest, OfLeftOversInOneFolderTheNextStays) {
  proves("SIGNAL-3");
  for (const char* name : {".hotfix-1", ".hotfix-2"}) _folder.makeFile(name);

  EXPECT_TRUE(
      isLeft(FileOperation::kUnlink, [&] { _files.removeLeftOvers(path(""), LeftOvers::below); }));
  EXPECT_EQ(isThere(".hotfix-1") + isThere(".hotfix-2"), 1);

  _files.removeLeftOvers(path(""), LeftOvers::below);
}

TEST_F(FileManagerInterruptionTest, LeftOverFolderIsEmptiedUpToTheNextEntry) {
  proves("SIGNAL-3");
  for (const char* name : {".hotfix-1/a", ".hotfix-1/b"}) _folder.makeFile(name);

  EXPECT_TRUE(
      isLeft(FileOperation::kUnlink, [&] { _files.removeLeftOvers(path(""), LeftOvers::below); }));
  EXPECT_EQ(isThere(".hotfix-1/a") + isThere(".hotfix-1/b"), 1);

  _files.removeLeftOvers(path(""), LeftOvers::below);
}

TEST_F(FileManagerInterruptionTest, FolderThatGivesWayToACopyIsEmptiedUpToTheNextEntry) {
  proves("SIGNAL-3");
  _folder.makeFile("from/file", "new");
  for (const char* name : {"to/a", "to/b"}) _folder.makeFile(name, "old");

  EXPECT_TRUE(isLeft(FileOperation::kUnlink,
                     [&] { (void)_files.copy(path("from"), path("to"), ExistingItem::replace); }));

  EXPECT_EQ(isThere("to/a") + isThere("to/b"), 1);
  EXPECT_FALSE(isThere("to/file")) << "nothing new is begun";
  EXPECT_TRUE(_files.copy(path("from"), path("to"), ExistingItem::replace));
  EXPECT_THAT(pathsIn(snapshot("to")), ElementsAre("file"));
}

}  // namespace
}  // namespace installer::test
