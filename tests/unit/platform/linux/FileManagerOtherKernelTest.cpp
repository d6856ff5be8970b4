#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <functional>
#include <set>
#include <sstream>
#include <string>

#include "platform/files/TemporaryNames.h"
#include "support/ChildRun.h"
#include "support/Proves.h"
#include "unit/platform/files/FileManagerFixture.h"
#include "unit/platform/linux/RefusedCall.h"

namespace installer::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Optional;

constexpr long kChangeModeCall = 452;  // fchmodat2, newer than some headers

// What an older kernel, a container's filter or a simple file system answers.
class FileManagerOtherKernelTest : public FileManagerFixture {
 protected:
  void SetUp() override {
    if (!canRefuseCalls()) GTEST_SKIP() << "this kernel cannot refuse calls";
  }

  // Runs the steps with the call answered by the error.
  static bool without(long call, int error, const std::function<bool()>& steps) {
    return inChild([&] { return refuseCall(call, error) && steps(); });
  }

  // The steps, with descriptors that only name an item refused.
  static bool withoutItems(int error, const std::function<bool()>& steps) {
    constexpr std::uint32_t kNaming = O_PATH | O_NOFOLLOW | O_CLOEXEC;
    return inChild([&] { return refuseCallWith(SYS_openat, 2, kNaming, error) && steps(); });
  }

  bool copy(std::string_view from, std::string_view to, FileError* error = nullptr) {
    return _files.copy(path(from), path(to), ExistingItem::fail, error);
  }
};

TEST_F(FileManagerOtherKernelTest, CopiesGetTheirNamesWithoutAKeepingRename) {
  _folder.makeFile("file", "x", 0640);
  _folder.makeLink("tree/link", "nowhere");
  _folder.makeFile("tree/file", "x");

  for (const int error : {EINVAL, ENOSYS}) {
    EXPECT_TRUE(without(SYS_renameat2, error, [&] {
      return copy("file", "file copy") && copy("tree", "tree copy") &&
             copy("tree/link", "link copy");
    })) << error;

    EXPECT_THAT(TreeDiff(snapshot("file"), snapshot("file copy")).lines(), IsEmpty());
    EXPECT_THAT(TreeDiff(snapshot("tree"), snapshot("tree copy")).lines(), IsEmpty());
    EXPECT_EQ(snapshot("link copy")["."].content, "nowhere");
    EXPECT_EQ(statusOf("file copy").st_nlink, 1u);
    for (const std::string name : {"file copy", "tree copy", "link copy"}) removeTree(path(name));
  }
}

// As on a system where no descriptor can name a socket, pipe or device.
TEST_F(FileManagerOtherKernelTest, SocketsAndPipesThatCannotBeOpenedAreGivenAwayAllTheSame) {
  proves("RIGHTS-1");
  if (!isRoot()) GTEST_SKIP() << "only root can give files away";
  _folder.makePipe("tree/pipe");
  _folder.makeSocket("tree/socket");
  _users.add({"ada", 1234, 2345, "/home/ada"});

  EXPECT_TRUE(withoutItems(EOPNOTSUPP, [&] {
    return _files.changeAttributesBelow(path("tree"), {"ada", "admin", 0775});
  }));

  for (const std::string name : {"tree/pipe", "tree/socket"}) {
    EXPECT_EQ(statusOf(name).st_uid, 1234u) << name;
    EXPECT_EQ(statusOf(name).st_gid, 2345u) << name;
    EXPECT_EQ(modeOf(name), 0775u) << name;
    EXPECT_EQ(statusOf(name).st_nlink, 1u) << name;
  }
  EXPECT_THAT(_files.list(path("tree")), Optional(ElementsAre("pipe", "socket")));
}

TEST_F(FileManagerOtherKernelTest, WhatCanBeOpenedIsNotChangedByAnotherName) {
  _folder.makeFile("files/file", "", 0600);
  _folder.makePipe("pipes/pipe");
  const auto change = [&](std::string_view folder) {
    return _files.changeAttributesBelow(path(folder), {"self", "own", 0775});
  };

  EXPECT_TRUE(withoutItems(EOPNOTSUPP, [&] { return !change("files"); })) << "a file";
  EXPECT_TRUE(withoutItems(EACCES, [&] { return !change("pipes"); })) << "another error";

  EXPECT_EQ(modeOf("files/file"), 0600u);
  EXPECT_NE(modeOf("pipes/pipe"), 0775u);
  EXPECT_THAT(_files.list(path("files")), Optional(ElementsAre("file")));
}

