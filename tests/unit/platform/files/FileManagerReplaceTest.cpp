#include <cerrno>
#include <string>

#include "support/Proves.h"
#include "unit/platform/files/FileManagerFixture.h"

namespace installer::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

// Copies that put themselves in the place of what stands there.
class FileManagerReplaceTest : public FileManagerFixture {
 protected:
  bool replace(std::string_view from, std::string_view to) {
    return replace(_files, path(from), path(to));
  }
  bool replace(FileManager& files, const std::string& from, const std::string& to) {
    _error = {0, ""};
    return files.copy(from, to, ExistingItem::replace, &_error);
  }

  FileError _error;
};

TEST_F(FileManagerReplaceTest, AFileTakesThePlaceOfAFileInOneStep) {
  proves("FILES-20");
  _folder.makeFile("from", "new", 0640);
  _folder.makeFile("to", "old", 0600);

  EXPECT_TRUE(replace("from", "to"));

  EXPECT_EQ(_folder.content("to"), "new");
  EXPECT_EQ(modeOf("to"), 0640u);
  EXPECT_THAT(_files.operations(),
              ElementsAre(FileOperation::kCreateTemporary, FileOperation::kWrite,
                          FileOperation::kSync, FileOperation::kRename, FileOperation::kSync));
}

TEST_F(FileManagerReplaceTest, WithoutAnItemThereItIsAPlainCopy) {
  _folder.makeFile("from", "new");

  EXPECT_TRUE(replace("from", "to"));

  EXPECT_EQ(_folder.content("to"), "new");
}

TEST_F(FileManagerReplaceTest, LinksArePlacesAndNotWrittenThrough) {
  _folder.makeFile("from", "new");
  _folder.makeFile("victim", "untouched");
  _folder.makeLink("to", "victim");
  _folder.makeLink("dangling", "nowhere");

  EXPECT_TRUE(replace("from", "to"));
  EXPECT_TRUE(replace("from", "dangling"));

  EXPECT_EQ(_folder.content("victim"), "untouched");
  EXPECT_EQ(snapshot("to")["."].kind, "file");
  EXPECT_EQ(_folder.content("dangling"), "new");
  EXPECT_FALSE(isThere("nowhere"));
}

TEST_F(FileManagerReplaceTest, AFolderGoesWithAllBelowIt) {
  proves("FILES-20");
  _folder.makeFile("from", "new");
  _folder.makeFile("to/deep/file", "old");

  EXPECT_TRUE(replace("from", "to/"));

  EXPECT_EQ(_folder.content("to"), "new");
}

TEST_F(FileManagerReplaceTest, ATreeTakesThePlaceOfAFileAndOfATree) {
  _folder.makeFile("from/a", "new");
  _folder.makeFile("file", "old");
  _folder.makeFile("tree/b", "old");

  EXPECT_TRUE(replace("from", "file"));
  EXPECT_TRUE(replace("from", "tree"));

  EXPECT_THAT(TreeDiff(snapshot("from"), snapshot("file")).lines(), IsEmpty());
  EXPECT_THAT(TreeDiff(snapshot("from"), snapshot("tree")).lines(), IsEmpty());
}

TEST_F(FileManagerReplaceTest, WhatCannotBeRemovedButRenamedIsReplaced) {
  _folder.makeFile("from", "new");
  _folder.makeFile("to", "old");
  _files.failAlways(FileOperation::kUnlink, EPERM);

  EXPECT_TRUE(replace("from", "to"));

  EXPECT_EQ(_folder.content("to"), "new");
}

TEST_F(FileManagerReplaceTest, WhatStaysMakesTheCopyFail) {
  proves("FILES-20");
  _folder.makeFile("from", "new");
  _folder.makeFile("to/file", "old");
  _files.failAlways(FileOperation::kUnlink, EBUSY);

  EXPECT_FALSE(replace("from", "to"));

  EXPECT_EQ(_error.code, FileError::kOther);
  EXPECT_EQ(_error.description, "\"" + path("from") + "\" cannot be copied to \"" + path("to") +
                                    "\": Device or resource busy");
  EXPECT_EQ(_folder.content("to/file"), "old");
}

TEST_F(FileManagerReplaceTest, AMissingSourceStillRemovesTheOldItem) {
  proves("FILES-20");
  _folder.makeFile("to", "old");
  _folder.makeFile("tree/file", "old");

  EXPECT_FALSE(replace("missing", "to"));
  EXPECT_EQ(_error.code, FileError::kMissing);
  EXPECT_FALSE(replace("missing", "tree"));
  EXPECT_EQ(_error.code, FileError::kMissing);
  EXPECT_FALSE(replace(_files, "", path("to")));

  EXPECT_THAT(pathsIn(snapshot()), IsEmpty());
}

