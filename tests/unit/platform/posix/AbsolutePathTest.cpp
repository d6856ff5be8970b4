#include "platform/AbsolutePath.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <climits>

#include "support/TemporaryFolder.h"

namespace installer::test {
namespace {

class AbsolutePathTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_NE(nullptr, getcwd(_before, sizeof _before));
    ASSERT_EQ(0, chdir(_folder.path().c_str()));
    char now[PATH_MAX];
    ASSERT_NE(nullptr, getcwd(now, sizeof now));
    _now = now;
  }
  void TearDown() override { ASSERT_EQ(0, chdir(_before)); }

  const TemporaryFolder _folder;
  char _before[PATH_MAX] = {};
  std::string _now;
};

TEST_F(AbsolutePathTest, AnAbsolutePathStaysAsItIs) {
  EXPECT_EQ("/a/../b/", absolutePath("/a/../b/"));
  EXPECT_EQ("/", absolutePath("/"));
}

TEST_F(AbsolutePathTest, ARelativeOneStandsInTheWorkingFolder) {
  EXPECT_EQ(_now + "/a/b", absolutePath("a/b"));
  EXPECT_EQ(_now + "/a", absolutePath("././a"));
  EXPECT_EQ(_now + "/.a", absolutePath(".a"));
  EXPECT_EQ(_now + "/../a", absolutePath("../a"));
}

TEST_F(AbsolutePathTest, TheWorkingFolderItselfIsMeantByADotAndByNothing) {
  EXPECT_EQ(_now, absolutePath("."));
  EXPECT_EQ(_now, absolutePath("./"));
  EXPECT_EQ(_now, absolutePath(""));
}

TEST_F(AbsolutePathTest, InAFolderThatIsGoneAPathStaysAsItIs) {
  const std::string gone = _folder.makeFolder("gone");
  ASSERT_EQ(0, chdir(gone.c_str()));
  ASSERT_EQ(0, rmdir(gone.c_str()));

  EXPECT_EQ("a", absolutePath("a"));
}

}  // namespace
}  // namespace installer::test
