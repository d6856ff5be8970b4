#include <sys/stat.h>

#include <cerrno>
#include <string>

#include "support/ChildRun.h"
#include "unit/platform/files/FileManagerFixture.h"

namespace installer::test {
namespace {

// What the operations tell of their failures: the path, what was tried, and the system's words.
class FileManagerReasonsTest : public FileManagerFixture {
 protected:
  std::string told(std::string_view relative, const std::string& rest) const {
    return "\"" + path(relative) + "\" cannot be " + rest;
  }

  FileError _error{0, ""};
};

TEST_F(FileManagerReasonsTest, WhatIsNotThereIsMissing) {
  _folder.makeFile("file");
  _folder.makeLink("dangling", "nowhere");

  for (const std::string name : {"missing", "file/below", "dangling"}) {
    _error = {0, ""};
    EXPECT_FALSE(_files.exists(path(name), &_error));
    EXPECT_EQ(_error.code, FileError::kMissing) << name;
    _error = {0, ""};
    EXPECT_FALSE(_files.read(path(name), &_error));
    EXPECT_EQ(_error.code, FileError::kMissing) << name;
  }
  for (const std::string name : {"missing", "file/below"}) {
    _error = {0, ""};
    EXPECT_FALSE(_files.readUnlinked(path(name), nullptr, &_error));
    EXPECT_EQ(_error.code, FileError::kMissing) << name;
    _error = {0, ""};
    EXPECT_FALSE(_files.remove(path(name), &_error));
    EXPECT_EQ(_error.code, FileError::kMissing) << name;
  }
  _error = {0, ""};
  EXPECT_FALSE(_files.read("", &_error));
  EXPECT_FALSE(_files.readUnlinked("", nullptr, &_error));
  EXPECT_FALSE(_files.exists("", &_error));
  EXPECT_EQ(_error.code, FileError::kMissing);
}

TEST_F(FileManagerReasonsTest, WhatCannotBeLookedAtIsNotMissing) {
  _folder.makeLink("loop", "loop");

  EXPECT_FALSE(_files.exists(path("loop"), &_error));
  EXPECT_EQ(_error.code, FileError::kOther);
  EXPECT_EQ(_error.description, told("loop", "looked at: Too many levels of symbolic links"));
  EXPECT_FALSE(_files.read(path("loop"), &_error));
  EXPECT_EQ(_error.code, FileError::kOther);
  EXPECT_EQ(_error.description, told("loop", "read: Too many levels of symbolic links"));
}

TEST_F(FileManagerReasonsTest, WhatIsNoRegularFileIsNoFile) {
  _folder.makeFolder("folder");
  _folder.makePipe("pipe");
  _folder.makeLink("link", "pipe");

  EXPECT_FALSE(_files.read(path("folder"), &_error));
  EXPECT_EQ(_error.code, FileError::kNoFile);
  EXPECT_EQ(_error.description, told("folder", "read: Is a directory"));
  EXPECT_FALSE(_files.read(path("pipe"), &_error));
  EXPECT_EQ(_error.code, FileError::kNoFile);
  EXPECT_EQ(_error.description, told("pipe", "read: Invalid argument"));
  EXPECT_FALSE(_files.readUnlinked(path("link"), nullptr, &_error));
  EXPECT_EQ(_error.code, FileError::kNoFile);
  EXPECT_EQ(_error.description, told("link", "read: Invalid argument"));
}

TEST_F(FileManagerReasonsTest, ATooLongFileIsNotMissing) {
  _folder.makeFile("long");
  ASSERT_EQ(::truncate(path("long").c_str(), off_t{256} * 1024 * 1024 + 1), 0);

  EXPECT_FALSE(_files.read(path("long"), &_error));
  EXPECT_EQ(_error.code, FileError::kOther);
  EXPECT_EQ(_error.description, told("long", "read: File too large"));
  _error = {0, ""};
  EXPECT_FALSE(_files.readUnlinked(path("long"), nullptr, &_error));
  EXPECT_EQ(_error.description, told("long", "read: File too large"));
}

TEST_F(FileManagerReasonsTest, ABarredFileIsNotMissing) {
  giveToOrdinaryUser(_folder.makeFile("barred", "x", 0));
  giveToOrdinaryUser(_folder.makeFolder("folder", 0));

  EXPECT_TRUE(asOrdinaryUser([&] {
    return !_files.read(path("barred"), &_error) && _error.code == FileError::kOther &&
           _error.description == told("barred", "read: Permission denied") &&
           !_files.exists(path("folder/file"), &_error) && _error.code == FileError::kOther;
  }));
}

TEST_F(FileManagerReasonsTest, AWriteTellsWhyItFailed) {
  _folder.makeFolder("folder");
  _folder.makeFile("file", "old");

  EXPECT_FALSE(_files.write(path("folder"), "x", ReplacedFile::takeOver, std::nullopt, &_error));
  EXPECT_EQ(_error.description, told("folder", "written: Is a directory"));
  EXPECT_FALSE(_files.write(path("file/x"), "x", ReplacedFile::takeOver, std::nullopt, &_error));
  EXPECT_EQ(_error.description, told("file/x", "written: Not a directory"));
  _files.failNext(FileOperation::kRename, ENOSPC);
  EXPECT_FALSE(_files.write(path("file"), "x", ReplacedFile::forget, 0600, &_error));
  EXPECT_EQ(_error.description, told("file", "written: No space left on device"));
  EXPECT_EQ(_error.code, FileError::kOther);
  EXPECT_EQ(_folder.content("file"), "old");
}

TEST_F(FileManagerReasonsTest, ARemovalTellsWhyItFailed) {
  _folder.makeFile("folder/file");
  _files.failAlways(FileOperation::kUnlink, EBUSY);

  EXPECT_FALSE(_files.remove(path("folder"), &_error));
  EXPECT_EQ(_error.code, FileError::kOther);
  EXPECT_EQ(_error.description, told("folder", "removed: Device or resource busy"));
  EXPECT_FALSE(_files.remove(path("folder/."), &_error));
  EXPECT_EQ(_error.description, told("folder/.", "removed: Invalid argument"));
}

TEST_F(FileManagerReasonsTest, ASuccessLeavesTheErrorAlone) {
  _folder.makeFile("file", "x");

  EXPECT_TRUE(_files.exists(path("file"), &_error));
  EXPECT_TRUE(_files.read(path("file"), &_error));
  EXPECT_TRUE(_files.readUnlinked(path("file"), nullptr, &_error));
  EXPECT_TRUE(_files.write(path("file"), "y", ReplacedFile::takeOver, std::nullopt, &_error));
  EXPECT_TRUE(_files.copy(path("file"), path("copy"), ExistingItem::replace, &_error));
  EXPECT_TRUE(_files.remove(path("file"), &_error));

  EXPECT_EQ(_error.code, 0);
  EXPECT_EQ(_error.description, "");
}

}  // namespace
}  // namespace installer::test
