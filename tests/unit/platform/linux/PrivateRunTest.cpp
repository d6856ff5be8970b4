#include "platform/PrivateRun.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <poll.h>
#include <sched.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <fstream>
#include <stdexcept>

#include "platform/Interruption.h"
#include "support/ChildRun.h"
#include "support/Proves.h"
#include "support/TemporaryFolder.h"
#include "support/TreeSnapshot.h"

namespace installer::privately {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using Kind = overlay::Change::Kind;

class PrivateTest : public ::testing::Test {
 protected:
  bool copy() {
    auto copied = copyTree(_folder.path("from"), _folder.path("to"), _reason);
    _copied = copied.value_or(Copied());
    return copied.has_value();
  }
  std::vector<std::string> differing() {
    std::vector<std::string> lines;
    const auto found = differences(_folder.path("from"), _folder.path("to"), _reason);
    EXPECT_TRUE(found.has_value()) << _reason;
    for (const Difference& one : found.value_or(std::vector<Difference>()))
      lines.push_back(std::to_string(static_cast<int>(one.kind)) + " " + one.path);
    return lines;
  }
  static std::string line(Kind kind, const std::string& path) {
    return std::to_string(static_cast<int>(kind)) + " " + path;
  }
  struct stat statusOf(const std::string& path) const {
    struct stat status {};
    EXPECT_EQ(0, lstat(_folder.path(path).c_str(), &status)) << path;
    return status;
  }

