#include <fcntl.h>
#include <sys/stat.h>

#include <array>
#include <cerrno>
#include <string>

#include "unit/platform/FileManagerFixture.h"

namespace installer::test {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

class FileManagerCopyTest : public FileManagerFixture {
 protected:
  bool copy(std::string_view from, std::string_view to,
            ExistingItem existing = ExistingItem::fail) {
    _error = {};
    return _files.copy(path(from), path(to), existing, &_error);
  }

  void setModificationTime(std::string_view relative, time_t seconds) {
    const std::array<timespec, 2> times{timespec{1, 0}, timespec{seconds, 123}};
    ASSERT_EQ(::utimensat(AT_FDCWD, path(relative).c_str(), times.data(), AT_SYMLINK_NOFOLLOW), 0);
  }

  FileError _error;
};

TEST_F(FileManagerCopyTest, AFileIsCopiedWithItsBytesModeAndTime) {
  const std::string bytes = std::string("a\0b\xff", 4) + std::string(300000, 'x');
  _folder.makeFile("from", bytes, 0640);
  setModificationTime("from", 1000000000);

  EXPECT_TRUE(copy("from", "to"));

  EXPECT_EQ(_folder.content("to"), bytes);
  EXPECT_EQ(modeOf("to"), 0640u);
  EXPECT_EQ(statusOf("to").st_mtim.tv_sec, 1000000000);
  EXPECT_EQ(statusOf("to").st_mtim.tv_nsec, 123);
  EXPECT_THAT(pathsIn(snapshot()), ElementsAre("from", "to"));
}

TEST_F(FileManagerCopyTest, AnEmptyFileIsCopied) {
  _folder.makeFile("from", "");

  EXPECT_TRUE(copy("from", "to"));

  EXPECT_EQ(statusOf("to").st_size, 0);
}

TEST_F(FileManagerCopyTest, SetIdBitsAreDroppedFromFilesAndFolders) {
  _folder.makeFile("tree/tool", "", 0755);
  ASSERT_EQ(::chmod(path("tree/tool").c_str(), 07755), 0);
  ASSERT_EQ(::chmod(path("tree").c_str(), 07775), 0);

  EXPECT_TRUE(copy("tree", "copy"));

  EXPECT_EQ(modeOf("copy/tool"), 01755u);
  EXPECT_EQ(modeOf("copy"), 01775u);
}

TEST_F(FileManagerCopyTest, TheCreationMaskDoesNotApply) {
  _folder.makeFile("tree/file", "", 0666);
  ASSERT_EQ(::chmod(path("tree").c_str(), 0777), 0);

  {
    const CreationMask mask(077);
    EXPECT_TRUE(copy("tree", "copy"));
  }

  EXPECT_EQ(modeOf("copy"), 0777u);
  EXPECT_EQ(modeOf("copy/file"), 0666u);
}

TEST_F(FileManagerCopyTest, ATreeIsCopiedWithEverythingInIt) {
  _folder.makeFile("tree/a/b/file", "deep", 0600);
  _folder.makeFile("tree/none", "", 0);
  _folder.makeFolder("tree/empty", 0711);
  _folder.makeFolder("tree/barred", 0);
  _folder.makeLink("tree/link", "a/b/file");
  _folder.makeLink("tree/dangling", "/nowhere/at all");
  _folder.makeLink("tree/outside", "/etc");
  _folder.makeFile("tree/odd \xff\n name", "odd");

  EXPECT_TRUE(copy("tree", "copy"));

  EXPECT_THAT(TreeDiff(snapshot("tree"), snapshot("copy")).lines(), IsEmpty());
}

TEST_F(FileManagerCopyTest, FoldersAndLinksKeepTheirTimes) {
  _folder.makeFile("tree/folder/file", "");
  _folder.makeLink("tree/link", "folder");
  setModificationTime("tree/link", 1100000000);
  setModificationTime("tree/folder/file", 1200000000);
  setModificationTime("tree/folder", 1300000000);
  setModificationTime("tree", 1400000000);

  EXPECT_TRUE(copy("tree", "copy"));

  EXPECT_EQ(statusOf("copy/link").st_mtim.tv_sec, 1100000000);
  EXPECT_EQ(statusOf("copy/folder/file").st_mtim.tv_sec, 1200000000);
  EXPECT_EQ(statusOf("copy/folder").st_mtim.tv_sec, 1300000000);
  EXPECT_EQ(statusOf("copy").st_mtim.tv_sec, 1400000000);
}

TEST_F(FileManagerCopyTest, ALinkIsCopiedAsALink) {
  _folder.makeFile("file", "bytes");
  _folder.makeLink("link", "file");
  setModificationTime("link", 1100000000);

  EXPECT_TRUE(copy("link", "copy"));

  EXPECT_EQ(snapshot("copy")["."].kind, "link");
  EXPECT_EQ(snapshot("copy")["."].content, "file");
  EXPECT_EQ(statusOf("copy").st_mtim.tv_sec, 1100000000);
}

TEST_F(FileManagerCopyTest, ADanglingLinkIsCopiedAsALink) {
  _folder.makeLink("link", "nowhere");

  EXPECT_TRUE(copy("link", "copy"));

  EXPECT_EQ(snapshot("copy")["."].content, "nowhere");
}

TEST_F(FileManagerCopyTest, ALinkNamedWithATrailingSlashIsStillTheLink) {
  _folder.makeFile("folder/file", "");
  _folder.makeLink("link", "folder");

  EXPECT_TRUE(copy("link/", "copy//"));

  EXPECT_EQ(snapshot("copy")["."].kind, "link");
}

TEST_F(FileManagerCopyTest, AFolderIsCopiedWhateverSlashesFollowTheNames) {
  _folder.makeFile("folder/file", "x");

  EXPECT_TRUE(copy("folder///", "copy/"));

  EXPECT_EQ(_folder.content("copy/file"), "x");
}

TEST_F(FileManagerCopyTest, AMissingSourceIsToldFirst) {
  _folder.makeFile("to", "old");

  EXPECT_FALSE(copy("from", "to"));

  EXPECT_EQ(_error.code, FileError::kMissing);
  EXPECT_EQ(_error.description, "\"" + path("from") + "\" cannot be copied to \"" + path("to") +
                                    "\": No such file or directory");
  EXPECT_EQ(_folder.content("to"), "old");
}

TEST_F(FileManagerCopyTest, AMissingSourceFailsAlsoWhenExistingItemsAreKept) {
  _folder.makeFile("to", "old");

  EXPECT_FALSE(copy("from", "to", ExistingItem::keep));
  EXPECT_EQ(_error.code, FileError::kMissing);
}

TEST_F(FileManagerCopyTest, AnExistingItemFailsAndStays) {
  _folder.makeFile("from", "new");
  _folder.makeFile("to", "old");

  EXPECT_FALSE(copy("from", "to", ExistingItem::fail));

  EXPECT_EQ(_error.code, FileError::kExists);
  EXPECT_THAT(_error.description, HasSubstr("File exists"));
  EXPECT_EQ(_folder.content("to"), "old");
}

TEST_F(FileManagerCopyTest, AnExistingItemCountsAsDoneAndStays) {
  _folder.makeFile("from/new", "new");
  _folder.makeFile("to/old", "old");
  const auto before = snapshot("to");

  EXPECT_TRUE(copy("from", "to", ExistingItem::keep));

  EXPECT_THAT(TreeDiff(before, snapshot("to")).lines(), IsEmpty());
}

TEST_F(FileManagerCopyTest, ADanglingLinkAtTheDestinationIsAnExistingItem) {
  _folder.makeFile("from", "new");
  _folder.makeLink("to", "nowhere");

  EXPECT_FALSE(copy("from", "to", ExistingItem::fail));
  EXPECT_EQ(_error.code, FileError::kExists);
  EXPECT_TRUE(copy("from", "to/", ExistingItem::keep));

  EXPECT_EQ(snapshot("to")["."].content, "nowhere");
  EXPECT_FALSE(isThere("nowhere"));
}

TEST_F(FileManagerCopyTest, ASuccessLeavesTheErrorAlone) {
  _folder.makeFile("from", "");
  FileError error{7, "untouched"};

  EXPECT_TRUE(_files.copy(path("from"), path("to"), ExistingItem::fail, &error));

  EXPECT_EQ(error.code, 7);
  EXPECT_EQ(error.description, "untouched");
}

TEST_F(FileManagerCopyTest, AFailureNeedsNoErrorSlot) {
  EXPECT_FALSE(_files.copy(path("from"), path("to"), ExistingItem::fail));
}

}  // namespace
}  // namespace installer::test
