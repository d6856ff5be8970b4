#include "cli/CliSandbox.h"

#include <gmock/gmock.h>

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

}  // namespace
}  // namespace installer::cli
