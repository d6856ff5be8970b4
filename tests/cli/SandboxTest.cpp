#include "cli/CliSandbox.h"

#include <gmock/gmock.h>

#include <filesystem>
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

}  // namespace
}  // namespace installer::cli