TEST_F(FileManagerOtherKernelTest, APipeOfSomebodyElseIsNotGivenAwayByAnotherName) {
  if (!isRoot()) GTEST_SKIP() << "only root can give files away";
  _folder.makePipe("tree/pipe");
  ASSERT_EQ(::link(path("tree/pipe").c_str(), path("other").c_str()), 0);
  _users.add({"ada", 1234, 2345, "/home/ada"});

  EXPECT_TRUE(withoutItems(EOPNOTSUPP, [&] {
    return !_files.changeAttributesBelow(path("tree"), {"ada", "admin", 0775});
  }));

  EXPECT_NE(statusOf("tree/pipe").st_uid, 1234u);
  EXPECT_THAT(_files.list(path("tree")), Optional(ElementsAre("pipe")));
}

TEST_F(FileManagerOtherKernelTest, WithoutAnotherNameAPipeStaysAndIsToldOf) {
  _folder.makePipe("tree/pipe");

  for (const long call : {SYS_linkat, SYS_mkdirat}) {
    EXPECT_TRUE(withoutItems(EOPNOTSUPP, [&] {
      return refuseCall(call, EPERM) &&
             !_files.changeAttributesBelow(path("tree"), {"self", "own", 0775});
    })) << call;
  }

  EXPECT_NE(modeOf("tree/pipe"), 0775u);
  EXPECT_THAT(_files.list(path("tree")), Optional(ElementsAre("pipe")));
}

TEST_F(FileManagerOtherKernelTest, CopiesGetTheirNamesWithoutSecondNamesToo) {
  _folder.makeFile("file", "x", 0640);

  for (const int error : {EPERM, EOPNOTSUPP}) {
    EXPECT_TRUE(without(SYS_renameat2, EINVAL, [&] {
      return without(SYS_linkat, error, [&] { return copy("file", "file copy"); });
    })) << error;

    EXPECT_THAT(TreeDiff(snapshot("file"), snapshot("file copy")).lines(), IsEmpty());
    removeTree(path("file copy"));
  }
}

TEST_F(FileManagerOtherKernelTest, SomebodyQuickerIsNotReplacedWithoutSecondNames) {
  _folder.makeFile("file", "new");

  EXPECT_TRUE(without(SYS_renameat2, EINVAL, [&] {
    return without(SYS_linkat, EPERM, [&] {
      _files.beforeNext(FileOperation::kRename, [this] { _folder.makeFile("to", "theirs"); });
      FileError error;
      return !copy("file", "to", &error) && error.code == FileError::kExists;
    });
  }));

  EXPECT_EQ(snapshot("to")["."].content, "theirs");
}

TEST_F(FileManagerOtherKernelTest, AnotherFailureOfTheSecondNameIsAFailure) {
  _folder.makeFile("file", "new");

  EXPECT_TRUE(without(SYS_renameat2, EINVAL, [&] {
    return without(SYS_linkat, EIO, [&] { return !copy("file", "to"); });
  }));

  EXPECT_THAT(pathsIn(snapshot()), ElementsAre("file"));
}

TEST_F(FileManagerOtherKernelTest, AFileThatOthersKeepFromBeingClaimedIsWrittenAllTheSame) {
  using enum FileOperation;
  EXPECT_TRUE(without(SYS_flock, EWOULDBLOCK, [&] {
    const bool written = _files.write(path("file"), "x");
    return written && std::ranges::count(_files.operations(), kCreateTemporary) == 8 &&
           std::ranges::count(_files.operations(), kUnlink) == 7;
  }));

  EXPECT_THAT(pathsIn(snapshot()), ElementsAre("file"));
}

TEST_F(FileManagerOtherKernelTest, WithoutClaimsFilesAreWrittenAndLeftOversStay) {
  _folder.makeFile("folder/.hotfix-1");

  EXPECT_TRUE(without(SYS_flock, ENOLCK, [&] {
    _files.removeLeftOvers(path("folder"), LeftOvers::within);
    return _files.operations().empty() && _files.write(path("file"), "x") &&
           std::ranges::count(_files.operations(), FileOperation::kCreateTemporary) == 1;
  }));

  EXPECT_THAT(pathsIn(snapshot()), ElementsAre("file", "folder", "folder/.hotfix-1"));
  removeTree(path("folder"));
}

