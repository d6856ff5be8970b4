#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string>

#include "support/ChildRun.h"
#include "support/FolderHolder.h"
#include "support/Memory.h"
#include "support/Proves.h"
#include "unit/platform/files/FileManagerFixture.h"

namespace installer::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class FileManagerLogTest : public FileManagerFixture {
 protected:
  // Opens the log, writes one line and closes it; false when it could not be had.
  bool logLine(std::string_view relative) {
    const int log = _files.openLog(path(relative));
    if (log < 0) return false;
    const bool written = ::write(log, "line", 4) == 4;
    return ::close(log) == 0 && written;
  }
};

TEST_F(FileManagerLogTest, ANewLogIsReadableForAllWhateverTheMask) {
  const CreationMask mask(077);

  EXPECT_TRUE(logLine("log"));

  EXPECT_EQ(_folder.content("log"), "line");
  EXPECT_EQ(modeOf("log"), 0644u);
}

TEST_F(FileManagerLogTest, OurOwnLogIsEmptiedAndKept) {
  proves("TMP-2");
  _folder.makeFile("log", "a longer text of an earlier run", 0600);
  const auto before = statusOf("log");

  EXPECT_TRUE(logLine("log"));

  EXPECT_EQ(_folder.content("log"), "line");
  EXPECT_EQ(statusOf("log").st_ino, before.st_ino);
  EXPECT_EQ(modeOf("log"), 0600u);
}

TEST_F(FileManagerLogTest, LogThatAnotherRunEmptiesIsWrittenOnAtItsNewEnd) {
  proves("LOG-4");
  for (const char* name : {"new", "old"}) {
    if (name == std::string("old")) _folder.makeFile("old", "of an earlier run");
    const int first = _files.openLog(path(name));
    ASSERT_EQ(::write(first, "first\n", 6), 6);

    const int second = _files.openLog(path(name));
    ASSERT_EQ(::write(second, "second\n", 7), 7);
    ASSERT_EQ(::write(first, "first\n", 6), 6);

    EXPECT_EQ(_folder.content(name), "second\nfirst\n");
    ::close(first);
    ::close(second);
  }
}

TEST_F(FileManagerLogTest, ALinkIsRemovedAndItsTargetStays) {
  proves("TMP-2");
  _folder.makeFile("target", "old");
  _folder.makeLink("log", "target");
  _folder.makeLink("dangling", "nowhere");

  EXPECT_TRUE(logLine("log"));
  EXPECT_TRUE(logLine("dangling"));

  EXPECT_EQ(snapshot("log")["."].kind, "file");
  EXPECT_EQ(_folder.content("target"), "old");
  EXPECT_FALSE(isThere("nowhere"));
}

TEST_F(FileManagerLogTest, AFileWithASecondNameIsNotEmptied) {
  proves("TMP-2");
  _folder.makeFile("precious", "old");
  _folder.makeHardLink("log", "precious");

  EXPECT_TRUE(logLine("log"));

  EXPECT_EQ(_folder.content("precious"), "old");
  EXPECT_EQ(_folder.content("log"), "line");
}

TEST_F(FileManagerLogTest, PipesAndSocketsAreRemovedUnopened) {
  proves("TMP-2");
  _folder.makePipe("pipe");
  _folder.makeSocket("socket");

  EXPECT_TRUE(logLine("pipe"));
  EXPECT_TRUE(logLine("socket"));

  EXPECT_EQ(_folder.content("pipe"), "line");
  EXPECT_EQ(_folder.content("socket"), "line");
}

TEST_F(FileManagerLogTest, AForeignFileIsReplaced) {
  proves("TMP-2");
  if (!isRoot()) GTEST_SKIP() << "needs a file of somebody else";
  giveToOrdinaryUser(_folder.makeFile("log", "old", 0666));
  const auto before = statusOf("log");

  EXPECT_TRUE(logLine("log"));

  EXPECT_NE(statusOf("log").st_ino, before.st_ino);
  EXPECT_EQ(statusOf("log").st_uid, 0u);
  EXPECT_EQ(modeOf("log"), 0644u);
}

TEST_F(FileManagerLogTest, AFileThatCannotBeOpenedIsReplaced) {
  giveToOrdinaryUser(_folder.makeFolder("work"));
  giveToOrdinaryUser(_folder.makeFile("work/log", "old", 0));

  EXPECT_TRUE(asOrdinaryUser([&] { return logLine("work/log"); }));

  EXPECT_EQ(_folder.content("work/log"), "line");
  EXPECT_EQ(modeOf("work/log"), 0644u);
}

