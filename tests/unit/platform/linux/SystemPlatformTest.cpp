#include <gtest/gtest.h>

#include "platform/Platform.h"
#include "platform/files/PosixFileManager.h"
#include "platform/linux/ProcProcessTable.h"
#include "platform/linux/SyslogSystemLog.h"
#include "platform/posix/FilePasteboard.h"
#include "platform/posix/PosixChildProcesses.h"
#include "platform/posix/PosixClock.h"
#include "platform/posix/PosixUserContext.h"
#include "platform/posix/UserPreferences.h"

namespace installer::test {
namespace {

TEST(LinuxPlatformTest, IsTheSystemsOwnAtFirst) {
  Platform& platform = Platform::current();

  EXPECT_NE(dynamic_cast<PosixFileManager*>(platform.files), nullptr);
  EXPECT_NE(dynamic_cast<PosixChildProcesses*>(platform.children), nullptr);
  EXPECT_NE(dynamic_cast<ProcProcessTable*>(platform.processes), nullptr);
  EXPECT_NE(dynamic_cast<FilePasteboard*>(platform.pasteboard), nullptr);
  EXPECT_NE(dynamic_cast<SyslogSystemLog*>(platform.log), nullptr);
  EXPECT_NE(dynamic_cast<UserPreferences*>(platform.preferences), nullptr);
  EXPECT_NE(dynamic_cast<PosixUserContext*>(platform.users), nullptr);
  EXPECT_NE(dynamic_cast<PosixClock*>(platform.clock), nullptr);
}

}  // namespace
}  // namespace installer::test