TEST_F(FileManagerOtherKernelTest, AFileSystemWithoutLocksIsTold) {
  proves("LOCK-8");
  for (const int error : {ENOLCK, ENOSYS, EOPNOTSUPP}) {
    EXPECT_TRUE(without(SYS_flock, error, [&] {
      FileError told;
      const LockAttempt attempt = _files.tryLock(path(""), &told);
      return !attempt.busy && !attempt.hold && told.code == FileError::kNoLocks;
    })) << error;
  }
}

TEST_F(FileManagerOtherKernelTest, HeldFoldersAreNotLeftWithoutALookUpBeneath) {
  proves("FILES-23");
  _folder.makeFile("out/guarded", "secret");
  _folder.makeFile("home/deploy/file", "own");
  _folder.makeLink("home/inside", "deploy");
  _folder.makeLink("home/outside", "../out");

  for (const int error : {ENOSYS, EPERM}) {
    EXPECT_TRUE(without(SYS_openat2, error, [&] {
      const auto hold = _files.hold(path("home"), std::nullopt);
      return _files.read(path("home/inside/file")) == "own" &&
             _files.write(path("home/inside/file"), "own") &&
             !_files.read(path("home/outside/guarded")) &&
             !_files.write(path("home/outside/new"), "x");
    })) << error;
  }
  EXPECT_THAT(pathsIn(snapshot("out")), ElementsAre("guarded"));
}

TEST_F(FileManagerOtherKernelTest, SomebodyQuickerIsNotReplacedWithoutAKeepingRename) {
  _folder.makeFile("file", "new");
  _folder.makeFile("tree/file", "new");
  const auto quicker = [this](FileError* error, std::string_view from) {
    _files.beforeNext(FileOperation::kRename, [this] { _folder.makeFolder("to"); });
    return !copy(from, "to", error) && error->code == FileError::kExists;
  };

  for (const std::string from : {"file", "tree"}) {
    EXPECT_TRUE(without(SYS_renameat2, EINVAL, [&] {
      FileError error;
      return quicker(&error, from);
    })) << from;

    EXPECT_THAT(pathsIn(snapshot("to")), IsEmpty()) << from;
    removeTree(path("to"));
  }
  EXPECT_THAT(pathsIn(snapshot()), ElementsAre("file", "tree", "tree/file"));
}

TEST_F(FileManagerOtherKernelTest, AnotherFailureOfTheRenameIsAFailure) {
  _folder.makeFile("file", "new");

  EXPECT_TRUE(without(SYS_renameat2, EACCES, [&] {
    FileError error;
    return !copy("file", "to", &error) &&
           error.description.find("Permission denied") != std::string::npos;
  }));

  EXPECT_FALSE(isThere("to"));
}

