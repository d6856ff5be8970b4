#include "platform/Interruption.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <utility>

#include "platform/posix/ChildOfSignals.h"
#include "platform/posix/PosixChildProcesses.h"
#include "support/ChildFolder.h"
#include "support/ChildRun.h"

namespace installer::test {
namespace {

// What has been noted; empty for nothing.
std::string notedCause() {
  try {
    checkInterruption();
    return "";
  } catch (const Interrupted& interrupted) {
    return interrupted.cause;
  }
}

// Has its signals at their defaults by the time that it is answered.
pid_t startSleeper() {
  return PosixChildProcesses().start({recordedChild(), {"--idle"}}, nullptr).value();
}

// The signal that ends the child; 0 when it ends by itself.
int endOf(pid_t child) {
  int status = 0;
  return waitpid(child, &status, 0) == child && WIFSIGNALED(status) ? WTERMSIG(status) : 0;
}

// A signal that has been noted stays so: each test does it in a process of its own.

TEST(InterruptionTest, NothingIsNotedAtFirst) {
  EXPECT_TRUE(inChild([] {
    noteInterruptions();
    return notedCause().empty();
  }));
}

TEST(InterruptionTest, SignalIsNotedAndDoesNotEndTheProcess) {
  for (const auto& given :
       {std::pair(SIGHUP, "signal 1 (Hangup)"), std::pair(SIGINT, "signal 2 (Interrupt)"),
        std::pair(SIGTERM, "signal 15 (Terminated)")})
    EXPECT_TRUE(inChild([&given] {
      noteInterruptions();
      raise(given.first);
      return notedCause() == given.second && notedCause() == given.second;
    })) << given.second;
}

TEST(InterruptionTest, WhatWasNotedCanBeAskedForWithoutLeaving) {
  EXPECT_TRUE(inChild([] {
    noteInterruptions();
    if (notedInterruption()) return false;
    raise(SIGTERM);
    return notedInterruption() == "signal 15 (Terminated)";
  }));
}

TEST(InterruptionTest, WhatIsHeldIsToldAfterwards) {
  EXPECT_TRUE(inChild([] {
    noteInterruptions();
    raise(SIGTERM);
    {
      const HeldInterruptions outer;
      { const HeldInterruptions inner; }
      if (!notedCause().empty() || !notedInterruption()) return false;
    }
    return notedCause() == "signal 15 (Terminated)";
  }));
}

TEST(InterruptionTest, FirstSignalCounts) {
  EXPECT_TRUE(inChild([] {
    noteInterruptions();
    raise(SIGINT);
    raise(SIGTERM);
    return notedCause() == "signal 2 (Interrupt)";
  }));
}

TEST(InterruptionTest, IgnoredSignalStaysIgnored) {
  EXPECT_TRUE(inChild([] {
    std::signal(SIGHUP, SIG_IGN);
    noteInterruptions();
    raise(SIGHUP);
    struct sigaction action {};
    sigaction(SIGHUP, nullptr, &action);
    return notedCause().empty() && action.sa_handler == SIG_IGN;
  }));
}

TEST(InterruptionTest, ErrorNumberOutlivesTheSignal) {
  EXPECT_TRUE(inChild([] {
    noteInterruptions();
    const pid_t child = startSleeper();
    kill(child, SIGKILL);
    endOf(child);
    const ChildOfSignals told(child);  // nobody to tell any more
    errno = EXDEV;
    raise(SIGTERM);
    return errno == EXDEV;
  }));
}

TEST(InterruptionTest, ReadsThatWaitGoOn) {
  EXPECT_TRUE(inChild([] {
    noteInterruptions();
    struct sigaction action {};
    sigaction(SIGTERM, nullptr, &action);
    return (action.sa_flags & SA_RESTART) != 0;
  }));
}

TEST(InterruptionTest, RunningChildIsTold) {
  EXPECT_TRUE(inChild([] {
    noteInterruptions();
    const pid_t child = startSleeper();
    const ChildOfSignals told(child);
    raise(SIGINT);
    return endOf(child) == SIGINT;
  }));
}

TEST(InterruptionTest, ChildThatWasBeingStartedIsToldAfterwards) {
  EXPECT_TRUE(inChild([] {
    noteInterruptions();
    raise(SIGTERM);
    const pid_t child = startSleeper();
    const ChildOfSignals told(child);
    return endOf(child) == SIGTERM;
  }));
}

TEST(InterruptionTest, ChildIsToldNoMoreWhenItIsNotNamed) {
  EXPECT_TRUE(inChild([] {
    noteInterruptions();
    const pid_t child = startSleeper();
    { const ChildOfSignals told(child); }
    raise(SIGTERM);
    kill(child, SIGKILL);
    return endOf(child) == SIGKILL;
  }));
}

}  // namespace
}  // namespace installer::test
