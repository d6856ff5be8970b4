#include "ctl/new/Settings.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/Proves.h"

namespace installer::ctl::package {
namespace {

using ::testing::Optional;

std::optional<std::string> plain(std::string_view text) {
  std::size_t line = 0;
  return plainSettings(text, line);
}

// The line that keeps the text from being settings; 0 when nothing does.
std::size_t badLineOf(std::string_view text) {
  std::size_t line = 0;
  return plainSettings(text, line) ? 0 : line;
}

TEST(SettingsTest, PlainSettingsStayAsTheyAre) {
  for (const char* const text : {"", "a=b", "a=b\n", "# c\n\na/b=\\u00e9\tx \\\\\n"})
    EXPECT_THAT(plain(text), Optional(std::string(text)));
}

TEST(SettingsTest, LettersBecomeEscapesOfTheirUnits) {
  proves("NEW-4");
  EXPECT_THAT(plain("a=\xC3\xBC\xE2\x82\xAC\xF0\x9F\x98\x80!\n"),
              Optional(std::string("a=\\u00fc\\u20ac\\ud83d\\ude00!\n")));
}

// An escape begins with a backslash that none stands before.
TEST(SettingsTest, ABackslashThatMeansNothingGoesBeforeALetter) {
  proves("NEW-4");
  EXPECT_THAT(plain("k\\\xC3\xBC=v"), Optional(std::string("k\\u00fc=v")));
  EXPECT_THAT(plain("k\\\\\xC3\xBC=v"), Optional(std::string("k\\\\\\u00fc=v")));
  EXPECT_THAT(plain("k\\\\\\\xC3\xBC=v"), Optional(std::string("k\\\\\\u00fc=v")));
  EXPECT_THAT(plain("\\\xF0\x9F\x98\x80"), Optional(std::string("\\ud83d\\ude00")));
  EXPECT_THAT(plain("k\\t\xC3\xBC=v"), Optional(std::string("k\\t\\u00fc=v")));
}

TEST(SettingsTest, AByteOrderMarkGoes) {
  proves("NEW-4");
  EXPECT_THAT(plain("\xEF\xBB\xBF"
                    "a=b\n"),
              Optional(std::string("a=b\n")));
  EXPECT_THAT(plain("a=\xEF\xBB\xBF"), Optional(std::string("a=\\ufeff")));
}

TEST(SettingsTest, LinesEndWithLineFeeds) {
  proves("NEW-4");
  EXPECT_THAT(plain("a=b\r\nc=d\re=f\r\r\n\ng"), Optional(std::string("a=b\nc=d\ne=f\n\n\ng")));
}

TEST(SettingsTest, WhatIsNoUtf8IsTold) {
  proves("NEW-4");
  EXPECT_EQ(1U, badLineOf("\xFC"));
  EXPECT_EQ(3U, badLineOf("a=b\nc=d\ne=\xFC\n"));
  EXPECT_EQ(3U, badLineOf("a=b\r\nc=d\re=\xC3"));
  EXPECT_EQ(1U, badLineOf("a=\xED\xA0\x80"));  // half of a pair
  EXPECT_EQ(1U, badLineOf("\xFF\xFE"));
}

}  // namespace
}  // namespace installer::ctl::package