TEST_F(FileManagerOtherKernelTest, BytesAreCopiedWithoutTheKernelsHelp) {
  const std::string large(1'000'000, 'x');
  const std::string small(4'000, 'y');
  _folder.makeFile("from/large", large);
  _folder.makeFile("from/small", small);

  for (const long call : {SYS_copy_file_range, SYS_sendfile}) {
    for (const int error : {ENOSYS, EXDEV, EOPNOTSUPP, EINVAL}) {
      EXPECT_TRUE(without(call, error, [&] { return copy("from", "to"); })) << call << error;

      EXPECT_EQ(_folder.content("to/large"), large) << call << error;
      EXPECT_EQ(_folder.content("to/small"), small) << call << error;
      removeTree(path("to"));
    }
  }
}

TEST_F(FileManagerOtherKernelTest, FilesThatHideTheirSizeAreCopiedWhole) {
  ASSERT_TRUE(_files.copy("/proc/self/status", path("to"), ExistingItem::fail));

  EXPECT_THAT(_folder.content("to"), ::testing::HasSubstr("Pid:"));
}

TEST_F(FileManagerOtherKernelTest, ModesAreChangedWithoutTheNewestCall) {
  _folder.makeFile("tree/a/file", "", 0600);
  _folder.makeLink("tree/link", "a");

  for (const int error : {ENOSYS, EPERM}) {
    ASSERT_EQ(::chmod(path("tree/a/file").c_str(), 0600), 0);
    EXPECT_TRUE(without(kChangeModeCall, error, [&] {
      return _files.changeAttributesBelow(path("tree"), {"self", "own", 0775});
    })) << error;

    EXPECT_EQ(modeOf("tree/a/file"), 0775u) << error;
    EXPECT_EQ(modeOf("tree/a"), 0775u) << error;
  }
}

TEST_F(FileManagerOtherKernelTest, ModesAreChangedByTheNewestCallAlone) {
  if (::syscall(kChangeModeCall, -1, "", 0, AT_EMPTY_PATH) != 0 && errno == ENOSYS)
    GTEST_SKIP() << "this kernel does not know the call";
  _folder.makeFile("tree/file", "", 0600);

  EXPECT_TRUE(without(SYS_fchmodat, EIO, [&] {
    return refuseCall(SYS_chmod, EIO) &&
           _files.changeAttributesBelow(path("tree"), {"self", "own", 0775});
  }));
  EXPECT_EQ(modeOf("tree/file"), 0775u);
}

TEST_F(FileManagerOtherKernelTest, WithoutRandomNumbersThereAreStillNames) {
  _folder.makeFile("from/a", "new");
  _folder.makeFile("from/b", "new");
  _folder.makeFile("to/a", "old");
  _folder.makeFile("to/b", "old");

  EXPECT_TRUE(without(SYS_getrandom, ENOSYS, [&] {
    _files.merge(path("from"), path("to"), path(""));
    return _files.write(path("file"), "new");
  }));

  EXPECT_EQ(_folder.content("to/a"), "new");
  EXPECT_EQ(_folder.content("to/b"), "new");
  EXPECT_EQ(_folder.content("file"), "new");
}

// Two that have begun at once have numbers that lie close together.
TEST_F(FileManagerOtherKernelTest, WithoutRandomNumbersProcessesHaveNamesOfTheirOwn) {
  const auto names = [] {
    TemporaryNames chosen;
    std::string lines;
    for (int number = 0; number < 4000; ++number) lines += chosen.next(AT_FDCWD) + "\n";
    return lines;
  };

  EXPECT_TRUE(without(SYS_getrandom, ENOSYS, [&] {
    const bool isWritten = inChild([&] { return !_folder.makeFile("other", names()).empty(); });
    return isWritten && !_folder.makeFile("own", names()).empty();
  }));

  std::set<std::string> all;
  std::istringstream both(_folder.content("own") + _folder.content("other"));
  for (std::string name; std::getline(both, name);) all.insert(name);
  EXPECT_EQ(all.size(), 8000u);
}

struct Refusal {
  std::string name;
  long call;
  bool (*fails)(PosixFileManager& files, const TemporaryFolder& folder);
};

class FileManagerRefusalTest : public FileManagerOtherKernelTest,
                               public ::testing::WithParamInterface<Refusal> {};

TEST_P(FileManagerRefusalTest, IsAFailureThatLeavesNothing) {
  proves("FILES-2");
  const CreationMask mask(077);  // so that modes are changes of their own
  _folder.makeFile("file", "old");
  _folder.makeFile("tree/file", "old", 0600);
  _folder.makeLink("link", "nowhere");
  const auto before = snapshot();

  EXPECT_TRUE(without(GetParam().call, EIO, [&] { return GetParam().fails(_files, _folder); }));

  EXPECT_THAT(TreeDiff(before, snapshot()).lines(), IsEmpty());
}

bool writeFails(PosixFileManager& files, const TemporaryFolder& folder) {
  return !files.write(folder.path("file"), "new");
}

bool copyFails(PosixFileManager& files, const TemporaryFolder& folder) {
  FileError error;
  return !files.copy(folder.path("file"), folder.path("copy"), ExistingItem::fail, &error) &&
         error.description.find("Input/output error") != std::string::npos;
}

bool readingCopyFails(PosixFileManager& files, const TemporaryFolder& folder) {
  return refuseCall(SYS_sendfile, EIO) && copyFails(files, folder);
}

bool linkCopyFails(PosixFileManager& files, const TemporaryFolder& folder) {
  FileError error;
  return !files.copy(folder.path("link"), folder.path("copy"), ExistingItem::fail, &error) &&
         error.description.find("Input/output error") != std::string::npos;
}

bool treeCopyFails(PosixFileManager& files, const TemporaryFolder& folder) {
  return !files.copy(folder.path("tree"), folder.path("copy"), ExistingItem::fail);
}

bool readFails(PosixFileManager& files, const TemporaryFolder& folder) {
  return !files.read(folder.path("file"));
}

bool listFails(PosixFileManager& files, const TemporaryFolder& folder) {
  return !files.list(folder.path("tree"));
}

bool walkFails(PosixFileManager& files, const TemporaryFolder& folder) {
  return !files.changeAttributesBelow(folder.path("tree"), {"self", "own", 0600});
}

bool folderFails(PosixFileManager& files, const TemporaryFolder& folder) {
  return !files.createDirectory(folder.path("new"), Intermediates::refuse);
}

bool ownedFolderFails(PosixFileManager& files, const TemporaryFolder& folder) {
  return !files.createDirectory(folder.path("new"), Intermediates::refuse,
                                FileAttributes{"self", "own", 0750});
}

bool removalFails(PosixFileManager& files, const TemporaryFolder& folder) {
  return !files.remove(folder.path("tree"));
}

bool lockFails(PosixFileManager& files, const TemporaryFolder& folder) {
  FileError error;
  const LockAttempt attempt = files.tryLock(folder.path("tree"), &error);
  return !attempt.busy && !attempt.hold && error.code == FileError::kOther &&
         error.description ==
             "\"" + folder.path("tree") + "\" cannot be locked: Input/output error";
}

INSTANTIATE_TEST_SUITE_P(
    OfTheSystem, FileManagerRefusalTest,
    ::testing::Values(
        Refusal{"Write", SYS_write, writeFails}, Refusal{"WriteFlush", SYS_fsync, writeFails},
        Refusal{"WriteMode", SYS_fchmod, writeFails},
        Refusal{"WriteRename", SYS_renameat, writeFails},
        Refusal{"CopyRead", SYS_read, readingCopyFails}, Refusal{"CopyFlush", SYS_fsync, copyFails},
        Refusal{"CopyMode", SYS_fchmod, copyFails}, Refusal{"CopyRename", SYS_renameat2, copyFails},
        Refusal{"LinkCopyRead", SYS_readlinkat, linkCopyFails},
        Refusal{"LinkCopyMake", SYS_symlinkat, linkCopyFails},
        Refusal{"TreeCopyMake", SYS_mkdirat, treeCopyFails},
        Refusal{"TreeCopyRename", SYS_renameat2, treeCopyFails},
        Refusal{"Read", SYS_read, readFails}, Refusal{"List", SYS_getdents64, listFails},
        Refusal{"Walk", SYS_getdents64, walkFails}, Refusal{"Folder", SYS_mkdirat, folderFails},
        Refusal{"OwnedFolderOwner", SYS_fchown, ownedFolderFails},
        Refusal{"OwnedFolderMode", SYS_fchmod, ownedFolderFails},
        Refusal{"Removal", SYS_unlinkat, removalFails}, Refusal{"Lock", SYS_flock, lockFails}),
    [](const auto& parameter) { return parameter.param.name; });

TEST_F(FileManagerOtherKernelTest, ATreeWhoseFlushFailsIsAFailureWithTheTreeInPlace) {
  _folder.makeFile("tree/file", "x");

  EXPECT_TRUE(without(SYS_syncfs, EIO, [&] { return !copy("tree", "to"); }));

  EXPECT_EQ(_folder.content("to/file"), "x");
}

TEST_F(FileManagerOtherKernelTest, ALogThatTheSystemCannotEmptyIsMadeAnew) {
  _folder.makeFile("log", "old");

  EXPECT_TRUE(without(SYS_ftruncate, EIO, [&] { return _files.openLog(path("log")) >= 0; }));

  EXPECT_EQ(_folder.content("log"), "");
}

TEST_F(FileManagerOtherKernelTest, AWalkThatTheSystemRefusesIsAFailure) {
  _folder.makeFile("tree/file", "", 0600);

  EXPECT_TRUE(without(kChangeModeCall, EIO, [&] {
    return refuseCall(SYS_fchmodat, EIO) && refuseCall(SYS_chmod, EIO) &&
           !_files.changeAttributesBelow(path("tree"), {"self", "own", 0775});
  }));
  EXPECT_EQ(modeOf("tree/file"), 0600u);
}

TEST_F(FileManagerOtherKernelTest, AnOwnerThatTheSystemRefusesIsAFailure) {
  if (!isRoot()) GTEST_SKIP() << "only root can give files away";
  _folder.makeFile("tree/file", "", 0775);
  _users.add({"ada", 1234, 2345, ""});

  EXPECT_TRUE(without(SYS_fchownat, EIO, [&] {
    return !_files.changeAttributesBelow(path("tree"), {"ada", "admin", 0775});
  }));
}

}  // namespace
}  // namespace installer::test
