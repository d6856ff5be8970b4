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
  const RootKeys keys = {{"a", 2}, {"b", 1}, {"c", 1}};

  EXPECT_EQ(4U, lineOfKey(kList, keys, "a"));
  EXPECT_EQ(3U, lineOfKey(kList, keys, "b"));
  EXPECT_EQ(std::nullopt, lineOfKey(kList, keys, "c"));
  EXPECT_EQ(std::nullopt, lineOfKey(kList, keys, "d"));
}

TEST(LinesTest, AKeyThatStandsElsewhereTooHasNoLine) {
  EXPECT_EQ(std::nullopt, lineOfKey(kList, {{"a", 1}}, "a"));
}

TEST(LinesTest, OnlyTheRootsKeysCount) {
  EXPECT_EQ((RootKeys{{"a", 2}, {"b", 1}}),
            rootKeysOf("<plist><dict><key>a</key><dict><key>c</key><key>b</key></dict><key >a</key>"
                       "<string/><!-- <key>b</key> --><key>b</key><true/></dict></plist>"));
  EXPECT_EQ((RootKeys{{"a", 1}}), rootKeysOf("<dict><key>a</key><true/></dict>"));
  EXPECT_EQ(RootKeys(), rootKeysOf("<array><dict><key>a</key></dict></array>"));
  EXPECT_EQ(RootKeys(), rootKeysOf("bplist00<dict><key>a</key></dict>"));
  EXPECT_EQ(RootKeys(), rootKeysOf("<dict><key>a</key>"));
}

}  // namespace
}  // namespace installer::ctl::lint::test
