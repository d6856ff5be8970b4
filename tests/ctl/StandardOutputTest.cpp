// What becomes of an answer that nobody can read: an error with a status, never a signal.

#include <gmock/gmock.h>

#include "ctl/ControlTest.h"
#include "hotfix/Version.h"
#include "support/Proves.h"

namespace installer::cli {
namespace {

constexpr int kNotWritten = 74;

class StandardOutputTest : public ControlTest {};

TEST_F(StandardOutputTest, TheAnswerComesToStandardOutput) {
  proves("CTL-1");
  const RunResult result = control({"--version"});

  EXPECT_EQ(0, result.status);
  EXPECT_EQ("hotfixctl " + std::string(kVersion) + "\n", result.out);
  EXPECT_EQ("", result.err);
}

TEST_F(StandardOutputTest, WhatIsWrongComesToStandardError) {
  proves("CTL-1");
  const RunResult result = control({"--versoin"});

  EXPECT_EQ(64, result.status);
  EXPECT_EQ("", result.out);
  EXPECT_EQ("hotfixctl: there is no option \"--versoin\"; did you mean \"--version\"?\n",
            result.err);
}

TEST_F(StandardOutputTest, AFullDiskIsAnError) {
  proves("CTL-2");
  const RunResult result = shell("/control/hotfixctl --help >/dev/full");

  EXPECT_EQ(kNotWritten, result.status);
  EXPECT_EQ("hotfixctl: the answer cannot be written: No space left on device\n", result.err);
}

TEST_F(StandardOutputTest, AClosedStandardOutputIsAnError) {
  proves("CTL-2");
  RunOptions options;
  options.closedDescriptors = {1};

  const RunResult result = control({"--help"}, options);

  EXPECT_EQ(kNotWritten, result.status);
  EXPECT_EQ("hotfixctl: the answer cannot be written: Bad file descriptor\n", result.err);
}

TEST_F(StandardOutputTest, APipeThatNobodyReadsIsAnError) {
  proves("CTL-2");
  RunOptions options;
  options.brokenOutput = true;

  const RunResult result = control({"--help"}, options);

  EXPECT_EQ(kNotWritten, result.status);
  EXPECT_EQ("hotfixctl: the answer cannot be written: Broken pipe\n", result.err);
}

TEST_F(StandardOutputTest, AClosedStandardErrorLeavesTheStatus) {
  RunOptions options;
  options.closedDescriptors = {2};

  EXPECT_EQ(64, control({}, options).status);
}

TEST_F(StandardOutputTest, NothingIsWrittenToTheSystemLog) {
  proves("CTL-1");
  RunOptions options;
  options.systemLog = true;

  EXPECT_THAT(control({"--help"}, options).systemLog, ::testing::IsEmpty());
}

}  // namespace
}  // namespace installer::cli
