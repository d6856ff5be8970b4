#include "ctl/lint/Lines.h"

#include <gmock/gmock.h>

namespace installer::ctl::lint::test {
namespace {

using ::testing::ElementsAre;

constexpr std::string_view kText = "one\ntwo\nthree two\n";
constexpr std::string_view kList = "<dict>\n<key>a</key>\n<key>b</key>\n<key>a</key>\n</dict>\n";

TEST(LinesTest, LinesCountFromOne) {
  EXPECT_EQ(1U, lineAt(kText, 0));
  EXPECT_EQ(1U, lineAt(kText, 3));
  EXPECT_EQ(2U, lineAt(kText, 4));
  EXPECT_EQ(3U, lineOf(kText, "three"));
  EXPECT_EQ(2U, lineOf(kText, "two"));
  EXPECT_EQ(std::nullopt, lineOf(kText, "four"));
  EXPECT_EQ(std::nullopt, lineOf(kText, ""));
}

TEST(LinesTest, PlacesThatAscendAreCountedTogether) {
  EXPECT_THAT(linesAt(kText, {0, 4, 5, 14}), ElementsAre(1, 2, 2, 3));
  EXPECT_THAT(linesAt(kText, {}), ElementsAre());
}

TEST(LinesTest, ASearchGoesOnBehindWhatItFound) {
  LineSearch search(kText);

  EXPECT_EQ(2U, search.next("two"));
  EXPECT_EQ(3U, search.next("two"));
  EXPECT_EQ(std::nullopt, search.next("one"));
  EXPECT_EQ(std::nullopt, search.next("two")) << "lost once, it looks for nothing more";
}

TEST(LinesTest, TheLastOfSeveralKeysCounts) {
  EXPECT_EQ(4U, lineOfKey(kList, "a"));
  EXPECT_EQ(3U, lineOfKey(kList, "b"));
  EXPECT_EQ(std::nullopt, lineOfKey(kList, "c"));
  EXPECT_EQ(2U, countOfKey(kList, "a"));
  EXPECT_EQ(0U, countOfKey(kList, "c"));
}

TEST(LinesTest, ABinaryListHasNoLines) {
  const std::string binary = "bplist00" + std::string(kList);

  EXPECT_EQ(std::nullopt, lineOfKey(binary, "a"));
  EXPECT_EQ(0U, countOfKey(binary, "a"));
}

}  // namespace
}  // namespace installer::ctl::lint::test
