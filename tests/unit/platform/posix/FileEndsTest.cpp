#include "platform/FileEnds.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "support/TemporaryFolder.h"

namespace installer::test {
namespace {

class FileEndsTest : public ::testing::Test {
 protected:
  std::optional<FileEnds> ends(const std::string& below, const EndSizes& sizes = {100, 100}) {
    return readEnds(_folder.path(), below, sizes, _error);
  }
  int refusal(const std::string& below) {
    EXPECT_FALSE(ends(below).has_value());
    return _error.code;
  }

  TemporaryFolder _folder;
  FileError _error;
};

TEST_F(FileEndsTest, WhatFitsIsOnePiece) {
  _folder.makeFile("a/b", "0123456789");

  const auto all = ends("a/b", {4, 6});

  ASSERT_TRUE(all);
  EXPECT_EQ("0123456789", all->head);
  EXPECT_EQ("", all->tail);
  EXPECT_EQ(0u, all->leftOut);
  EXPECT_EQ(10u, all->size);
  EXPECT_FALSE(all->hasOtherNames);
  struct stat status {};
  ASSERT_EQ(0, stat(_folder.path("a/b").c_str(), &status));
  EXPECT_EQ(status.st_mtime, all->modified);
}

TEST_F(FileEndsTest, OfALongerFileTheMiddleIsLeftOut) {
  _folder.makeFile("a", "0123456789");

  const auto both = ends("a", {4, 5});

  ASSERT_TRUE(both);
  EXPECT_EQ("0123", both->head);
  EXPECT_EQ("56789", both->tail);
  EXPECT_EQ(1u, both->leftOut);
  EXPECT_EQ("", ends("a", {0, 0})->head);
  EXPECT_EQ(10u, ends("a", {0, 0})->leftOut);
  EXPECT_EQ("789", ends("a", {0, 3})->tail);
}

TEST_F(FileEndsTest, AFileOfAnyLengthTakesNoMoreThanItsEnds) {
  _folder.makeFile("a", "begin");
  std::filesystem::resize_file(_folder.path("a"), std::uintmax_t{1} << 40);

  const auto both = ends("a", {5, 3});

  ASSERT_TRUE(both);
  EXPECT_EQ("begin", both->head);
  EXPECT_EQ(std::string(3, '\0'), both->tail);
  EXPECT_EQ((std::uint64_t{1} << 40) - 8, both->leftOut);
}

TEST_F(FileEndsTest, WhatIsNotThereIsMissing) {
  EXPECT_EQ(FileError::kMissing, refusal("a"));
  EXPECT_EQ(FileError::kMissing, refusal("a/b"));
  FileError error;
  EXPECT_FALSE(readEnds(_folder.path("none"), "a", {}, error));
  EXPECT_EQ(FileError::kMissing, error.code);
}

TEST_F(FileEndsTest, WhatIsNoFileIsNotOpened) {
  _folder.makePipe("pipe");
  _folder.makeFolder("folder");
  _folder.makeFile("file");

  EXPECT_EQ(FileError::kNoFile, refusal("pipe"));
  EXPECT_EQ(FileError::kNoFile, refusal("folder"));
  EXPECT_EQ(FileError::kMissing, refusal("file/a"));
}

TEST_F(FileEndsTest, BeneathTheFolderNoLinkIsFollowed) {
  _folder.makeFile("real/file", "text");
  _folder.makeLink("link", "real");
  _folder.makeLink("real/other", "file");

  EXPECT_NE(FileError::kMissing, refusal("link/file"));
  EXPECT_NE(FileError::kMissing, refusal("real/other"));
  const auto found = readEnds(_folder.path("link"), "file", {10, 0}, _error);
  ASSERT_TRUE(found) << "the folder's own path may be one";
  EXPECT_EQ("text", found->head);
}

TEST_F(FileEndsTest, OtherNamesAreTold) {
  _folder.makeFile("a", "text");
  _folder.makeHardLink("b", "a");

  EXPECT_TRUE(ends("a")->hasOtherNames);
}

TEST_F(FileEndsTest, TheErrorTellsThePath) {
  (void)refusal("a/b");

  EXPECT_NE(std::string::npos, _error.description.find("\"" + _folder.path("a/b") + "\""));
}

}  // namespace
}  // namespace installer::test
