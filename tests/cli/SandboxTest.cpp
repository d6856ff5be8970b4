#include "cli/CliSandbox.h"

#include <gmock/gmock.h>
#include <sys/stat.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <string>

#include "support/ChildRun.h"
#include "support/TemporaryFolder.h"
#include "support/linux/PrivateRoot.h"

namespace installer::cli {
namespace {

TEST(CliSandboxTest, PrivateNamespaceIsAtHand) {
  const auto refusal = CliSandbox::refusal();

  EXPECT_FALSE(refusal.has_value()) << *refusal;
}

TEST(CliSandboxTest, ProgramIsThere) {
  CliSandbox box;

  const RunResult result = box.run({});

  EXPECT_NE(126, result.status) << result.err;
  EXPECT_NE(-1, result.status) << result.err;
}

dev_t deviceOf(const std::string& path) {
  struct stat status {};
  return lstat(path.c_str(), &status) == 0 ? status.st_dev : 0;
}

bool works(const std::string& device) {
  std::ofstream stream(device);
  return static_cast<bool>(stream << "gone" << std::flush);
}

// What a test empties or hands over must be nothing of the machine's.
TEST(CliSandboxTest, BuildTreeIsNotThereUnlessItHasCounters) {
  const test::TemporaryFolder folder;
  const std::string& root = folder.path();

  EXPECT_TRUE(test::inChild([&] {
    if (test::enterPrivateMounts(root)) return false;
    test::makeRootFolders(root);
    test::mountRoot(root, HOTFIX_PROGRAM);
    return std::filesystem::exists(root + HOTFIX_BINARY_DIR) == !test::countedTree().empty();
  }));
}

TEST(CliSandboxTest, DevicesAreItsOwn) {
  if (!test::isRoot()) GTEST_SKIP() << "only root can make devices";
  const test::TemporaryFolder folder;
  const std::string& root = folder.path();

  EXPECT_TRUE(test::inChild([&] {
    if (test::enterPrivateMounts(root)) return false;
    test::makeRootFolders(root);
    test::mountRoot(root, HOTFIX_PROGRAM);
    return deviceOf(root + "/dev/null") != deviceOf("/dev/null") && works(root + "/dev/null");
  }));
}

TEST(CliSandboxTest, FilesOfTheMachineStayAsTheyAre) {
  if (!test::isRoot()) GTEST_SKIP() << "only root can give files away";
  const test::TemporaryFolder folder;
  const std::string& root = folder.path();

  EXPECT_TRUE(test::inChild([&] {
    if (test::enterPrivateMounts(root)) return false;
    test::makeRootFolders(root);
    test::mountRoot(root, HOTFIX_PROGRAM);
    for (const std::string file : {std::string("/etc/ld.so.cache"), std::string("/usr/bin/sh"),
                                   std::string(test::kProgramInRoot)})
      if (chmod((root + file).c_str(), 0700) == 0 || errno != EROFS) return false;
    return true;
  }));
}

}  // namespace
}  // namespace installer::cli
