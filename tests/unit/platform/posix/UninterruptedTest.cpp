#include "platform/posix/Uninterrupted.h"

#include <gtest/gtest.h>

namespace installer {
namespace {

// A system call that a signal cuts short this often before it answers.
struct Interrupted {
  int times;
  long answer;
  int error;
  int calls = 0;

  long operator()() {
    errno = ++calls <= times ? EINTR : error;
    return calls <= times ? -1 : answer;
  }
};

TEST(UninterruptedTest, CallIsMadeOnceWhenNoSignalComes) {
  Interrupted call{0, 7, 0};

  EXPECT_EQ(uninterrupted([&] { return call(); }), 7);
  EXPECT_EQ(call.calls, 1);
}

TEST(UninterruptedTest, CallIsMadeAgainUntilNoSignalCutsItShort) {
  Interrupted call{3, 0, 0};

  EXPECT_EQ(uninterrupted([&] { return call(); }), 0);
  EXPECT_EQ(call.calls, 4);
}

TEST(UninterruptedTest, OtherFailureIsAnsweredAtOnce) {
  Interrupted call{0, -1, EIO};

  EXPECT_EQ(uninterrupted([&] { return call(); }), -1);
  EXPECT_EQ(errno, EIO);
  EXPECT_EQ(call.calls, 1);
}

TEST(UninterruptedTest, SuccessCountsThoughAnEarlierSignalIsRemembered) {
  Interrupted call{0, 5, EINTR};

  EXPECT_EQ(uninterrupted([&] { return call(); }), 5);
  EXPECT_EQ(call.calls, 1);
}

}  // namespace
}  // namespace installer
