#include <cerrno>

#include "unit/platform/files/FileManagerFixture.h"

namespace installer::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class FileManagerFlushTest : public FileManagerFixture {};

TEST_F(FileManagerFlushTest, IsOneFlush) {
  EXPECT_TRUE(_files.flush(path("")));

  EXPECT_THAT(_files.operations(), ElementsAre(FileOperation::kSync));
}

TEST_F(FileManagerFlushTest, FailureIsToldWithTheFolder) {
  _files.failNext(FileOperation::kSync, EIO);
  FileError error;

  EXPECT_FALSE(_files.flush(path(""), &error));

  EXPECT_EQ(error.description, "\"" + path("") + "\" cannot be flushed: Input/output error");
}

TEST_F(FileManagerFlushTest, WhatIsNoFolderCannotBeFlushed) {
  _folder.makeFile("file");
  FileError error;

  EXPECT_FALSE(_files.flush(path("file"), &error));
  EXPECT_EQ(error.description, "\"" + path("file") + "\" cannot be flushed: Not a directory");
  EXPECT_FALSE(_files.flush("", &error));
  EXPECT_EQ(error.description, "\"\" cannot be flushed: No such file or directory");
  EXPECT_THAT(_files.operations(), IsEmpty());
}

}  // namespace
}  // namespace installer::test
