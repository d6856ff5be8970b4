#include "ctl/install/Supervisor.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "ctl/Answers.h"
#include "support/Proves.h"
#include "support/Sandbox.h"

namespace installer::ctl::install {
namespace {

constexpr long kProcess = 4711;
constexpr std::time_t kPlanned = 1'700'000'000;

class EndedChild : public WatchedChild {
 public:
  long process() const override { return kProcess; }
  std::optional<WatchedEnd> end() override { return WatchedEnd{0, std::nullopt}; }
  void ask() override {}
  void kill() override {}
};

class SupervisorTest : public ::testing::Test {
 protected:
  // What is told of the progress when the trace of the child was changed last at that time.
  std::string progressOfTrace(std::time_t modified) {
    const std::string trace = _sandbox.paths().traceFile;
    _sandbox.write(trace,
                   "Nov 22 10:00:00 host HotfixInstaller[4711] <Info>: "
                   "Begin to install hotfix.\n");
    const timespec times[2] = {{modified, 0}, {modified, 0}};
    EXPECT_EQ(0, utimensat(AT_FDCWD, trace.c_str(), times, 0));
    test::Answers answers;
    Progress progress(Progress::Form::lines, answers.output(), 80, 1);
    EndedChild child;
    (void)Supervisor(child, {}, progress, kPlanned).watch();
    return answers.text();
  }

  installer::test::Sandbox _sandbox;
};

// The child may have written all it has to say for a while before anybody watches it.
TEST_F(SupervisorTest, WhatCameSinceThePlanIsTheChilds) {
  proves("ROLLOUT-7");
  EXPECT_EQ("installer:PHASE:reads the package\ninstaller:%0\n", progressOfTrace(kPlanned));
}

TEST_F(SupervisorTest, WhatIsOlderThanThePlanIsAnotherRuns) {
  proves("ROLLOUT-7");
  EXPECT_EQ("", progressOfTrace(kPlanned - 1));
}

}  // namespace
}  // namespace installer::ctl::install
