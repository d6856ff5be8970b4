#include "platform/TreeLook.h"

#include <gmock/gmock.h>
#include <sys/stat.h>

#include "support/ChildRun.h"
#include "support/TemporaryFolder.h"

namespace installer::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

constexpr LookLimits kFar{1000, 100, 1000};

std::vector<std::string> pathsOf(const TreeLook& look) {
  std::vector<std::string> paths;
  for (const SeenEntry& entry : look.entries) paths.push_back(entry.path);
  return paths;
}

class TreeLookTest : public ::testing::Test {
 protected:
  TreeLook look(const LookLimits& limits = kFar) {
    const auto seen = lookBelow(_folder.path(), limits);
    EXPECT_TRUE(seen.has_value());
    return seen.value_or(TreeLook());
  }

  TemporaryFolder _folder;
};

TEST_F(TreeLookTest, EntriesAreSortedByPathAtEveryDepth) {
  _folder.makeFile("b/y");
  _folder.makeFile("b/x/z");
  _folder.makeFile("a");

  EXPECT_THAT(pathsOf(look()), ElementsAre("a", "b", "b/x", "b/x/z", "b/y"));
  EXPECT_TRUE(look().isWhole);
}

TEST_F(TreeLookTest, EachKindIsToldWithWhatBelongsToIt) {
  _folder.makeFile("file", "four");
  _folder.makeFolder("folder");
  _folder.makeLink("link", "../nowhere");
  _folder.makePipe("pipe");

  const TreeLook seen = look();

  ASSERT_THAT(seen.entries, SizeIs(4));
  EXPECT_EQ(SeenKind::file, seen.entries[0].kind);
  EXPECT_EQ(4U, seen.entries[0].size);
  EXPECT_EQ(SeenKind::folder, seen.entries[1].kind);
  EXPECT_EQ(0U, seen.entries[1].size);
  EXPECT_EQ(SeenKind::link, seen.entries[2].kind);
  EXPECT_EQ("../nowhere", seen.entries[2].target);
  EXPECT_EQ(SeenKind::other, seen.entries[3].kind);
}

TEST_F(TreeLookTest, ModeOwnerAndTimeAreTold) {
  _folder.makeFile("file", "four", 0640);
  struct stat status {};
  ASSERT_EQ(0, lstat(_folder.path("file").c_str(), &status));

  const SeenEntry entry = look().entries.at(0);

  EXPECT_EQ(0640u, entry.mode);
  EXPECT_EQ(status.st_uid, entry.owner);
  EXPECT_EQ(status.st_gid, entry.group);
  EXPECT_EQ(status.st_mtime, entry.modified);
}

TEST_F(TreeLookTest, NoLinkLeadsToAFolderBeneath) {
  _folder.makeFile("real/below/file");
  _folder.makeLink("link", "real");
  _folder.makeLink("real/again", "below");

  const auto seen = lookBeneath(_folder.path(), "real/below", kFar);
  ASSERT_TRUE(seen.has_value());
  EXPECT_THAT(pathsOf(*seen), ElementsAre("file"));
  EXPECT_FALSE(lookBeneath(_folder.path(), "link/below", kFar).has_value());
  EXPECT_FALSE(lookBeneath(_folder.path(), "link", kFar).has_value());
  EXPECT_FALSE(lookBeneath(_folder.path(), "real/again", kFar).has_value());
  EXPECT_TRUE(lookBeneath(_folder.path("link"), "below", kFar).has_value());
  EXPECT_FALSE(lookBeneath(_folder.path("missing"), "", kFar).has_value());
}

TEST_F(TreeLookTest, LinksBelowAreNotEntered) {
  _folder.makeFile("real/inside");
  _folder.makeLink("again", "real");
  _folder.makeLink("real/loop", "..");

  EXPECT_THAT(pathsOf(look()), ElementsAre("again", "real", "real/inside", "real/loop"));
}

TEST_F(TreeLookTest, TheFolderItselfMayBeALink) {
  const TemporaryFolder other;
  other.makeFile("file");
  _folder.makeLink("link", other.path());

  const auto seen = lookBelow(_folder.path("link"), kFar);

  ASSERT_TRUE(seen.has_value());
  EXPECT_THAT(pathsOf(*seen), ElementsAre("file"));
}

TEST_F(TreeLookTest, NumberOfEntriesIsBounded) {
  for (const char* name : {"a", "b", "c"}) _folder.makeFile(name);

  EXPECT_TRUE(look({3, 1, 1000}).isWhole);
  EXPECT_THAT(look({2, 1, 1000}).entries, SizeIs(2));
  EXPECT_FALSE(look({2, 1, 1000}).isWhole);
}

TEST_F(TreeLookTest, LengthOfAllPathsIsBounded) {
  _folder.makeFile("ab/cd");

  EXPECT_TRUE(look({100, 2, 7}).isWhole);
  EXPECT_FALSE(look({100, 2, 6}).isWhole);
  EXPECT_THAT(pathsOf(look({100, 2, 6})), ElementsAre("ab"));
}

TEST_F(TreeLookTest, DepthIsBounded) {
  _folder.makeFile("a/b/c");

  EXPECT_THAT(pathsOf(look({100, 2, 1000})), ElementsAre("a", "a/b"));
  EXPECT_FALSE(look({100, 2, 1000}).isWhole);
  EXPECT_TRUE(look({100, 3, 1000}).isWhole);
}

TEST_F(TreeLookTest, WhatIsNoFolderCannotBeListed) {
  _folder.makeFile("file");
  _folder.makePipe("pipe");

  EXPECT_FALSE(lookBelow(_folder.path("file"), kFar).has_value());
  EXPECT_FALSE(lookBelow(_folder.path("pipe"), kFar).has_value());
  EXPECT_FALSE(lookBelow(_folder.path("missing"), kFar).has_value());
}

// Its names can be read, and nothing else of what is in it.
TEST_F(TreeLookTest, AFolderThatMayNotBeEnteredIsNotSeenWhole) {
  _folder.makeFile("listed/file");
  giveToOrdinaryUser(_folder.path("listed"));
  ASSERT_EQ(::chmod(_folder.path("listed").c_str(), 0444), 0);
  ASSERT_EQ(::chmod(_folder.path().c_str(), 0755), 0);

  EXPECT_TRUE(asOrdinaryUser([&] {
    const TreeLook seen = look();
    return !seen.isWhole && pathsOf(seen) == std::vector<std::string>{"listed"};
  }));

  ASSERT_EQ(::chmod(_folder.path("listed").c_str(), 0755), 0);
}

TEST_F(TreeLookTest, EmptyFolderHoldsNothing) {
  EXPECT_THAT(look().entries, IsEmpty());
  EXPECT_TRUE(look().isWhole);
}

}  // namespace
}  // namespace installer::test