TEST_F(FileManagerLogTest, AFolderInTheWayStays) {
  proves("LOG-8");
  _folder.makeFile("log/file", "x");
  _folder.makeFolder("empty");

  EXPECT_FALSE(logLine("log"));
  EXPECT_FALSE(logLine("empty"));

  EXPECT_THAT(pathsIn(snapshot()), ElementsAre("empty", "log", "log/file"));
}

TEST_F(FileManagerLogTest, WithoutAFolderThereIsNoLog) {
  EXPECT_FALSE(logLine("missing/log"));
  EXPECT_EQ(_files.openLog(""), -1);
  EXPECT_EQ(_files.openLog("/"), -1);

  EXPECT_THAT(pathsIn(snapshot()), IsEmpty());
}

TEST_F(FileManagerLogTest, AClosedLogTakesNoMoreLines) {
  const int log = _files.openLog(path("log"));
  ASSERT_EQ(::write(log, "x", 1), 1);

  _files.closeLog(log);
  _files.closeLog(-1);

  EXPECT_EQ(::write(log, "y", 1), -1);
  EXPECT_EQ(_folder.content("log"), "x");
}

TEST_F(FileManagerLogTest, AForeignFileInASharedFolderCannotBeHad) {
  if (!isRoot()) GTEST_SKIP() << "needs files of somebody else";
  _folder.makeFile("shared/log", "old", 0666);
  ASSERT_EQ(::chmod(path("shared").c_str(), 01777), 0);

  EXPECT_TRUE(asOrdinaryUser([&] { return _files.openLog(path("shared/log")) == -1; }));

  EXPECT_EQ(_folder.content("shared/log"), "old");
}

TEST_F(FileManagerLogTest, ALogThatCannotBeEmptiedIsReplaced) {
  _folder.makeFile("log", "old");
  _files.failNext(FileOperation::kWrite, EIO);

  EXPECT_TRUE(logLine("log"));

  EXPECT_EQ(_folder.content("log"), "line");
}

TEST_F(FileManagerLogTest, ALogThatCannotBeRemovedOrMadeCannotBeHad) {
  _folder.makeLink("log", "target");
  _files.failNext(FileOperation::kUnlink, EPERM);
  EXPECT_FALSE(logLine("log"));

  _files.failNext(FileOperation::kCreateTemporary, ENOSPC);
  EXPECT_FALSE(logLine("other"));

  EXPECT_THAT(pathsIn(snapshot()), ElementsAre("log"));
}

TEST_F(FileManagerLogTest, ALogWhoseModeCannotBeSetIsStillALog) {
  _files.failNext(FileOperation::kChangeMode, EPERM);

  EXPECT_TRUE(logLine("log"));
}

TEST_F(FileManagerLogTest, ALinkPutThereAtTheLastMomentIsNotFollowed) {
  proves("TMP-2");
  _folder.makeFile("target", "old");
  _files.beforeNext(FileOperation::kCreateTemporary, [this] { _folder.makeLink("log", "target"); });

  EXPECT_FALSE(logLine("log"));

  EXPECT_EQ(_folder.content("target"), "old");
}

class FileManagerLockTest : public FileManagerFixture {};

TEST_F(FileManagerLockTest, AFreeFolderIsLockedAsLongAsItIsHeld) {
  proves("LOCK-2");
  const std::string folder = _folder.makeFolder("folder");

  LockAttempt attempt = _files.tryLock(folder);
  EXPECT_FALSE(attempt.busy);
  EXPECT_TRUE(isLocked(folder));
  const auto second = attempt.hold;
  attempt.hold.reset();
  EXPECT_TRUE(isLocked(folder)) << "a copy is held";
}

TEST_F(FileManagerLockTest, TheEndOfTheHoldIsTheEndOfTheLock) {
  const std::string folder = _folder.makeFolder("folder");

  EXPECT_TRUE(_files.tryLock(folder).hold);
  EXPECT_FALSE(isLocked(folder));

  EXPECT_TRUE(_files.tryLock(folder).hold) << "it can be taken again";
}

