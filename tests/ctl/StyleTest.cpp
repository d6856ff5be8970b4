#include "ctl/Style.h"

#include <gtest/gtest.h>

#include "support/ScopedVariable.h"

namespace installer::ctl {
namespace {

TEST(StyleTest, MarksAreLeftOutWithoutColors) {
  const Style plain;

  EXPECT_EQ("a", plain.strong("a"));
  EXPECT_EQ("a", plain.bad("a"));
}

TEST(StyleTest, EachMarkEndsWhereItsTextDoes) {
  Style style;
  style.color = true;

  EXPECT_EQ("\x1b[1ma\x1b[0m", style.strong("a"));
  EXPECT_EQ("\x1b[32ma\x1b[0m", style.good("a"));
  EXPECT_EQ("\x1b[33ma\x1b[0m", style.warning("a"));
  EXPECT_EQ("\x1b[31ma\x1b[0m", style.bad("a"));
  EXPECT_EQ("\x1b[2ma\x1b[0m", style.faint("a"));
}

TEST(StyleTest, ColorsAreWhatWasAskedFor) {
  EXPECT_TRUE(Style::chosenBy("always").color);
  EXPECT_FALSE(Style::chosenBy("never").color);
}

TEST(StyleTest, AWidthInTheEnvironmentIsTaken) {
  const installer::test::ScopedVariable columns("COLUMNS", "33");

  EXPECT_EQ(33u, Style::chosenBy("never").width);
  EXPECT_EQ(33u, Style::chosenBy("never").textWidth());
}

TEST(StyleTest, NoWidthIsSmallerThanTwentyColumns) {
  const installer::test::ScopedVariable columns("COLUMNS", "19");

  EXPECT_EQ(20u, Style::chosenBy("never").width);
}

TEST(StyleTest, SentencesAreBrokenAtEightyColumnsAtTheLatest) {
  const installer::test::ScopedVariable columns("COLUMNS", "200");

  EXPECT_EQ(200u, Style::chosenBy("never").width);
  EXPECT_EQ(80u, Style::chosenBy("never").textWidth());
  EXPECT_EQ(80u, Style().textWidth());
}

}  // namespace
}  // namespace installer::ctl
