#include "ctl/plan/UnifiedDiff.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "support/RandomText.h"

namespace installer::ctl {
namespace {

using ::installer::test::RandomSource;

TEST(UnifiedDiffTest, EqualTextsHaveNone) {
  EXPECT_EQ(unifiedDiff("", ""), "");
  EXPECT_EQ(unifiedDiff("a\nb", "a\nb"), "");
}

TEST(UnifiedDiffTest, ALineThatChangesStandsAmongThreeOthers) {
  EXPECT_EQ(unifiedDiff("1\n2\n3\n4\nold\n5\n6\n7\n8\n", "1\n2\n3\n4\nnew\n5\n6\n7\n8\n"),
            "@@ -2,7 +2,7 @@\n 2\n 3\n 4\n-old\n+new\n 5\n 6\n 7\n");
}

TEST(UnifiedDiffTest, WhatIsNewOrGoneHasOneSideOnly) {
  EXPECT_EQ(unifiedDiff("", "a\nb\n"), "@@ -0,0 +1,2 @@\n+a\n+b\n");
  EXPECT_EQ(unifiedDiff("a\n", ""), "@@ -1 +0,0 @@\n-a\n");
}

TEST(UnifiedDiffTest, ALineFeedAtTheEndCounts) {
  EXPECT_EQ(unifiedDiff("a", "a\n"), "@@ -1 +1 @@\n-a\n\\ No newline at end of file\n+a\n");
}

TEST(UnifiedDiffTest, ChangesFarFromEachOtherStandApart) {
  EXPECT_EQ(unifiedDiff("a\n1\n2\n3\n4\n5\n6\n7\nb\n", "A\n1\n2\n3\n4\n5\n6\n7\nB\n"),
            "@@ -1,4 +1,4 @@\n-a\n+A\n 1\n 2\n 3\n@@ -6,4 +6,4 @@\n 5\n 6\n 7\n-b\n+B\n");
  EXPECT_EQ(unifiedDiff("a\n1\n2\n3\n4\n5\n6\nb\n", "A\n1\n2\n3\n4\n5\n6\nB\n"),
            "@@ -1,8 +1,8 @@\n-a\n+A\n 1\n 2\n 3\n 4\n 5\n 6\n-b\n+B\n");
}

TEST(UnifiedDiffTest, OnlyWhatDiffersIsComparedAndCanBeTooLong) {
  std::string old;
  std::string now;
  for (int line = 0; line < 3000; ++line) {
    old += std::to_string(line) + "\n";
    now += std::to_string(-line - 1) + "\n";
  }
  EXPECT_EQ(unifiedDiff(old, now), std::nullopt);
  EXPECT_EQ(unifiedDiff("a\n" + old, "b\n" + old), "@@ -1,4 +1,4 @@\n-a\n+b\n 0\n 1\n 2\n");
  EXPECT_EQ(unifiedDiff(old + "a\n" + old, old + old),
            "@@ -2998,7 +2998,6 @@\n 2997\n 2998\n 2999\n-a\n 0\n 1\n 2\n");
}

TEST(UnifiedDiffTest, TextsOfAMillionLinesAreNotTakenApart) {
  const std::string million(1'000'000, '\n');

  EXPECT_TRUE(unifiedDiff("", million));
  EXPECT_FALSE(unifiedDiff("", million + "x"));
  EXPECT_FALSE(unifiedDiff(million + "\n", ""));
}

TEST(UnifiedDiffTest, AZeroByteIsInNoText) {
  EXPECT_TRUE(isText(""));
  EXPECT_TRUE(isText("a\xff\n"));
  EXPECT_FALSE(isText(std::string("a\0b", 3)));
}

std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::size_t begin = 0;
  while (begin < text.size()) {
    const std::size_t end = std::min(text.find('\n', begin), text.size() - 1) + 1;
    lines.push_back(text.substr(begin, end - begin));
    begin = end;
  }
  return lines;
}

// The text after the changes, as whoever reads them makes it.
std::string changed(const std::string& before, const std::string& difference) {
  const std::vector<std::string> old = linesOf(before);
  std::size_t next = 0;
  std::string after;
  for (const std::string& line : linesOf(difference)) {
    if (line.starts_with("@@ -")) {
      const std::size_t first = std::stoul(line.substr(4));
      const bool isEmpty = line.substr(4, line.find(' ', 4) - 4).ends_with(",0");
      while (next < first - (isEmpty ? 0 : 1)) after += old[next++];
    } else if (line.starts_with('\\')) {
      after.pop_back();
    } else if (line.starts_with('+')) {
      after += line.substr(1);
    } else {
      // A line that is gone ends without a line feed in the difference only.
      if (line.starts_with(' ')) after += old[next];
      EXPECT_EQ(old[next].substr(0, old[next].find('\n')), line.substr(1, line.size() - 2));
      ++next;
    }
  }
  while (next < old.size()) after += old[next++];
  return after;
}

TEST(UnifiedDiffTest, RandomTextsBecomeTheOthers) {
  const std::vector<std::string> pieces = {"a\n", "b\n", "c\n", "a\n", "\n"};
  installer::test::forRandomCases(
      [&](RandomSource& random) {
        const std::string before = random.textOf(pieces, 30);
        const std::string after = random.textOf(pieces, 30);
        const auto difference = unifiedDiff(before, after);
        ASSERT_TRUE(difference);
        EXPECT_EQ(changed(before, *difference), after) << before << "\n" << *difference;
      },
      2'000);
}

}  // namespace
}  // namespace installer::ctl