TEST_F(FileManagerReplaceTest, AnUnusableSourceStillRemovesTheOldItem) {
  _folder.makeFile("to", "old");
  _folder.makeFile("other", "old");
  _folder.makePipe("pipe");

  EXPECT_FALSE(replace(_files, "", path("to")));
  EXPECT_FALSE(replace("pipe", "other"));

  EXPECT_THAT(pathsIn(snapshot()), ElementsAre("pipe"));
}

TEST_F(FileManagerReplaceTest, AnUnusableDestinationFails) {
  _folder.makeFile("from", "new");

  EXPECT_FALSE(replace("from", "missing/to"));
  EXPECT_FALSE(replace(_files, path("from"), ""));
  EXPECT_FALSE(replace(_files, path("from"), "/"));

  EXPECT_EQ(_folder.content("from"), "new");
}

TEST_F(FileManagerReplaceTest, AnItemThatIsToTakeItsOwnPlaceIsGone) {
  _folder.makeFile("file", "x");
  _folder.makeFile("tree/file", "x");
  _folder.makeFile("folder/file", "x");
  _folder.makeLink("way", "folder");

  EXPECT_FALSE(replace("file", "file"));
  EXPECT_EQ(_error.code, FileError::kMissing);
  EXPECT_FALSE(replace("tree", "tree/"));
  EXPECT_FALSE(replace("way/file", "folder/file"));

  EXPECT_THAT(pathsIn(snapshot()), ElementsAre("folder", "way"));
}

TEST_F(FileManagerReplaceTest, AnItemBelowTheOldOneGoesWithIt) {
  _folder.makeFile("to/from", "x");

  EXPECT_FALSE(replace("to/from", "to"));

  EXPECT_THAT(pathsIn(snapshot()), IsEmpty());
}

TEST_F(FileManagerReplaceTest, AnItemThatCannotLeaveItsOwnPlaceIsNoCopy) {
  _folder.makeFile("file", "x");
  _files.failAlways(FileOperation::kUnlink, EPERM);

  EXPECT_FALSE(replace("file", "file"));

  EXPECT_EQ(_folder.content("file"), "x");
}

TEST_F(FileManagerReplaceTest, AnotherNameOfTheSameFileIsAnotherPlace) {
  _folder.makeFile("from", "x");
  _folder.makeHardLink("to", "from");
  _folder.makeFile("folder/from", "x");
  _folder.makeFolder("other");
  _folder.makeHardLink("other/from", "folder/from");
  _folder.makeFile("same", "x");
  _folder.makeHardLink("same2", "same");

  EXPECT_TRUE(replace("from", "to"));
  EXPECT_TRUE(replace("folder/from", "other/from"));
  EXPECT_FALSE(replace("same", "same"));

  EXPECT_EQ(_folder.content("to"), "x");
  EXPECT_NE(statusOf("to").st_ino, statusOf("from").st_ino);
  EXPECT_NE(statusOf("other/from").st_ino, statusOf("folder/from").st_ino);
  EXPECT_FALSE(isThere("same"));
  EXPECT_TRUE(isThere("same2"));
}

TEST_F(FileManagerReplaceTest, WhateverFailsTheOldFileIsGoneOrTheNewOneWhole) {
  proves("FILES-20");
  const CreationMask mask(077);  // so that the mode is a change of its own
  _folder.makeFile("from", "new");
  std::size_t number = 1;
  for (;; ++number) {
    _folder.makeFile("to", "old");
    FailingFileManager files(_users);
    files.failAt(number, EIO);
    const bool copied = replace(files, path("from"), path("to"));
    if (!files.hasFailed()) break;
    EXPECT_FALSE(copied) << number;
    EXPECT_NE(_error.code, FileError::kExists) << number;
    if (isThere("to")) {
      EXPECT_EQ(_folder.content("to"), "new") << number;
    }
  }

  EXPECT_EQ(number, 7u);
}

TEST_F(FileManagerReplaceTest, AnEntryPutThereMeanwhileIsNoCopy) {
  _folder.makeFile("from", "new");
  _files.beforeNext(FileOperation::kRename, [this] { _folder.makeFile("to/file", "theirs"); });

  EXPECT_FALSE(replace("from", "to"));

  EXPECT_EQ(_error.code, FileError::kOther);
}

TEST_F(FileManagerReplaceTest, ATreeThatIsCopiedInPartGetsItsNameAndFails) {
  _folder.makeFile("from/a", "x");
  _folder.makePipe("from/b");
  _folder.makeFile("to", "old");

  EXPECT_FALSE(replace("from", "to"));

  EXPECT_EQ(snapshot("to")["."].kind, "folder");
}

}  // namespace
}  // namespace installer::test
