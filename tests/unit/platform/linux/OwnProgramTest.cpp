#include "platform/OwnProgram.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace installer::test {
namespace {

TEST(OwnProgramTest, ItIsTheTestsOwn) {
  EXPECT_EQ(std::filesystem::read_symlink("/proc/self/exe").string(), ownProgram());
}

}  // namespace
}  // namespace installer::test
