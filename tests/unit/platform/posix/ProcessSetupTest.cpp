#include "platform/ProcessSetup.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <csignal>

#include "support/Proves.h"

namespace installer::test {
namespace {

// Whether the descriptor is open on that device.
bool isOpenOn(int descriptor, const char* device) {
  struct stat opened {};
  struct stat named {};
  return fstat(descriptor, &opened) == 0 && stat(device, &named) == 0 && S_ISCHR(opened.st_mode) &&
         opened.st_rdev == named.st_rdev;
}

// Puts standard descriptors and signals back at the end.
class ProcessSetupTest : public ::testing::Test {
 protected:
  ProcessSetupTest() {
    for (int descriptor = 0; descriptor <= 2; ++descriptor)
      _saved[static_cast<std::size_t>(descriptor)] = fcntl(descriptor, F_DUPFD_CLOEXEC, 100);
    for (const int signal : {SIGPIPE, SIGXFSZ, SIGTERM}) {
      sigaction(signal, nullptr, &_actions[static_cast<std::size_t>(signal)]);
      std::signal(signal, SIG_DFL);
    }
  }
  ~ProcessSetupTest() override {
    for (int descriptor = 0; descriptor <= 2; ++descriptor) {
      const int saved = _saved[static_cast<std::size_t>(descriptor)];
      if (saved < 0) continue;
      dup2(saved, descriptor);
      close(saved);
    }
    for (const int signal : {SIGPIPE, SIGXFSZ, SIGTERM})
      sigaction(signal, &_actions[static_cast<std::size_t>(signal)], nullptr);
  }

  static bool isIgnored(int signal) {
    struct sigaction action {};
    sigaction(signal, nullptr, &action);
    return action.sa_handler == SIG_IGN;
  }

  std::array<int, 3> _saved{};
  std::array<struct sigaction, 65> _actions{};
};

TEST_F(ProcessSetupTest, FillsEveryClosedStandardDescriptor) {
  proves("CHILD-9");
  for (int descriptor = 0; descriptor <= 2; ++descriptor) close(descriptor);

  setUpProcess();

  for (int descriptor = 0; descriptor <= 2; ++descriptor) {
    EXPECT_TRUE(isOpenOn(descriptor, "/dev/null"));
    EXPECT_EQ(fcntl(descriptor, F_GETFL) & O_ACCMODE, O_RDWR);
    EXPECT_EQ(fcntl(descriptor, F_GETFD), 0) << "children inherit it";
  }
}

TEST_F(ProcessSetupTest, NoDatabaseOfUsersIsOpenInAStandardDescriptorsPlace) {
  proves("CHILD-9");
  for (int descriptor = 0; descriptor <= 2; ++descriptor) close(descriptor);

  openUserDatabases();

  for (int descriptor = 0; descriptor <= 2; ++descriptor)
    EXPECT_TRUE(isOpenOn(descriptor, "/dev/null"));
}

class ClosedDescriptorTest : public ProcessSetupTest, public ::testing::WithParamInterface<int> {};

TEST_P(ClosedDescriptorTest, IsFilledAndTheOthersStay) {
  proves("CHILD-9");
  for (int descriptor = 0; descriptor <= 2; ++descriptor) {
    const int zero = open("/dev/zero", O_RDWR);
    dup2(zero, descriptor);
    close(zero);
  }
  close(GetParam());

  setUpProcess();

  for (int descriptor = 0; descriptor <= 2; ++descriptor)
    EXPECT_TRUE(isOpenOn(descriptor, descriptor == GetParam() ? "/dev/null" : "/dev/zero"));
}

INSTANTIATE_TEST_SUITE_P(Descriptors, ClosedDescriptorTest, ::testing::Values(0, 1, 2),
                         ::testing::PrintToStringParamName());

TEST_F(ProcessSetupTest, OpensNothingWhenNothingIsClosed) {
  proves("CHILD-9");
  for (int descriptor = 0; descriptor <= 2; ++descriptor)
    if (fcntl(descriptor, F_GETFD) < 0) GTEST_SKIP() << "started with closed descriptors";
  const int free = open("/dev/zero", O_RDONLY);
  close(free);

  setUpProcess();

  EXPECT_EQ(fcntl(free, F_GETFD), -1);
}

TEST_F(ProcessSetupTest, IgnoresTheSignalsOfFailedWritesOnly) {
  proves("CHILD-9");
  setUpProcess();

  EXPECT_TRUE(isIgnored(SIGPIPE));
  EXPECT_TRUE(isIgnored(SIGXFSZ));
  EXPECT_FALSE(isIgnored(SIGTERM));
}

}  // namespace
}  // namespace installer::test
