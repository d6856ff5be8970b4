#include "ctl/Nearest.h"

#include <gtest/gtest.h>

namespace installer::ctl {
namespace {

const std::vector<std::string> kCommands = {"status", "explain", "plan", "lint"};

TEST(NearestTest, OneLetterThatIsWrongMissingTooManyOrExchangedIsForgiven) {
  for (const char* word : {"statos", "statu", "statuss", "sttaus", "STATUS", "status"})
    EXPECT_EQ("status", nearest(word, kCommands)) << word;
}

TEST(NearestTest, InShortWordsOneLetterIsForgivenAndNoMore) {
  EXPECT_EQ("plan", nearest("pan", kCommands));
  EXPECT_EQ("lint", nearest("lnit", kCommands));
  EXPECT_EQ(std::nullopt, nearest("tin", {"lint"}));
}

TEST(NearestTest, AThirdOfALongWordMayBeWrong) {
  EXPECT_EQ("allowMultiInstance", nearest("alowMultInstanz", {"version", "allowMultiInstance"}));
  EXPECT_EQ("abcdef", nearest("xxcdef", {"abcdef"}));
  EXPECT_EQ(std::nullopt, nearest("xxxdef", {"abcdef"}));
}

TEST(NearestTest, TheFewestMistakesWinAndOfEqualOnesTheFirst) {
  EXPECT_EQ("lint", nearest("lint", {"list", "lint"}));
  EXPECT_EQ("list", nearest("liat", {"list", "lint"}));
}

TEST(NearestTest, NothingIsNearToNothingKnownOrToAnEndlessWord) {
  EXPECT_EQ(std::nullopt, nearest("status", {}));
  EXPECT_EQ(std::nullopt, nearest("", kCommands));
  EXPECT_EQ("a", nearest("a", {"a"}));
  const std::string longest(64, 'a');
  EXPECT_EQ(longest, nearest(longest, {longest}));
  EXPECT_EQ(std::nullopt, nearest(longest + "a", {longest + "a"}));
}

}  // namespace
}  // namespace installer::ctl
