#include "base/Characters.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "support/Proves.h"
#include "support/RandomText.h"
#include "support/models/CharactersModel.h"

namespace installer {
namespace {

struct CharacterRow {
  std::string name;
  std::string bytes;
  std::u16string units;
};

class CharacterTable : public ::testing::TestWithParam<CharacterRow> {};

TEST_P(CharacterTable, TextIsTakenApartAndPutTogetherAgain) {
  proves("TEXT-3");
  EXPECT_EQ(toUnits(GetParam().bytes), GetParam().units);
  EXPECT_EQ(fromUnits(GetParam().units), GetParam().bytes);
}

INSTANTIATE_TEST_SUITE_P(
    Characters, CharacterTable,
    ::testing::Values(CharacterRow{"Nothing", "", u""},
                      CharacterRow{"LastOfOneByte", "\x7F", u"\x7F"},
                      CharacterRow{"FirstOfTwoBytes", "\xC2\x80", u"\u0080"},
                      CharacterRow{"LastOfTwoBytes", "\xDF\xBF", u"\u07FF"},
                      CharacterRow{"FirstOfThreeBytes", "\xE0\xA0\x80", u"\u0800"},
                      CharacterRow{"LastOfThreeBytes", "\xEF\xBF\xBF", u"\uFFFF"},
                      CharacterRow{"FirstOfFourBytes", "\xF0\x90\x80\x80", u"\U00010000"},
                      CharacterRow{"LastOfFourBytes", "\xF4\x8F\xBF\xBF", u"\U0010FFFF"},
                      CharacterRow{"BeforeTheHalves", "\xED\x9F\xBF", u"\uD7FF"},
                      CharacterRow{"BehindTheHalves", "\xEE\x80\x80", u"\uE000"},
                      CharacterRow{"FirstHighHalf", "\xED\xA0\x80", {0xD800}},
                      CharacterRow{"LastHighHalf", "\xED\xAF\xBF", {0xDBFF}},
                      CharacterRow{"FirstLowHalf", "\xED\xB0\x80", {0xDC00}},
                      CharacterRow{"LastLowHalf", "\xED\xBF\xBF", {0xDFFF}},
                      CharacterRow{
                          "HalvesInTheWrongOrder", "\xED\xB0\x80\xED\xA0\x80", {0xDC00, 0xD800}},
                      CharacterRow{"TwoHighHalves", "\xED\xA0\x80\xED\xA0\x80", {0xD800, 0xD800}},
                      CharacterRow{"HighHalfBeforeALetter",
                                   "\xED\xAF\xBF"
                                   "a",
                                   {0xDBFF, 'a'}}),
    [](const auto& tested) { return tested.param.name; });

TEST(CharactersTest, OneByteBeyondAsciiIsSeenWhereverItIs) {
  for (std::size_t length = 0; length < 30; ++length) {
    std::string text(length, '\x7F');
    EXPECT_TRUE(isAscii(text));
    for (std::size_t at = 0; at < length; ++at) {
      text[at] = '\x80';
      EXPECT_FALSE(isAscii(text)) << length << " " << at;
      text[at] = '\0';
    }
  }
}

// What the rows with halves of pairs hold is no UTF-8 by its letter.
TEST_P(CharacterTable, HalvesAreNoUtf8) {
  for (std::size_t at = 0; at < GetParam().bytes.size();) {
    const DecodedCharacter general = decodeCharacter(GetParam().bytes, at);
    const bool half = general.character >= 0xD800 && general.character <= 0xDFFF;
    const std::optional<DecodedCharacter> strict = decodeUtf8(GetParam().bytes, at);
    ASSERT_EQ(strict.has_value(), !half) << at;
    EXPECT_EQ(strict.value_or(general).character, general.character) << at;
    EXPECT_EQ(strict.value_or(general).length, general.length) << at;
    at += general.length;
  }
}

class BrokenTextTable : public ::testing::TestWithParam<CharacterRow> {};

TEST_P(BrokenTextTable, EachByteThatBeginsNoCharacterIsTheLatin1Character) {
  proves("TEXT-3");
  EXPECT_EQ(toUnits(GetParam().bytes), GetParam().units);
}

TEST_P(BrokenTextTable, IsNoUtf8) {
  EXPECT_EQ(decodeUtf8(GetParam().bytes, 0), std::nullopt);
}

INSTANTIATE_TEST_SUITE_P(
    Characters, BrokenTextTable,
    ::testing::Values(
        CharacterRow{"LoneFollowingByte", "\x80", {0x80}},
        CharacterRow{"LastFollowingByte",
                     "\xBF"
                     "a",
                     {0xBF, 'a'}},
        CharacterRow{"OverlongInTwoBytes", "\xC1\xBF", {0xC1, 0xBF}},
        CharacterRow{"OverlongInThreeBytes", "\xE0\x9F\xBF", {0xE0, 0x9F, 0xBF}},
        CharacterRow{"OverlongInFourBytes", "\xF0\x8F\xBF\xBF", {0xF0, 0x8F, 0xBF, 0xBF}},
        CharacterRow{"BeyondTheLastCharacter", "\xF4\x90\x80\x80", {0xF4, 0x90, 0x80, 0x80}},
        CharacterRow{"LeadOfFiveBytes", "\xF8\x88\x80\x80\x80", {0xF8, 0x88, 0x80, 0x80, 0x80}},
        CharacterRow{
            "LeadOfFiveBytesBeforeThreeMore", "\xF8\x90\x80\x80", {0xF8, 0x90, 0x80, 0x80}},
        CharacterRow{"HighestByte", "\xFF", {0xFF}},
        CharacterRow{"TwoBytesCutShort", "\xC3", {0xC3}},
        CharacterRow{"ThreeBytesCutShort", "\xE2\x82", {0xE2, 0x82}},
        CharacterRow{"FourBytesCutShort", "\xF0\x9F\x98", {0xF0, 0x9F, 0x98}},
        CharacterRow{"LetterInsteadOfTheSecondByte",
                     "\xC3"
                     "a",
                     {0xC3, 'a'}},
        CharacterRow{"LeadInsteadOfTheSecondByte", "\xC3\xC3\xA9", {0xC3, 0xE9}},
        CharacterRow{"LetterInsteadOfTheThirdByte",
                     "\xE2\x82"
                     "a",
                     {0xE2, 0x82, 'a'}}),
    [](const auto& tested) { return tested.param.name; });

TEST(CharactersTest, HalvesSideBySideBecomeOneCharacter) {
  proves("TEXT-3");
  EXPECT_EQ(fromUnits(std::u16string{0xD83D, 0xDE00}), "\xF0\x9F\x98\x80");
  EXPECT_EQ(fromUnits(std::u16string{0xD83D, 0xD83D, 0xDE00}), "\xED\xA0\xBD\xF0\x9F\x98\x80");
}

struct XmlRow {
  const char* name;
  std::string text;
  std::string held;
};

class XmlCharactersTest : public ::testing::TestWithParam<XmlRow> {};

TEST_P(XmlCharactersTest, HoldWhatXmlMayHold) {
  proves("TEXT-4");
  EXPECT_EQ(asXmlCharacters(GetParam().text), GetParam().held);
}

INSTANTIATE_TEST_SUITE_P(
    Texts, XmlCharactersTest,
    ::testing::Values(
        XmlRow{"Empty", "", ""}, XmlRow{"Plain", "a <&>\x7F", "a <&>\x7F"},
        XmlRow{"Breaks", "\t\n\r", "\t\n\r"},
        XmlRow{"Controls", std::string("\0\x01\x08\x0B\x0C\x0E\x1F ", 8),
               "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD"
               "\xEF\xBF\xBD\xEF\xBF\xBD "},
        XmlRow{"Utf8", "\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80",
               "\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80"},
        XmlRow{"OtherBytes", "\xFF\x80", "\xC3\xBF\xC2\x80"},
        XmlRow{"HighHalf", "\xED\xA0\x80", "\xEF\xBF\xBD"},
        XmlRow{"LowHalf", "\xED\xBF\xBF", "\xEF\xBF\xBD"},
        XmlRow{"BesideTheHalves", "\xED\x9F\xBF\xEE\x80\x80", "\xED\x9F\xBF\xEE\x80\x80"},
        XmlRow{"NoCharacters", "\xEF\xBF\xBE\xEF\xBF\xBF", "\xEF\xBF\xBD\xEF\xBF\xBD"},
        XmlRow{"LastOfThePlane", "\xEF\xBF\xBD", "\xEF\xBF\xBD"}),
    [](const auto& tested) { return tested.param.name; });

TEST(CharactersTest, DecodedCharacterTellsItsLength) {
  const DecodedCharacter decoded = decodeCharacter("a\xE2\x82\xACz", 1);

  EXPECT_EQ(decoded.character, U'\u20AC');
  EXPECT_EQ(decoded.length, 3u);
}

TEST(CharactersTest, RandomBytesAgreeWithTheModel) {
  proves("TEXT-3");
  const std::vector<std::string> pieces = {
      "a",        "\x7F",         "\x80",         "\x8F",         "\x90",
      "\x9F",     "\xA0",         "\xBF",         "\xC0",         "\xC1",
      "\xC2",     "\xDF",         "\xE0",         "\xED",         "\xEF",
      "\xF0",     "\xF4",         "\xF5",         "\xF8",         "\xFF",
      "\xC3\xA9", "\xE2\x82\xAC", "\xED\xA0\x80", "\xED\xB0\x80", "\xF0\x9F\x98\x80"};
  test::forRandomCases([&](test::RandomSource& random) {
    const std::string bytes = random.textOf(pieces, 10);

    const std::u16string units = toUnits(bytes);
    const model::Units expected = model::unitsOf(bytes);

    EXPECT_EQ(model::Units(units.begin(), units.end()), expected);
    EXPECT_EQ(fromUnits(units), model::textOf(expected));
  });
}

}  // namespace
}  // namespace installer