TEST_F(FileManagerLockTest, TheEndOfTheProcessIsTheEndOfTheLock) {
  proves("LOCK-3");
  const std::string folder = _folder.makeFolder("folder");

  EXPECT_TRUE(inChild([&] {
    static const LockAttempt attempt = _files.tryLock(folder);
    return isLocked(folder);
  }));

  EXPECT_FALSE(isLocked(folder));
}

TEST_F(FileManagerLockTest, AHeldFolderIsBusy) {
  proves("LOCK-2");
  const std::string folder = _folder.makeFolder("folder");
  const FolderHolder other(folder);

  const LockAttempt attempt = _files.tryLock(folder);

  EXPECT_TRUE(attempt.busy);
  EXPECT_FALSE(attempt.hold);
}

TEST_F(FileManagerLockTest, AFolderThatThisProcessHoldsIsHeldOnceMore) {
  proves("LOCK-4");
  const std::string folder = _folder.makeFolder("folder");
  _folder.makeLink("alias", "folder");
  MadeUpUsers users;
  PosixFileManager other(users);

  LockAttempt first = _files.tryLock(folder);
  LockAttempt second = _files.tryLock(folder + "/");
  LockAttempt third = other.tryLock(path("alias"));
  EXPECT_TRUE(first.hold && second.hold && third.hold);
  first.hold.reset();
  second.hold.reset();
  EXPECT_TRUE(isLocked(folder));
  third.hold.reset();

  EXPECT_FALSE(isLocked(folder));
}

TEST_F(FileManagerLockTest, NothingIsKeptOfFoldersThatAreHeldNoMore) {
  std::size_t turns = 0;
  std::size_t held = 0;

  const std::ptrdiff_t kept = bytesKeptBy([&] {
    const std::string folder = _folder.makeFolder(fmt::format("folder{}", ++turns));
    if (_files.tryLock(folder).hold) ++held;
  });

  EXPECT_EQ(held, turns);
  EXPECT_LT(kept, 2000);  // what the library itself keeps
}

TEST_F(FileManagerLockTest, TwoFoldersAreTwoLocks) {
  proves("LOCK-2");
  const std::string one = _folder.makeFolder("one");
  const std::string two = _folder.makeFolder("two");

  const LockAttempt first = _files.tryLock(one);
  EXPECT_FALSE(isLocked(two));
  LockAttempt second = _files.tryLock(two);
  EXPECT_TRUE(isLocked(two));
  second.hold.reset();

  EXPECT_TRUE(isLocked(one));
  EXPECT_FALSE(isLocked(two));
}

TEST_F(FileManagerLockTest, WhatIsNoFolderCannotBeLockedAndIsNotBusy) {
  proves("LOCK-2");
  for (const std::string& item :
       {_folder.makeFile("file"), _folder.makePipe("pipe"), path("missing"), std::string(),
        path("") + std::string("\0x", 2)}) {
    FileError error;
    const LockAttempt attempt = _files.tryLock(item, &error);
    EXPECT_FALSE(attempt.busy) << item;
    EXPECT_FALSE(attempt.hold) << item;
    EXPECT_EQ(error.code, FileError::kMissing) << item;
    EXPECT_FALSE(_files.tryLock(item).hold) << item << ", and nobody asks why";
  }
  EXPECT_FALSE(isThere("missing"));
}

TEST_F(FileManagerLockTest, AFolderThatIsKeptFromUsIsNoMissingOne) {
  proves("LOCK-8");
  _folder.makeFolder("home");
  _folder.makeFolder("out");
  _folder.makeLink("home/link", "../out");
  _folder.makeLink("loop", "loop");
  const auto hold = _files.hold(path("home"), std::nullopt);

  for (const std::string& item : {path("home/link"), path("loop"), path(std::string(300, 'x'))}) {
    FileError error;
    EXPECT_FALSE(_files.tryLock(item, &error).hold) << item;
    EXPECT_EQ(error.code, FileError::kClosed) << item;
  }
}

TEST_F(FileManagerLockTest, AFolderThatMayNotBeReadIsKeptFromUs) {
  proves("LOCK-8");
  giveToOrdinaryUser(_folder.makeFolder("folder", 0300));

  EXPECT_TRUE(asOrdinaryUser([&] {
    FileError error;
    return !_files.tryLock(path("folder"), &error).hold && error.code == FileError::kClosed;
  }));
}

}  // namespace
}  // namespace installer::test
