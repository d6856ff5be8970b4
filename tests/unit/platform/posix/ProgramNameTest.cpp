#include "platform/ProgramName.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <limits>

namespace installer::test {
namespace {

TEST(ProgramNameTest, AProcessHasTheNameOfItsProgramsFile) {
  EXPECT_EQ("unit-tests", programOf(getpid()));
}

TEST(ProgramNameTest, AProcessOfAnotherUserHasOneToo) {
  if (geteuid() != 0) GTEST_SKIP() << "only root becomes another user";
  const pid_t child = fork();
  if (child == 0) {
    const bool isOther = setuid(1234) == 0;
    _exit(isOther && programOf(getppid()) == "unit-tests" ? 0 : 1);
  }
  int status = -1;
  ASSERT_EQ(child, waitpid(child, &status, 0));

  EXPECT_EQ(0, status);
}

TEST(ProgramNameTest, AProcessThatHasEndedHasNone) {
  const pid_t child = fork();
  if (child == 0) _exit(0);
  ASSERT_EQ(child, waitpid(child, nullptr, 0));

  EXPECT_EQ(std::nullopt, programOf(child));
}

TEST(ProgramNameTest, WhatIsNoProcessHasNone) {
  for (const long none : {0L, -1L, std::numeric_limits<long>::max()})
    EXPECT_EQ(std::nullopt, programOf(none)) << none;
}

}  // namespace
}  // namespace installer::test
