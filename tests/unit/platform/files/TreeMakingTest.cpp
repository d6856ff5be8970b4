#include "platform/files/TreeMaking.h"

#include <gmock/gmock.h>
#include <sys/stat.h>

#include <cerrno>
#include <csignal>

#include "platform/Interruption.h"
#include "support/ChildRun.h"
#include "support/TemporaryFolder.h"
#include "support/TreeSnapshot.h"

namespace installer::test {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

class TreeMakingTest : public ::testing::Test {
 protected:
  TreeMakingTest() {
    _source.makeFolder("folder", 0700);
    _source.makeFile("folder/program", "run", 0700);
    _source.makeFile("folder/file", "read", 0600);
    _source.makeLink("folder/link", "file");
  }

  // A tree of everything that there is; false when a step fails.
  bool make(const FileChanges::Door& door) {
    TreeMaking tree(_folder.path("new"), door);
    return tree.begin(_error) && tree.addFolder("a/b", _error) && tree.addFolder("a/c", _error) &&
           tree.addFile("a/b/file", "bytes", _error) &&
           tree.addCopy(_source.path(), "a/copy", _error) && tree.finish(_error);
  }
  bool make() {
    return make([](FileOperation) { return 0; });
  }

  std::vector<std::string> made() const { return pathsIn(snapshotOf(_folder.path())); }

  TemporaryFolder _folder;
  TemporaryFolder _source;
  FileError _error;
};

TEST_F(TreeMakingTest, HasWhatWasAddedWithModesOfItsOwn) {
  const mode_t mask = umask(077);

  ASSERT_TRUE(make()) << _error.description;

  umask(mask);
  const TreeSnapshot tree = snapshotOf(_folder.path("new"));
  EXPECT_THAT(pathsIn(tree),
              ElementsAre("a", "a/b", "a/b/file", "a/c", "a/copy", "a/copy/folder",
                          "a/copy/folder/file", "a/copy/folder/link", "a/copy/folder/program"));
  for (const auto& [path, entry] : tree) {
    const mode_t mode = path.ends_with("file") ? 0644 : 0755;
    EXPECT_EQ(entry.kind == "link" ? 0 : mode, entry.mode) << path;
  }
  EXPECT_EQ("bytes", tree.at("a/b/file").content);
  EXPECT_EQ("read", tree.at("a/copy/folder/file").content);
  EXPECT_EQ("file", tree.at("a/copy/folder/link").content);
}

TEST_F(TreeMakingTest, IsClosedToOthersWhileItIsMade) {
  TreeMaking tree(_folder.path("new"), [](FileOperation) { return 0; });
  ASSERT_TRUE(tree.begin(_error));

  EXPECT_EQ(0700U, snapshotOf(tree.place()).at(".").mode);
  EXPECT_THAT(snapshotOf(_folder.path("new")), IsEmpty());
}

TEST_F(TreeMakingTest, GoesWithoutATraceUnlessItIsFinished) {
  {
    TreeMaking tree(_folder.path("new"), [](FileOperation) { return 0; });
    ASSERT_TRUE(tree.begin(_error) && tree.addFolder("a", _error));
    EXPECT_THAT(made(), ::testing::SizeIs(2));
  }
  EXPECT_THAT(made(), IsEmpty());
}

// Each change to the disk fails once: nothing is left, and what went wrong is told.
TEST_F(TreeMakingTest, AFailureAtAnyStepLeavesNothing) {
  int changes = 0;
  ASSERT_TRUE(make([&](FileOperation) { return ++changes, 0; }));
  removeTree(_folder.path("new"));
  const int last = changes - 1;  // that one flushes the name, with everything there
  ASSERT_GT(last, 20);

  for (int failing = 1; failing <= last; ++failing) {
    int number = 0;
    const auto door = [&](FileOperation) { return ++number == failing ? ENOSPC : 0; };
    EXPECT_FALSE(make(door)) << failing;
    EXPECT_THAT(_error.description, HasSubstr("No space left on device")) << failing;
    EXPECT_THAT(made(), IsEmpty()) << failing;
  }
}

TEST_F(TreeMakingTest, ASignalAtAnyTimeLeavesNothing) {
  for (const FileOperation when : {FileOperation::kMakeDirectory, FileOperation::kWrite,
                                   FileOperation::kLink, FileOperation::kSync}) {
    const auto isInterrupted = [&] {
      noteInterruptions();
      try {
        (void)make([&](FileOperation operation) { return operation == when ? raise(SIGTERM) : 0; });
        return false;
      } catch (const Interrupted&) {
        return true;
      }
    };

    EXPECT_TRUE(inChild(isInterrupted)) << static_cast<int>(when);
    EXPECT_THAT(made(), IsEmpty()) << static_cast<int>(when);
  }
}

TEST_F(TreeMakingTest, TakesThePlaceOfAnEmptyFolder) {
  _folder.makeFolder("new", 0700);

  ASSERT_TRUE(make());

  EXPECT_EQ("folder", snapshotOf(_folder.path("new/a")).at(".").kind);
}

TEST_F(TreeMakingTest, LeavesWhatIsThereAlone) {
  for (const char* const there : {"file", "folder/file", "link"}) {
    const TemporaryFolder folder;
    const bool isLink = std::string(there) == "link";
    isLink ? folder.makeLink("link", "nowhere") : folder.makeFile(there);
    const std::string path =
        folder.path(std::string(there).substr(0, std::string(there).find('/')));
    const TreeSnapshot before = snapshotOf(folder.path());

    EXPECT_EQ(nullptr, beginTree(path, _error)) << there;

    EXPECT_EQ(FileError::kExists, _error.code) << there;
    EXPECT_EQ(before, snapshotOf(folder.path())) << there;
  }
}

// Somebody else was quicker.
TEST_F(TreeMakingTest, LeavesAloneWhatHasComeMeanwhile) {
  TreeMaking tree(_folder.path("new"), [](FileOperation) { return 0; });
  ASSERT_TRUE(tree.begin(_error));
  _folder.makeFile("new/file", "theirs");

  EXPECT_FALSE(tree.finish(_error));

  EXPECT_EQ(FileError::kExists, _error.code);
  EXPECT_EQ("theirs", _folder.content("new/file"));
}

TEST_F(TreeMakingTest, AMissingFolderAboveIsTold) {
  EXPECT_EQ(nullptr, beginTree(_folder.path("none/new"), _error));

  EXPECT_EQ(FileError::kMissing, _error.code);
  EXPECT_THAT(_error.description,
              HasSubstr(_folder.path("none/new") + "\" cannot be made: No such"));
}

TEST_F(TreeMakingTest, WhatCannotBeCopiedIsTold) {
  _source.makePipe("folder/pipe");

  EXPECT_FALSE(make());

  EXPECT_EQ("\"" + _source.path("folder/pipe") +
                "\" cannot be copied: is not a regular file, folder or link",
            _error.description);
  EXPECT_THAT(made(), IsEmpty());
}

TEST_F(TreeMakingTest, ALinkNamesTheFolderThatIsCopied) {
  const std::string link = _folder.makeLink("link", _source.path());
  const auto tree = beginTree(_folder.path("new"), _error);
  ASSERT_NE(nullptr, tree);

  ASSERT_TRUE(tree->addCopy(link, "copy", _error) && tree->finish(_error));

  EXPECT_EQ("read", _folder.content("new/copy/folder/file"));
}

}  // namespace
}  // namespace installer::test
