#include <fcntl.h>
#include <sys/stat.h>

#include <array>
#include <cerrno>
#include <filesystem>
#include <initializer_list>
#include <string>
#include <vector>

#include "platform/files/FileSystemCalls.h"
#include "support/ChildRun.h"
#include "support/Proves.h"
#include "unit/platform/files/FileManagerFixture.h"

namespace installer::test {
namespace {

using syscalls::modificationTime;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

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
  proves("FILES-6");
  const std::string bytes = std::string("a\0b\xff", 4) + std::string(300000, 'x');
  _folder.makeFile("from", bytes, 0640);
  setModificationTime("from", 1000000000);

  EXPECT_TRUE(copy("from", "to"));

  EXPECT_EQ(_folder.content("to"), bytes);
  EXPECT_EQ(modeOf("to"), 0640u);
  EXPECT_EQ(modificationTime(statusOf("to")).tv_sec, 1000000000);
  EXPECT_EQ(modificationTime(statusOf("to")).tv_nsec, 123);
  EXPECT_THAT(pathsIn(snapshot()), ElementsAre("from", "to"));
}

TEST_F(FileManagerCopyTest, AnEmptyFileIsCopied) {
  _folder.makeFile("from", "");

  EXPECT_TRUE(copy("from", "to"));

  EXPECT_EQ(statusOf("to").st_size, 0);
}

TEST_F(FileManagerCopyTest, SetIdBitsAreDroppedFromFilesAndFolders) {
  proves("FILES-6");
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
  proves("FILES-6");
  _folder.makeFile("tree/a/b/file", "deep", 0600);
  _folder.makeFile("tree/none", "", isRoot() ? 0 : 0400);
  _folder.makeFolder("tree/empty", 0711);
  _folder.makeFolder("tree/barred", isRoot() ? 0 : 0500);
  _folder.makeLink("tree/link", "a/b/file");
  _folder.makeLink("tree/dangling", "/nowhere/at all");
  _folder.makeLink("tree/outside", "/etc");
  _folder.makeFile("tree/odd \xff\n name", "odd");

  EXPECT_TRUE(copy("tree", "copy"));

  EXPECT_THAT(TreeDiff(snapshot("tree"), snapshot("copy")).lines(), IsEmpty());
}

TEST_F(FileManagerCopyTest, FoldersAndLinksKeepTheirTimes) {
  proves("FILES-6");
  _folder.makeFile("tree/folder/file", "");
  _folder.makeLink("tree/link", "folder");
  setModificationTime("tree/link", 1100000000);
  setModificationTime("tree/folder/file", 1200000000);
  setModificationTime("tree/folder", 1300000000);
  setModificationTime("tree", 1400000000);

  EXPECT_TRUE(copy("tree", "copy"));

  EXPECT_EQ(modificationTime(statusOf("copy/link")).tv_sec, 1100000000);
  EXPECT_EQ(modificationTime(statusOf("copy/folder/file")).tv_sec, 1200000000);
  EXPECT_EQ(modificationTime(statusOf("copy/folder")).tv_sec, 1300000000);
  EXPECT_EQ(modificationTime(statusOf("copy")).tv_sec, 1400000000);
}

TEST_F(FileManagerCopyTest, ALinkIsCopiedAsALink) {
  proves("FILES-6");
  _folder.makeFile("file", "bytes");
  _folder.makeLink("link", "file");
  setModificationTime("link", 1100000000);

  EXPECT_TRUE(copy("link", "copy"));

  EXPECT_EQ(snapshot("copy")["."].kind, "link");
  EXPECT_EQ(snapshot("copy")["."].content, "file");
  EXPECT_EQ(modificationTime(statusOf("copy")).tv_sec, 1100000000);
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
  proves("FILES-6");
  _folder.makeFile("from", "new");
  _folder.makeFile("to", "old");

  EXPECT_FALSE(copy("from", "to", ExistingItem::fail));

  EXPECT_EQ(_error.code, FileError::kExists);
  EXPECT_THAT(_error.description, HasSubstr("File exists"));
  EXPECT_EQ(_folder.content("to"), "old");
}

TEST_F(FileManagerCopyTest, AnExistingItemCountsAsDoneAndStays) {
  proves("FILES-6");
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

TEST_F(FileManagerCopyTest, PipesSocketsAndDevicesAreRefused) {
  proves("FILES-7");
  _folder.makePipe("pipe");
  _folder.makeSocket("socket");

  EXPECT_FALSE(copy("pipe", "to"));
  EXPECT_EQ(_error.code, FileError::kOther);
  EXPECT_EQ(_error.description, "\"" + path("pipe") + "\" cannot be copied to \"" + path("to") +
                                    "\": is not a regular file, folder or link");
  EXPECT_FALSE(copy("socket", "to"));
  EXPECT_THAT(_error.description, HasSubstr("is not a regular file, folder or link"));
  EXPECT_FALSE(_files.copy("/dev/zero", path("to"), ExistingItem::fail, &_error));
  EXPECT_THAT(_error.description, HasSubstr("is not a regular file, folder or link"));
  EXPECT_FALSE(isThere("to"));
}

TEST_F(FileManagerCopyTest, ATreeWithAPipeGetsItsNameWithWhatWasCopied) {
  proves("FILES-7");
  _folder.makePipe("tree/folder/pipe");
  _folder.makeFolder("tree/folder", 0750);
  setModificationTime("tree", 1400000000);

  EXPECT_FALSE(copy("tree", "copy"));

  EXPECT_EQ(_error.code, FileError::kOther);
  EXPECT_EQ(_error.description, "\"" + path("tree/folder/pipe") + "\" cannot be copied to \"" +
                                    path("copy") + "\": is not a regular file, folder or link");
  EXPECT_THAT(pathsIn(snapshot("copy")), ElementsAre("folder"));
  EXPECT_EQ(modeOf("copy/folder"), 0750u);
  EXPECT_EQ(modificationTime(statusOf("copy")).tv_sec, 1400000000);
}

TEST_F(FileManagerCopyTest, NothingIsCopiedAfterTheFirstFailure) {
  proves("FILES-7");
  for (int number = 0; number < 20; ++number) _folder.makeFile("tree/" + std::to_string(number));
  _files.failAt(4, EIO);  // the folder, then two changes for a file

  EXPECT_FALSE(copy("tree", "copy"));

  EXPECT_EQ(pathsIn(snapshot("copy")).size(), 1u);
}

TEST_F(FileManagerCopyTest, AFileThatFailsHalfwayIsNotInThePartialTree) {
  _folder.makeFile("tree/file", "bytes");
  _files.failNext(FileOperation::kWrite, ENOSPC);

  EXPECT_FALSE(copy("tree", "copy"));

  EXPECT_THAT(_error.description, HasSubstr("No space left on device"));
  EXPECT_THAT(pathsIn(snapshot("copy")), IsEmpty());
  EXPECT_TRUE(isThere("copy"));
}

TEST_F(FileManagerCopyTest, TheErrorNamesTheItemBehindLongerNames) {
  _folder.makeFile("tree/a long name/file", "");
  _folder.makePipe("tree/b");

  EXPECT_FALSE(copy("tree", "copy"));

  EXPECT_THAT(_error.description, HasSubstr("\"" + path("tree/b") + "\" cannot"));
}

TEST_F(FileManagerCopyTest, AFolderIsNotCopiedIntoItself) {
  proves("FILES-7");
  _folder.makeFile("tree/folder/file", "");
  _folder.makeLink("alias", "tree/folder");
  const auto before = snapshot();

  EXPECT_FALSE(copy("tree", "tree/copy"));
  EXPECT_EQ(_error.code, FileError::kOther);
  EXPECT_THAT(_error.description, HasSubstr("Invalid argument"));
  EXPECT_FALSE(copy("tree", "tree/folder/copy"));
  EXPECT_FALSE(copy("tree", "alias/copy"));

  EXPECT_THAT(TreeDiff(before, snapshot()).lines(), IsEmpty());
}

TEST_F(FileManagerCopyTest, AFolderIsCopiedBesideItself) {
  _folder.makeFile("tree/file", "x");

  EXPECT_TRUE(copy("tree", "tree copy"));
  EXPECT_EQ(_folder.content("tree copy/file"), "x");
}

TEST_F(FileManagerCopyTest, AFileMayBeCopiedBesideOrBelowAnything) {
  _folder.makeFile("tree/file", "x");
  _folder.makeFolder("tree/folder");

  EXPECT_TRUE(copy("tree/file", "tree/folder/copy"));
  EXPECT_EQ(_folder.content("tree/folder/copy"), "x");
}

TEST_F(FileManagerCopyTest, TheDestinationsParentMustExist) {
  _folder.makeFile("from", "");

  EXPECT_FALSE(copy("from", "missing/to"));

  EXPECT_EQ(_error.code, FileError::kOther);
  EXPECT_THAT(_error.description, HasSubstr("No such file or directory"));
  EXPECT_FALSE(isThere("missing"));
}

TEST_F(FileManagerCopyTest, TheDestinationsParentMayBeALink) {
  _folder.makeFile("from", "x");
  _folder.makeFolder("real");
  _folder.makeLink("parent", "real");

  EXPECT_TRUE(copy("from", "parent/to"));

  EXPECT_EQ(_folder.content("real/to"), "x");
}

TEST_F(FileManagerCopyTest, AFileInTheSourcesPathIsAMissingSource) {
  _folder.makeFile("file", "");

  EXPECT_FALSE(copy("file/below", "to"));

  EXPECT_EQ(_error.code, FileError::kMissing);
}

TEST_F(FileManagerCopyTest, ASourceThatCannotBeLookedAtIsNoMissingSource) {
  EXPECT_FALSE(copy(std::string(300, 'n'), "to"));

  EXPECT_EQ(_error.code, FileError::kOther);
  EXPECT_THAT(_error.description, HasSubstr("File name too long"));
}

TEST_F(FileManagerCopyTest, ADestinationNameThatIsTooLongFails) {
  _folder.makeFile("from", "");

  EXPECT_FALSE(copy("from", std::string(300, 'n')));

  EXPECT_EQ(_error.code, FileError::kOther);
  EXPECT_THAT(pathsIn(snapshot()), ElementsAre("from"));
}

TEST_F(FileManagerCopyTest, EmptyPathsAndZeroBytesFail) {
  _folder.makeFile("from", "");
  const std::string cut = path("from") + std::string(1, '\0') + "rest";

  EXPECT_FALSE(_files.copy("", path("to"), ExistingItem::keep, &_error));
  EXPECT_EQ(_error.code, FileError::kMissing);
  EXPECT_FALSE(_files.copy(cut, path("to"), ExistingItem::keep, &_error));
  EXPECT_EQ(_error.code, FileError::kMissing);
  EXPECT_FALSE(_files.copy(path("from"), "", ExistingItem::keep, &_error));
  EXPECT_EQ(_error.code, FileError::kOther);
  EXPECT_FALSE(_files.copy(path("from"), cut, ExistingItem::keep, &_error));
  EXPECT_EQ(_error.code, FileError::kOther);

  EXPECT_THAT(pathsIn(snapshot()), ElementsAre("from"));
}

TEST_F(FileManagerCopyTest, TheRootIsAnExistingDestination) {
  _folder.makeFile("from", "");

  EXPECT_TRUE(_files.copy(path("from"), "/", ExistingItem::keep, &_error));
  EXPECT_FALSE(_files.copy(path("from"), "//", ExistingItem::fail, &_error));
  EXPECT_EQ(_error.code, FileError::kExists);
}

TEST_F(FileManagerCopyTest, SomebodyQuickerMakesAnExistingFile) {
  _folder.makeFile("from", "new");
  const auto makeFile = [this] { _folder.makeFile("to", "quicker"); };

  _files.beforeNext(FileOperation::kRename, makeFile);
  EXPECT_FALSE(copy("from", "to", ExistingItem::fail));
  EXPECT_EQ(_error.code, FileError::kExists);
  EXPECT_EQ(_folder.content("to"), "quicker");

  ASSERT_TRUE(_files.remove(path("to")));
  _files.beforeNext(FileOperation::kRename, makeFile);
  EXPECT_TRUE(copy("from", "to", ExistingItem::keep));
  EXPECT_EQ(_folder.content("to"), "quicker");
  EXPECT_THAT(pathsIn(snapshot()), ElementsAre("from", "to"));
}

TEST_F(FileManagerCopyTest, SomebodyQuickerMakesAnExistingFolder) {
  _folder.makeFile("from/a/b/file", "new");
  const auto makeFolder = [this] { _folder.makeFolder("to"); };

  _files.beforeNext(FileOperation::kRename, makeFolder);
  EXPECT_FALSE(copy("from", "to", ExistingItem::fail));
  EXPECT_EQ(_error.code, FileError::kExists);
  EXPECT_THAT(pathsIn(snapshot("to")), IsEmpty());

  ASSERT_TRUE(_files.remove(path("to")));
  _files.beforeNext(FileOperation::kRename, makeFolder);
  EXPECT_TRUE(copy("from", "to", ExistingItem::keep));
  EXPECT_THAT(pathsIn(snapshot("to")), IsEmpty());
}

TEST_F(FileManagerCopyTest, OnlyTheItemsOwnOwnerIsAskedFor) {
  _folder.makeFile("folder/file", "x");
  _folder.makeFile("file", "x");
  _folder.makeLink("link", "file");
  std::vector<uid_t> asked;
  const auto mayOwn = [&](uid_t owner) {
    asked.push_back(owner);
    return true;
  };

  for (const char* name : {"folder", "file", "link"}) {
    CopySource source = path(name);
    source.mayOwn = mayOwn;
    EXPECT_TRUE(_files.copy(source, path(std::string("copy of ") + name), ExistingItem::fail));
  }

  EXPECT_THAT(asked, ElementsAre(::geteuid(), ::geteuid(), ::geteuid()));
  EXPECT_EQ(_folder.content("copy of folder/file"), "x");
}

TEST_F(FileManagerCopyTest, AnItemWhoseOwnerDoesNotCountIsNotCopied) {
  _folder.makeFile("folder/file", "x");
  _folder.makeFile("file", "x");
  _folder.makeLink("link", "file");

  for (const char* name : {"folder", "file", "link"}) {
    CopySource source = path(name);
    source.mayOwn = [](uid_t) { return false; };
    EXPECT_FALSE(_files.copy(source, path("to"), ExistingItem::fail, &_error)) << name;
    EXPECT_EQ(_error.code, FileError::kOther);
    EXPECT_EQ(_error.description, "\"" + path(name) + "\" cannot be copied to \"" + path("to") +
                                      "\": belongs to another user");
  }

  EXPECT_THAT(_files.operations(), IsEmpty());
}

TEST_F(FileManagerCopyTest, TheItemWhoseOwnerWasAskedForIsTheOneThatIsCopied) {
  for (const char* name : {"folder", "file", "link"}) {
    _folder.makeFile("folder/file", "good");
    _folder.makeFile("planted/folder/file", "bad");
    _folder.makeFile("file", "good");
    _folder.makeFile("planted/file", "bad");
    _folder.makeLink("link", "folder/file");
    _folder.makeLink("planted/link", "planted/file");
    CopySource source = path(name);
    source.mayOwn = [&](uid_t) {
      std::filesystem::rename(path(name), path("away"));
      std::filesystem::rename(path("planted") + "/" + name, path(name));
      return true;
    };

    EXPECT_TRUE(_files.copy(source, path("to"), ExistingItem::replace)) << name;

    EXPECT_EQ(_folder.content(isThere("to/file") ? "to/file" : "to"), "good") << name;
    for (const char* item : {"folder", "file", "link", "away", "planted"}) removeTree(path(item));
  }
}

TEST_F(FileManagerCopyTest, AFileIsFlushedBeforeItGetsItsNameAndItsFolderAfterwards) {
  proves("FILES-2");
  _folder.makeFile("from", "x");

  EXPECT_TRUE(copy("from", "to"));

  using enum FileOperation;
  EXPECT_THAT(_files.operations(), ElementsAre(kCreateTemporary, kWrite, kSync, kRename, kSync));
}

TEST_F(FileManagerCopyTest, OnlyAModeThatANewFileDoesNotGetIsChanged) {
  const CreationMask mask(022);
  for (const char* name : {"from/a", "from/b"}) _folder.makeFile(name, "", 0644);
  for (const char* name : {"from/c", "from/d"}) _folder.makeFile(name, "", 0755);
  for (const char* name : {"from/e", "from/f"}) _folder.makeFile(name, "", 0664);

  EXPECT_TRUE(copy("from", "to"));

  EXPECT_THAT(TreeDiff(snapshot("from"), snapshot("to")).lines(), IsEmpty());
  using enum FileOperation;
  EXPECT_EQ(std::ranges::count(_files.operations(), kChangeMode), 2 + 1) << "and the folder";
}

TEST_F(FileManagerCopyTest, EveryModeIsKeptUnderEveryMask) {
  proves("FILES-6");
  std::vector<mode_t> modes{0400, 0444, 0600, 0640, 0644, 0664, 0666, 0755, 0777, 01644, 01777};
  std::vector<mode_t> masks{0, 022, 027, 077};
  if (isRoot()) {  // others cannot read what they have closed to themselves
    modes.insert(modes.begin(), 0);
    masks.push_back(0777);
  }
  for (const mode_t mode : modes) {
    const std::string name = std::to_string(mode);
    for (const char* folder : {"from/", "from/below/", "all/below/"})
      _folder.makeFile(folder + name, name, mode);
  }

  for (const mode_t mask : masks) {
    const CreationMask scope(mask);
    EXPECT_TRUE(copy("from", "to")) << mask;
    _files.merge(path("from"), path("all"), path(""));

    EXPECT_THAT(TreeDiff(snapshot("from"), snapshot("to")).lines(), IsEmpty()) << mask;
    EXPECT_THAT(TreeDiff(snapshot("from"), snapshot("all")).lines(), IsEmpty()) << mask;
    removeTree(path("to"));
  }
}

TEST_F(FileManagerCopyTest, ATreeIsFlushedOnce) {
  _folder.makeFile("from/folder/file", "x");

  EXPECT_TRUE(copy("from", "to"));

  using enum FileOperation;
  EXPECT_THAT(_files.operations(),
              ElementsAre(kMakeDirectory, kMakeDirectory, kCreateTemporary, kWrite, kChangeMode,
                          kChangeMode, kSync, kRename, kSync));
}

TEST_F(FileManagerCopyTest, WhateverFailsAFileIsThereWholeOrNotAtAll) {
  proves("FILES-1");
  const CreationMask mask(077);  // so that the mode is a change of its own
  _folder.makeFile("from", "bytes", 0640);

  std::size_t number = 1;
  for (;; ++number) {
    FailingFileManager files(_users);
    files.failAt(number, EIO);
    const bool copied = files.copy(path("from"), path("to"), ExistingItem::fail, &_error);
    if (!files.hasFailed()) break;
    EXPECT_FALSE(copied) << number;
    EXPECT_EQ(_error.code, FileError::kOther) << number;
    EXPECT_THAT(_error.description, HasSubstr("Input/output error")) << number;
    if (isThere("to")) {
      EXPECT_EQ(number, 6u) << "only the flush of the folder comes after the name";
      EXPECT_THAT(TreeDiff(snapshot("from"), snapshot("to")).lines(), IsEmpty());
      removeTree(path("to"));
    }
    EXPECT_THAT(pathsIn(snapshot()), ElementsAre("from")) << number;
  }

  EXPECT_EQ(number, 7u);
}

TEST_F(FileManagerCopyTest, WhateverFailsATreeHoldsWholeFilesOnlyAndNoTemporaryNames) {
  proves("FILES-1");
  const CreationMask mask(077);  // so that the modes are changes of their own
  _folder.makeFile("from/a/file", "bytes", 0640);
  _folder.makeFile("from/b/file", "bytes", 0604);
  _folder.makeLink("from/link", "a");
  const auto whole = snapshot("from");

  std::size_t failures = 0;
  for (std::size_t number = 1;; ++number) {
    FailingFileManager files(_users);
    files.failAt(number, EIO);
    const bool copied = files.copy(path("from"), path("to"), ExistingItem::fail, &_error);
    if (!files.hasFailed()) break;
    ++failures;
    EXPECT_FALSE(copied) << number;
    for (const auto& [name, entry] : snapshot("to")) {
      ASSERT_TRUE(whole.contains(name)) << number << " " << name;
      EXPECT_EQ(entry.content, whole.at(name).content) << number << " " << name;
    }
    for (const std::string& name : pathsIn(snapshot())) {
      EXPECT_THAT(name, Not(HasSubstr(".hotfix-"))) << number;
    }
    removeTree(path("to"));
  }

  EXPECT_EQ(failures, 16u);
}

TEST_F(FileManagerCopyTest, AFailedFlushOfATreeIsAFailureThatKeepsTheTree) {
  _folder.makeFile("from/file", "x");
  _files.failNext(FileOperation::kSync, ENOSPC);

  EXPECT_FALSE(copy("from", "to"));

  EXPECT_THAT(_error.description, HasSubstr("No space left on device"));
  EXPECT_THAT(_error.description, HasSubstr(path("from")));
  EXPECT_EQ(_folder.content("to/file"), "x");
}

TEST_F(FileManagerCopyTest, AFailedCopyOfATreePartTellsTheFirstReason) {
  _folder.makePipe("from/pipe");
  _files.failAlways(FileOperation::kChangeMode, EROFS);

  EXPECT_FALSE(copy("from", "to"));

  EXPECT_THAT(_error.description, HasSubstr("is not a regular file"));
}

TEST_F(FileManagerCopyTest, AFailedCopyOfATreeNamesTheItemThatFailed) {
  _folder.makeFile("from/a", "x");
  _folder.makeFile("from/b", "x");
  _files.beforeNext(FileOperation::kWrite, [this] {
    _files.beforeNext(FileOperation::kWrite,
                      [this] { _files.failNext(FileOperation::kWrite, ENOSPC); });
  });

  EXPECT_FALSE(copy("from", "to"));

  EXPECT_TRUE(_files.hasFailed());
  EXPECT_THAT(_error.description,
              ::testing::AnyOf(HasSubstr("\"" + path("from/a") + "\" cannot be copied"),
                               HasSubstr("\"" + path("from/b") + "\" cannot be copied")));
}

TEST_F(FileManagerCopyTest, AnOrdinaryUsersCopyBelongsToHim) {
  const std::string folder = _folder.makeFolder("work");
  _folder.makeFile("from/file", "x", 0664);
  giveToOrdinaryUser(folder);

  EXPECT_TRUE(asOrdinaryUser(
      [&] { return _files.copy(path("from"), path("work/to"), ExistingItem::fail); }));

  EXPECT_EQ(statusOf("work/to").st_uid, statusOf("work").st_uid);
  EXPECT_EQ(statusOf("work/to/file").st_uid, statusOf("work").st_uid);
  EXPECT_EQ(modeOf("work/to/file"), 0664u);
}

TEST_F(FileManagerCopyTest, AnUnreadableFileIsAnErrorForAnOrdinaryUser) {
  const std::string folder = _folder.makeFolder("work");
  giveToOrdinaryUser(folder);
  giveToOrdinaryUser(_folder.makeFile("from", "x", 0));

  EXPECT_TRUE(asOrdinaryUser([&] {
    FileError error;
    return !_files.copy(path("from"), path("work/to"), ExistingItem::fail, &error) &&
           error.code == FileError::kOther &&
           error.description.find("Permission denied") != std::string::npos;
  }));

  EXPECT_FALSE(isThere("work/to"));
}

TEST_F(FileManagerCopyTest, AnUnreadableFolderIsNotMadeByAnOrdinaryUser) {
  const std::string folder = _folder.makeFolder("work");
  giveToOrdinaryUser(folder);
  giveToOrdinaryUser(_folder.makeFolder("from", 0));

  EXPECT_TRUE(asOrdinaryUser(
      [&] { return !_files.copy(path("from"), path("work/to"), ExistingItem::fail); }));

  EXPECT_FALSE(isThere("work/to"));
}

TEST_F(FileManagerCopyTest, ACopyByRootBelongsToRoot) {
  if (!isRoot()) GTEST_SKIP() << "only root can give files away";
  giveToOrdinaryUser(_folder.makeFile("from", "x"));

  EXPECT_TRUE(copy("from", "to"));

  EXPECT_EQ(statusOf("to").st_uid, 0u);
}

}  // namespace
}  // namespace installer::test
