#include "platform/files/PathBelow.h"

#include <gtest/gtest.h>

namespace installer::test {
namespace {

TEST(PathBelowTest, TheRestIsWhatIsBehindTheFoldersComponents) {
  EXPECT_EQ(restBelow("/a/b", "/a/b/c/d"), "c/d");
  EXPECT_EQ(restBelow("/a/b/", "//a/./b///c/d/"), "c/d/");
  EXPECT_EQ(restBelow("/a/./b/.", "/a/b/c/./d"), "c/./d");
  EXPECT_EQ(restBelow("a", "a/b"), "b");
}

TEST(PathBelowTest, TheFolderItselfHasNoRest) {
  EXPECT_EQ(restBelow("/a/b", "/a/b"), "");
  EXPECT_EQ(restBelow("/a/b", "/a/b//"), "");
  EXPECT_EQ(restBelow("/a/b", "/a/b/."), ".");
}

TEST(PathBelowTest, AnIdleEndIsLeftOut) {
  EXPECT_EQ(withoutIdleEnd("/a/b/./."), "/a/b");
  EXPECT_EQ(withoutIdleEnd("/a/b//"), "/a/b");
  EXPECT_EQ(withoutIdleEnd("a/.b."), "a/.b.");
  EXPECT_EQ(withoutIdleEnd("a/.."), "a/..");
  EXPECT_EQ(withoutIdleEnd("/."), "/");
  EXPECT_EQ(withoutIdleEnd("."), ".");
}

TEST(PathBelowTest, OtherPathsAreNotBelow) {
  for (const char* path : {"/a", "/a/bc", "/a/c/b", "a/b/c", "/", "", "/b/a/b"})
    EXPECT_EQ(restBelow("/a/b", path), std::nullopt) << path;
  EXPECT_EQ(restBelow("a", "/a/b"), std::nullopt);
}

TEST(PathBelowTest, APathThatClimbsOutAgainIsNotBelow) {
  EXPECT_EQ(restBelow("/a", "/a/../b"), std::nullopt);
  EXPECT_EQ(restBelow("/a", "/a/b/../../c"), std::nullopt);
  EXPECT_EQ(restBelow("/a", "/a/b/../c"), "b/../c");
  EXPECT_EQ(restBelow("/a", "/a/b/.."), "b/..");
}

TEST(PathBelowTest, ClimbingComponentsAreNamesLikeOthersInTheFolder) {
  EXPECT_EQ(restBelow("/a/../b", "/a/../b/c"), "c");
  EXPECT_EQ(restBelow("/a/../b", "/b/c"), std::nullopt);
}

TEST(PathBelowTest, TheRootHasNoComponents) {
  for (const char* path : {"", "/", "//", "/./", "."}) EXPECT_TRUE(hasNoComponents(path)) << path;
  for (const char* path : {"a", "/a", "./a", ".."}) EXPECT_FALSE(hasNoComponents(path)) << path;
}

}  // namespace
}  // namespace installer::test
