#include "ctl/Shown.h"

#include <gtest/gtest.h>

namespace installer::ctl {
namespace {

TEST(ShownTest, ControlCharactersAndForeignBytesAreSpelledOut) {
  EXPECT_EQ("a\\x1b[2Jb", shown("a\x1b[2Jb"));
  EXPECT_EQ("a\\nb\\n", shown("a\nb\n"));
  EXPECT_EQ("\\x9b31m", shown("\xc2\x9b"
                              "31m"));
  EXPECT_EQ("\\xff\\xfe", shown("\xff\xfe"));
  EXPECT_EQ("", shown(""));
}

TEST(ShownTest, LettersStayAsTheyAre) {
  EXPECT_EQ("Grüße \\ 漢字", shown("Grüße \\ 漢字"));
}

TEST(ShownTest, WhatTurnsTheDirectionOrEndsLinesIsSpelledOut) {
  EXPECT_EQ("a\\u202eb", shown("a\u202eb"));
  EXPECT_EQ("\\u061c\\u200e\\u200f\\u2028\\u2066\\u2069",
            shown("\u061c\u200e\u200f\u2028\u2066\u2069"));
  EXPECT_EQ("\u061b\u200d\u2010\u2027\u202f\u2065\u206a",
            shown("\u061b\u200d\u2010\u2027\u202f\u2065\u206a"));
}

TEST(ShownTest, AnAbsentTextHasItsOwnWord) {
  EXPECT_EQ("none", shown(std::nullopt, "none"));
  EXPECT_EQ("\\n", shown(std::optional<std::string>("\n"), "none"));
}

TEST(ShownTest, ColumnsAreCharactersNotBytes) {
  EXPECT_EQ(0u, columnsOf(""));
  EXPECT_EQ(5u, columnsOf("Grüße"));
  EXPECT_EQ(4u, columnsOf("a \x1b[1mb\x1b[0mc"));
  EXPECT_EQ(1u, columnsOf("a\x1b["));
}

TEST(BrokenTest, LinesBreakAtBlanksWhereTheyWouldBeTooLong) {
  EXPECT_EQ("one two\nthree\n", broken("one two three", {7, 0}));
  EXPECT_EQ("one two\nthree\n", broken("one two three", {12, 0}));
  EXPECT_EQ("one two three\n", broken("one two three", {13, 0}));
}

TEST(BrokenTest, BlanksWithinALineStay) {
  EXPECT_EQ("one  two   three\n", broken("one  two   three", {std::nullopt, 0}));
  EXPECT_EQ("one  two\nthree\n", broken("one  two   three", {15, 0}));
  EXPECT_EQ("one  two\nthree\n", broken("one  two   three", {8, 0}));
  EXPECT_EQ("one\ntwo\nthree\n", broken("one  two   three", {7, 0}));
  EXPECT_EQ("one\ntwo\n", broken(" one \n two ", {std::nullopt, 0}));
}

TEST(BrokenTest, ALongWordStandsAloneAndWhole) {
  EXPECT_EQ("a\nlonger-than-that\nb\n", broken("a longer-than-that b", {8, 0}));
}

TEST(BrokenTest, WithoutAWidthEveryParagraphIsALine) {
  EXPECT_EQ("one two three\n", broken("one two three", {std::nullopt, 0}));
}

TEST(BrokenTest, FurtherLinesAndParagraphsAreIndented) {
  EXPECT_EQ("> one\n  two\n  three\n", broken("one two\nthree", {5, 2}, "> "));
}

TEST(BrokenTest, EmptyLinesBetweenParagraphsStayEmpty) {
  EXPECT_EQ("one\n\ntwo\n", broken("one\n\ntwo", {20, 0}));
  EXPECT_EQ("\n", broken("", {20, 0}));
}

TEST(ExplainedEntryTest, TheMeaningStandsBesideAShortTerm) {
  EXPECT_EQ("  -h  tells all\n", entry("  -h", "tells all", {80, 6}));
  EXPECT_EQ("  -h  tells all\n", entry("  -h", "tells all", {std::nullopt, 6}));
}

TEST(ExplainedEntryTest, TheMeaningStandsBelowALongTerm) {
  EXPECT_EQ("  -he\n    tells all\n", entry("  -he", "tells all", {80, 6}));
}

TEST(ExplainedEntryTest, TheMeaningStandsBelowWhereLinesAreShort) {
  EXPECT_EQ("  -h\n    tells\n    all\n", entry("  -h", "tells all", {10, 6}));
  EXPECT_EQ("  --a\n    FILE\n    tells\n", entry("  --a FILE", "tells", {9, 6}));
  EXPECT_EQ("  -h\n    tells all\n", entry("  -h", "tells all", {49, 6}));
  EXPECT_EQ("  -h  tells all\n", entry("  -h", "tells all", {50, 6}));
}

}  // namespace
}  // namespace installer::ctl
