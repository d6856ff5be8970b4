#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/syscall.h>

#include <cerrno>
#include <cstdlib>
#include <string>

#include "platform/posix/PosixChildProcesses.h"
#include "support/ChildFolder.h"
#include "support/ChildRun.h"
#include "support/Proves.h"
#include "support/ScopedVariable.h"
#include "support/TemporaryFolder.h"
#include "unit/platform/linux/RefusedCall.h"

namespace installer::test {
namespace {

using ::testing::SizeIs;

// What an older kernel or a container's filter answers.
class ChildOnOtherKernelTest : public ::testing::Test {
 protected:
  void SetUp() override {
    if (!canRefuseCalls()) GTEST_SKIP() << "this kernel cannot refuse calls";
  }

  TemporaryFolder _folder;
  ChildFolder _played{_folder.path("played")};
  ScopedVariable _variable{ChildFolder::kVariable, _folder.path("played")};
  PosixChildProcesses _children;
};

TEST_F(ChildOnOtherKernelTest, AChildHoldsThreeDescriptorsWhereNoRangeCanBeClosed) {
  proves("CHILD-2");
  const int low = dup(STDIN_FILENO);
  const int high = fcntl(STDIN_FILENO, F_DUPFD, 200);

  EXPECT_TRUE(inChild([&] {
    if (!refuseCall(SYS_close_range, ENOSYS)) return false;
    const auto child = _children.start({recordedChild(), {}}, nullptr);
    return child && !_children.wait(*child);
  }));
  close(low);
  close(high);

  ASSERT_THAT(_played.records(), SizeIs(1));
  EXPECT_THAT(_played.records().front().descriptors, SizeIs(3));
}

TEST_F(ChildOnOtherKernelTest, AChildThatCannotBeMadeIsTold) {
  proves("CHILD-6");
  EXPECT_TRUE(inChild([&]() -> bool {
    std::string reason;
    const bool isTold = refuseCall(SYS_clone, EAGAIN) &&
                        !_children.start({recordedChild(), {}}, &reason) &&
                        reason == "Resource temporarily unavailable";
    _exit(isTold ? EXIT_SUCCESS : EXIT_FAILURE);  // who looks for leaks needs a process for it
  }));
}

}  // namespace
}  // namespace installer::test
