#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <string>

#include "support/ChildRun.h"
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

// A process that holds a folder's lock until it is let go.
class Holder {
 public:
  explicit Holder(const std::string& folder) {
    int ready[2];
    int release[2];
    if (::pipe(ready) != 0 || ::pipe(release) != 0) std::abort();
    std::fflush(nullptr);
    _process = ::fork();
    if (_process == 0) {
      ::close(release[1]);
      const int number = ::open(folder.c_str(), O_RDONLY);
      char byte = ::flock(number, LOCK_EX) == 0 ? 'y' : 'n';
      if (::write(ready[1], &byte, 1) != 1) ::_exit(1);
      while (::read(release[0], &byte, 1) > 0) {
      }
      ::_exit(0);
    }
    char byte = 'n';
    _holds = ::read(ready[0], &byte, 1) == 1 && byte == 'y';
    ::close(ready[0]);
    ::close(ready[1]);
    ::close(release[0]);
    _release = release[1];
  }
  ~Holder() {
    letGo();
    ::waitpid(_process, nullptr, 0);
  }

  bool holds() const { return _holds; }

  void letGo() {
    if (_release >= 0) ::close(_release);
    _release = -1;
  }

 private:
  pid_t _process = -1;
  bool _holds = false;
  int _release = -1;
};

// Run in children: a lock stays until the process ends, and so does its descriptor.
class FileManagerLockTest : public FileManagerFixture {
 protected:
  static bool isLocked(const std::string& folder) {
    const int number = ::open(folder.c_str(), O_RDONLY | O_CLOEXEC);
    const bool locked = ::flock(number, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK;
    ::close(number);
    return locked;
  }

  static void countWait() {
    ++waits;
    if (holder != nullptr) holder->letGo();
  }

  static inline int waits = 0;
  static inline Holder* holder = nullptr;
};

TEST_F(FileManagerLockTest, AFreeFolderIsLockedAtOnce) {
  proves("LOCK-2");
  const std::string folder = _folder.makeFolder("folder");

  EXPECT_TRUE(
      inChild([&] { return _files.lock(folder, countWait) && waits == 0 && isLocked(folder); }));

  EXPECT_FALSE(isLocked(folder)) << "the end of the process is the end of the lock";
}

TEST_F(FileManagerLockTest, AHeldFolderIsWaitedFor) {
  proves("LOCK-2");
  const std::string folder = _folder.makeFolder("folder");

  EXPECT_TRUE(inChild([&] {
    Holder other(folder);
    holder = &other;
    return other.holds() && _files.lock(folder, countWait) && waits == 1 && isLocked(folder);
  }));
}

TEST_F(FileManagerLockTest, ASignalDoesNotEndTheWait) {
  proves("LOCK-2");
  const std::string folder = _folder.makeFolder("folder");

  EXPECT_TRUE(inChild([&] {
    Holder other(folder);
    holder = &other;
    struct sigaction action {};
    action.sa_handler = [](int) { holder->letGo(); };
    if (::sigaction(SIGALRM, &action, nullptr) != 0) return false;
    const auto startTimer = [] {
      const itimerval soon{{0, 0}, {0, 50000}};
      ::setitimer(ITIMER_REAL, &soon, nullptr);
    };
    return _files.lock(folder, startTimer) && isLocked(folder);
  }));
}

TEST_F(FileManagerLockTest, AWaitNeedsNobodyToTell) {
  const std::string folder = _folder.makeFolder("folder");

  EXPECT_TRUE(inChild([&] {
    Holder other(folder);
    holder = &other;
    struct sigaction action {};
    action.sa_handler = [](int) { holder->letGo(); };
    const itimerval soon{{0, 0}, {0, 50000}};
    return ::sigaction(SIGALRM, &action, nullptr) == 0 &&
           ::setitimer(ITIMER_REAL, &soon, nullptr) == 0 && _files.lock(folder, nullptr);
  }));
}

TEST_F(FileManagerLockTest, AFolderThatThisProcessHoldsIsHeld) {
  const std::string folder = _folder.makeFolder("folder");
  _folder.makeLink("alias", "folder");

  EXPECT_TRUE(inChild([&] {
    MadeUpUsers users;
    PosixFileManager other(users);
    return _files.lock(folder, countWait) && _files.lock(folder + "/", countWait) &&
           other.lock(path("alias"), countWait) && waits == 0 && isLocked(folder);
  }));
}

TEST_F(FileManagerLockTest, TwoFoldersAreTwoLocks) {
  proves("LOCK-2");
  const std::string one = _folder.makeFolder("one");
  const std::string two = _folder.makeFolder("two");

  EXPECT_TRUE(inChild([&] {
    return _files.lock(one, nullptr) && !isLocked(two) && _files.lock(two, nullptr) &&
           isLocked(two) && isLocked(one);
  }));
}

TEST_F(FileManagerLockTest, WhatIsNoFolderCannotBeLocked) {
  proves("LOCK-2");
  const std::string file = _folder.makeFile("file");
  const std::string pipe = _folder.makePipe("pipe");

  EXPECT_FALSE(_files.lock(file, nullptr));
  EXPECT_FALSE(_files.lock(pipe, nullptr));
  EXPECT_FALSE(_files.lock(path("missing"), nullptr));
  EXPECT_FALSE(_files.lock("", nullptr));
  EXPECT_FALSE(_files.lock(path("") + std::string("\0x", 2), nullptr));
}

}  // namespace
}  // namespace installer::test