  const test::TemporaryFolder _folder;
  std::string _reason;
  Copied _copied;
};

// --- Copies --------------------------------------------------------------------------------------

TEST_F(PrivateTest, ACopyIsWhatItIsMadeOf) {
  proves("REHEARSE-4");
  _folder.makeFile("from/a/file", std::string(200'000, 'x') + "end", 0640);
  _folder.makeFile("from/a/empty", "", 04711);
  _folder.makeFolder("from/a/closed", 0500);
  _folder.makeLink("from/link", "/no/where");
  _folder.makePipe("from/pipe");
  _folder.makeSocket("from/socket");
  _folder.makeHardLink("from/second", "from/a/file");
  const timespec times[] = {{1'000'000'000, 1}, {1'100'000'000, 2}};
  for (const char* name : {"from/link", "from/a/file", "from/a", "from/pipe"})
    ASSERT_EQ(0, utimensat(AT_FDCWD, _folder.path(name).c_str(), times, AT_SYMLINK_NOFOLLOW));

  ASSERT_TRUE(copy()) << _reason;

  EXPECT_THAT(
      test::TreeDiff(test::snapshotOf(_folder.path("from")), test::snapshotOf(_folder.path("to")))
          .lines(),
      IsEmpty());
  EXPECT_THAT(differing(), IsEmpty());
  for (const char* name : {"to/link", "to/a/file", "to/a", "to/pipe"}) {
    EXPECT_EQ(1'100'000'000, statusOf(name).st_mtim.tv_sec) << name;
    EXPECT_EQ(2, statusOf(name).st_mtim.tv_nsec) << name;
  }
  EXPECT_EQ(statusOf("to/a/file").st_ino, statusOf("to/second").st_ino);
  EXPECT_NE(statusOf("from/a/file").st_ino, statusOf("to/a/file").st_ino);
}

TEST_F(PrivateTest, ACopyBelongsToTheSameUsers) {
  proves("REHEARSE-4");
  if (geteuid() != 0) GTEST_SKIP() << "only root can give files away";
  _folder.makeFile("from/file", "x", 04755);
  _folder.makeLink("from/link", "file");
  for (const char* name : {"from/file", "from/link", "from"})
    ASSERT_EQ(0, lchown(_folder.path(name).c_str(), 1000, 1001));
  ASSERT_EQ(0, chmod(_folder.path("from/file").c_str(), 04755));

  ASSERT_TRUE(copy()) << _reason;

  for (const char* name : {"to/file", "to/link", "to"}) {
    EXPECT_EQ(1000u, statusOf(name).st_uid) << name;
    EXPECT_EQ(1001u, statusOf(name).st_gid) << name;
  }
  EXPECT_EQ(04755u, statusOf("to/file").st_mode & 07777u);
}

TEST_F(PrivateTest, WhatHasChangedSinceTheCopyIsKnown) {
  proves("REHEARSE-1");
  for (const char* name : {"from/a/same", "from/a/mode", "from/a/content", "from/a/gone"})
    _folder.makeFile(name, "x", 0600);
  _folder.makeLink("from/link", "one");
  ASSERT_TRUE(copy()) << _reason;
  // The system's clock for files takes its steps.
  const auto changed = [&] { return !isAsCopied(_copied, _folder.path("from"), "a/mode"); };
  while (!changed()) ASSERT_EQ(0, chmod(_folder.path("from/a/mode").c_str(), 0640));
  _folder.makeFile("from/a/content", "y");
  ASSERT_EQ(0, unlink(_folder.path("from/a/gone").c_str()));
  _folder.makeFile("from/a/new", "x");

  std::vector<std::string> same;
  for (const char* name : {"a/same", "a/mode", "a/content", "a/gone", "a/new", "link", "none"})
    if (isAsCopied(_copied, _folder.path("from"), name)) same.emplace_back(name);
  EXPECT_THAT(same, ElementsAre("a/same", "link", "none"));
}

TEST_F(PrivateTest, ACopyThatCannotBeMadeIsTold) {
  EXPECT_FALSE(copy());
  EXPECT_EQ("\"" + _folder.path("from") + "\": No such file or directory", _reason);

  _folder.makeFolder("from");
  _folder.makeFolder("to");
  EXPECT_FALSE(copy());
  EXPECT_EQ("\"" + _folder.path("to") + "\": File exists", _reason);
}

TEST_F(PrivateTest, ACopyStopsWhereSomethingCannotBeRead) {
  _folder.makeFile("from/a/file", "x", 0);
  ASSERT_EQ(0, chmod(_folder.path().c_str(), 0777));

  EXPECT_TRUE(test::asOrdinaryUser([&] {
    return !copy() && _reason == "\"" + _folder.path("from/a/file") + "\": Permission denied";
  }));
}

TEST_F(PrivateTest, AWorkFolderIsItsMakersAlone) {
  const auto work = makeWorkFolder(_folder.path(), _reason);
  ASSERT_TRUE(work.has_value()) << _reason;

  EXPECT_EQ(0700u, statusOf(work->substr(_folder.path().size() + 1)).st_mode & 07777u);
  std::ofstream(*work + "/file") << "x";
  EXPECT_TRUE(removeWorkFolder(*work));
  EXPECT_NE(0, access(work->c_str(), F_OK));
  EXPECT_TRUE(removeWorkFolder(*work)) << "nothing is left";

  EXPECT_EQ(std::nullopt, makeWorkFolder(_folder.path("missing"), _reason));
  EXPECT_EQ("\"" + _folder.path("missing") + "\": No such file or directory", _reason);
}

// The launcher's files are as closed as it has made them.
TEST_F(PrivateTest, AWorkFolderGoesWithFoldersThatAreClosedToTheirOwner) {
  proves("REHEARSE-5");
  ASSERT_EQ(0, chmod(_folder.path().c_str(), 0777));

  EXPECT_TRUE(test::asOrdinaryUser([&] {
    const auto work = makeWorkFolder(_folder.path(), _reason);
    const std::string closed = work.value_or("/missing") + "/closed";
    const std::string deep = closed + "/deep";
    return mkdir(closed.c_str(), 0700) == 0 && mkdir(deep.c_str(), 0700) == 0 &&
           mkdir((deep + "/empty").c_str(), 0700) == 0 && chmod(deep.c_str(), 0) == 0 &&
           symlink(_folder.path().c_str(), (closed + "/link").c_str()) == 0 &&
           chmod(closed.c_str(), 0555) == 0 && removeWorkFolder(*work) &&
           access(work->c_str(), F_OK) != 0;
  }));
  EXPECT_EQ(0777u, statusOf("").st_mode & 07777u);
}

// --- Differences ---------------------------------------------------------------------------------

TEST_F(PrivateTest, EachKindOfDifferenceIsTold) {
  proves("REHEARSE-1");
  _folder.makeFile("from/gone/below", "x");
  _folder.makeFile("from/mode", "x", 0600);
  _folder.makeFile("from/content", "old");
  _folder.makeLink("from/link", "one");
  _folder.makeFile("from/kind", "");
  _folder.makeFolder("from/was/folder");
  _folder.makeFile("from/same", "x");
  ASSERT_TRUE(copy());
  _folder.makeFile("to/mode", "x", 0640);
  ASSERT_EQ(0, chmod(_folder.path("to/mode").c_str(), 0640));
  _folder.makeFile("to/content", "new");
  for (const char* name : {"to/gone/below", "to/link", "to/kind"})
    ASSERT_EQ(0, unlink(_folder.path(name).c_str()));
  for (const char* name : {"to/gone", "to/was/folder", "to/was"})
    ASSERT_EQ(0, rmdir(_folder.path(name).c_str()));
  _folder.makeLink("to/link", "two");
  _folder.makePipe("to/kind");
  _folder.makeFile("to/was", "");
  _folder.makeFile("to/new/below", "");

  EXPECT_THAT(differing(),
              ElementsAre(line(Kind::replaced, "content"), line(Kind::removed, "gone"),
                          line(Kind::removed, "gone/below"), line(Kind::replaced, "kind"),
                          line(Kind::replaced, "link"), line(Kind::attributes, "mode"),
                          line(Kind::created, "new"), line(Kind::created, "new/below"),
                          line(Kind::replaced, "was"), line(Kind::removed, "was/folder")));

  const auto found = differences(_folder.path("from"), _folder.path("to"), _reason);
  EXPECT_EQ(0600u, found->at(5).before->mode);
  EXPECT_EQ(0640u, found->at(5).after->mode);
  EXPECT_EQ(getuid(), found->at(5).after->owner);
  EXPECT_EQ(std::nullopt, found->at(1).after);
  EXPECT_EQ(std::nullopt, found->at(6).before);
  EXPECT_EQ(EntryKind::folder, found->at(6).after->kind);
}

TEST_F(PrivateTest, ADifferenceAtTheEndOfALongFileIsFound) {
  proves("REHEARSE-1");
  const std::string much(300'000, 'x');
  _folder.makeFile("from/file", much + "a");
  _folder.makeFile("to/file", much + "b");
  EXPECT_THAT(differing(), ElementsAre(line(Kind::replaced, "file")));

  _folder.makeFile("to/file", much + "a");
  EXPECT_THAT(differing(), IsEmpty());
}

TEST_F(PrivateTest, FoldersThatCannotBeReadAreTold) {
  _folder.makeFolder("from");
  EXPECT_EQ(std::nullopt, differences(_folder.path("from"), _folder.path("to"), _reason));
  EXPECT_EQ("\"" + _folder.path("to") + "\": No such file or directory", _reason);
}

// --- Runs ----------------------------------------------------------------------------------------

class PrivateRunTest : public PrivateTest {
 protected:
  void SetUp() override {
    for (const char* folder : {"work/tmp", "place", "content"}) _folder.makeFolder(folder);
    _view = {_folder.path("work"),
             {{resolved(_folder.path("place")), _folder.path("content")}},
             _folder.path("work/tmp"),
             {resolved(_folder.path())},
             _folder.path("output")};
    if (!mayHaveMountsOfItsOwn()) GTEST_SKIP() << "no mounts of a process's own here";
  }

  static bool mayHaveMountsOfItsOwn() {
    const pid_t probe = fork();
    // Without what else is done at a process's end: to look for leaks takes a process of its list.
    if (probe == 0)
      _exit(unshare(CLONE_NEWNS | CLONE_NEWPID | (geteuid() == 0 ? 0 : CLONE_NEWUSER)));
    int status = 1;
    return waitpid(probe, &status, 0) == probe && status == 0;
  }

  std::optional<End> run(const std::function<int()>& work) {
    return installer::privately::run(_view, work, _reason);
  }
  static bool canWrite(const std::string& file) {
    std::ofstream stream(file);
    return static_cast<bool>(stream << "x" << std::flush);
  }

  View _view;
};

TEST_F(PrivateRunTest, TheStatusIsTold) {
  const auto end = run([] { return 42; });

  ASSERT_TRUE(end.has_value()) << _reason;
  EXPECT_EQ(42, end->status);
  EXPECT_EQ(std::nullopt, end->signal);
}

TEST_F(PrivateRunTest, OnlyWhatTheViewNamesCanBeWritten) {
  proves("REHEARSE-3");
  const std::string place = _folder.path("place") + "/file";
  const std::string beside = _folder.path("beside");

  const auto end = run([&] {
    if (!canWrite(place)) return 1;
    if (!canWrite("/tmp/file")) return 2;
    if (canWrite(beside)) return 3;
    if (canWrite("/proc/self/comm")) return 4;
    return canWrite("/dev/null") && !canWrite("/usr/file") ? 0 : 5;
  });

  ASSERT_TRUE(end.has_value()) << _reason;
  EXPECT_EQ(0, end->status);
  EXPECT_EQ("x", _folder.content("content/file"));
  EXPECT_EQ("x", _folder.content("work/tmp/file"));
  EXPECT_NE(0, access(place.c_str(), F_OK));
}

TEST_F(PrivateRunTest, ItIsAloneWithItsKeeper) {
  proves("REHEARSE-5");
  const auto end = run([] { return getpid() == 2 && getppid() == 1 ? 0 : 1; });

  EXPECT_EQ(0, end->status);
}

// One that has changed its user on the way, too: the system forgets then whose end is its own.
TEST_F(PrivateRunTest, TheEndOfWhoHasStartedItEndsIt) {
  proves("REHEARSE-5");
  std::array<int, 2> ends{};
  ASSERT_EQ(0, pipe(ends.data()));
  const pid_t starter = fork();
  if (starter == 0) {
    (void)run([&] {
      alarm(60);  // for a run that nobody ends
      if (geteuid() == 0 && seteuid(test::kOrdinaryUser) != 0) return 1;
      (void)!write(ends[1], "x", 1);
      while (true) pause();
      return 0;
    });
    _exit(1);
  }
  close(ends[1]);
  char byte = 0;
  ASSERT_EQ(1, read(ends[0], &byte, 1));

  ASSERT_EQ(0, kill(starter, SIGKILL));
  ASSERT_EQ(starter, waitpid(starter, nullptr, 0));

  pollfd end{ends[0], POLLIN, 0};
  ASSERT_EQ(1, poll(&end, 1, 10'000)) << "the work goes on";
  EXPECT_EQ(0, read(ends[0], &byte, 1));
  close(ends[0]);
}

// Signals that ask this process to end are for the work.
TEST_F(PrivateRunTest, SignalsReachTheWork) {
  proves("REHEARSE-5");
  EXPECT_TRUE(test::inChild([&] {
    noteInterruptions();
    const pid_t starter = getpid();
    std::array<int, 2> ends{};
    if (pipe(ends.data()) != 0) return false;
    const pid_t sender = fork();
    if (sender == 0) {
      char byte = 0;
      (void)!read(ends[0], &byte, 1);
      kill(starter, SIGTERM);
      _exit(0);
    }
    const auto end = run([&] {
      alarm(60);
      (void)!write(ends[1], "x", 1);
      while (!notedInterruption()) usleep(1000);
      return 42;
    });
    waitpid(sender, nullptr, 0);
    return end && end->status == 42;
  }));
}

// Whose owners are kept by none, and who has to be root of the new namespaces.
TEST_F(PrivateRunTest, AnOrdinaryUserHasSuchRuns) {
  proves("REHEARSE-3");
  test::giveToOrdinaryUser(_folder.path());
  for (const char* name : {"work", "work/tmp", "place", "content"})
    test::giveToOrdinaryUser(_folder.path(name));
  const auto dumpable = [] { return prctl(PR_SET_DUMPABLE, 1) == 0; };
  if (!test::asOrdinaryUser([&] { return dumpable() && mayHaveMountsOfItsOwn(); }))
    GTEST_SKIP() << "no user namespaces here";

  EXPECT_TRUE(test::asOrdinaryUser([&] {
    if (!dumpable()) return false;  // changing the user has closed what is its own below /proc
    const auto end = run([&] {
      if (geteuid() != 0 || getegid() != 0) return 1;
      if (!canWrite(_folder.path("place") + "/file")) return 2;
      if (canWrite(_folder.path("beside"))) return 3;
      return 42;
    });
    if (!end) std::fprintf(stderr, "%s\n", _reason.c_str());
    return end && end->status == 42;
  }));
  EXPECT_EQ("x", _folder.content("content/file"));
}

TEST_F(PrivateTest, WhatAnOrdinaryUserCopiesIsHis) {
  proves("REHEARSE-4");
  if (geteuid() != 0) GTEST_SKIP() << "an ordinary user has no files of others";
  _folder.makeFile("from/file", "x", 0644);
  _folder.makeLink("from/link", "file");
  _folder.makePipe("from/pipe");
  ASSERT_EQ(0, chmod(_folder.path().c_str(), 0777));

  EXPECT_TRUE(test::asOrdinaryUser([&] { return copy(); }));

  for (const char* name : {"to", "to/file", "to/link", "to/pipe"})
    EXPECT_EQ(test::kOrdinaryUser, statusOf(name).st_uid) << name;
}

TEST_F(PrivateRunTest, OutputIsKept) {
  const auto end = run([] {
    std::puts("told");
    std::fputs("complained\n", stderr);
    return 0;
  });

  EXPECT_EQ(0, end->status);
  EXPECT_THAT(_folder.content("output"),
              ::testing::AllOf(HasSubstr("told\n"), HasSubstr("complained\n")));
}

// A process that is the first of its kind is spared by its own signals.
TEST_F(PrivateRunTest, AnEndBySignalIsTold) {
  const auto end = run([]() -> int { __builtin_trap(); });

  ASSERT_TRUE(end.has_value()) << _reason;
  EXPECT_EQ("signal 4 (Illegal instruction)", end->signal);
}

TEST_F(PrivateRunTest, NothingGetsOutOfTheWork) {
  const auto end = run([]() -> int { throw std::runtime_error("x"); });

  EXPECT_EQ(1, end->status);
}

TEST_F(PrivateRunTest, AViewThatCannotBeHadIsRefused) {
  bool isBegun = false;
  _view.replaced.emplace_back("/no/such/place", _folder.path("content"));

  EXPECT_EQ(std::nullopt, run([&] {
              isBegun = true;
              return 0;
            }));

  EXPECT_EQ(_folder.path("work/root") + "/no/such/place: No such file or directory", _reason);
  EXPECT_FALSE(isBegun);
}

}  // namespace
}  // namespace installer::privately
