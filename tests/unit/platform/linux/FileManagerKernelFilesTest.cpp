#include <fcntl.h>
#include <gmock/gmock.h>

#include "platform/files/FileReading.h"
#include "platform/files/Opening.h"
#include "support/Proves.h"
#include "unit/platform/files/FileManagerFixture.h"

namespace installer::test {
namespace {

// Files of the kernel's own hide their size.
class FileManagerKernelFilesTest : public FileManagerFixture {};

TEST_F(FileManagerKernelFilesTest, AFileThatHidesItsSizeIsRead) {
  const auto status = _files.read("/proc/self/status");

  ASSERT_TRUE(status);
  EXPECT_THAT(*status, ::testing::HasSubstr("Pid:"));
  EXPECT_GT(_files.read("/proc/kallsyms").value_or("").size(), std::size_t{1} << 17);
}

TEST_F(FileManagerKernelFilesTest, TheLimitHoldsForFilesThatHideTheirSize) {
  proves("FILES-5");
  const auto open = [] { return openRegularFile(AT_FDCWD, "/proc/self/cmdline"); };
  const std::size_t length = readWhole(open(), 1 << 20).value_or("").size();
  ASSERT_GT(length, 1u);

  EXPECT_EQ(readWhole(open(), length - 1), std::nullopt);
  EXPECT_NE(readWhole(open(), length), std::nullopt);
}

}  // namespace
}  // namespace installer::test
