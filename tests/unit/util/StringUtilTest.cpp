#include "hotfix/util/StringUtil.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "platform/Platform.h"
#include "support/FakeUserContext.h"
#include "support/Proves.h"
#include "support/RandomText.h"
#include "support/models/PropertiesWriterModel.h"
#include "support/models/StringModels.h"

namespace installer {
namespace {

using namespace std::string_literals;

using test::forRandomCases;
using test::RandomSource;

// --- Escaping ------------------------------------------------------------------------------------

struct EscapeRow {
  std::string name;
  std::string text;
  std::string key;    // its escaped form as a key
  std::string value;  // its escaped form as a value
};

class EscapeTable : public ::testing::TestWithParam<EscapeRow> {};

TEST_P(EscapeTable, KeyIsEscaped) {
  proves("PROPERTIES-12");
  EXPECT_EQ(StringUtil::convertNSStringTo8859_1Key(GetParam().text), GetParam().key);
}

TEST_P(EscapeTable, ValueIsEscaped) {
  proves("PROPERTIES-12");
  EXPECT_EQ(StringUtil::convertNSStringTo8859_1Value(GetParam().text), GetParam().value);
}

INSTANTIATE_TEST_SUITE_P(
    StringUtil, EscapeTable,
    ::testing::Values(
        EscapeRow{"Nothing", "", "", ""}, EscapeRow{"Letters", "azAZ09", "azAZ09", "azAZ09"},
        EscapeRow{"Blank", "x y", "x\\ y", "x y"}, EscapeRow{"BlankAtTheStart", " x", "\\ x", " x"},
        EscapeRow{"BlankAtTheEnd", "x ", "x\\ ", "x "}, EscapeRow{"NumberSign", "#", "\\#", "\\#"},
        EscapeRow{"ExclamationMark", "!", "\\!", "\\!"}, EscapeRow{"EqualsSign", "=", "\\=", "\\="},
        EscapeRow{"Colon", ":", "\\:", "\\:"}, EscapeRow{"Backslash", "\\", "\\\\", "\\\\"},
        EscapeRow{"BackslashInside", "c:\\dir", "c\\:\\\\dir", "c\\:\\\\dir"},
        EscapeRow{"BackslashAtTheEnd", "a\\", "a\\\\", "a\\\\"},
        EscapeRow{"BackslashBeforeU", "\\u00e9", "\\\\u00e9", "\\u00e9"},
        EscapeRow{"BackslashBeforeUppercaseU", "\\U00e9", "\\\\U00e9", "\\\\U00e9"},
        EscapeRow{"TwoBackslashesBeforeU", "\\\\u", "\\\\\\\\u", "\\\\\\u"},
        EscapeRow{"BackslashAndULast", "x\\u", "x\\\\u", "x\\u"},
        EscapeRow{"AllOtherPrintableCharacters", "\"$%&'()*+,-./;<>?@[]^_`{|}~",
                  "\"$%&'()*+,-./;<>?@[]^_`{|}~", "\"$%&'()*+,-./;<>?@[]^_`{|}~"},
        EscapeRow{"LastControlCharacter", "\x1F", "\\u001f", "\\u001f"},
        EscapeRow{"Delete", "~\x7F", "~\\u007f", "~\\u007f"},
        EscapeRow{"Tab", "\t", "\\u0009", "\\u0009"},
        EscapeRow{"LineEnds", "\r\n", "\\u000d\\u000a", "\\u000d\\u000a"},
        EscapeRow{"Zero", std::string(1, '\0'), "\\u0000", "\\u0000"},
        EscapeRow{"Latin1Letter", "\u00e9", "\\u00e9", "\\u00e9"},
        EscapeRow{"SixteenBits", "\u20ac", "\\u20ac", "\\u20ac"},
        EscapeRow{"BeyondSixteenBits", "\U0001F600", "\\ud83d\\ude00", "\\ud83d\\ude00"},
        EscapeRow{"LoneHalf", "\xED\xA0\xBD", "\\ud83d", "\\ud83d"},
        EscapeRow{"NoUtf8", "a\xE9z", "a\\u00e9z", "a\\u00e9z"},
        EscapeRow{"BackslashBeforeAnEscapedCharacter", "\\\u00e9", "\\\\\\u00e9", "\\\\\\u00e9"}),
    [](const auto& tested) { return tested.param.name; });

TEST(StringUtilTest, HexDigitsAreFourAndLowerCase) {
  proves("TEXT-5");
  std::string text = "x";

  for (const char16_t unit : u"\u0001\u0009\u00af\u0f10\uabcd\uffff"s)
    StringUtil::addHexDigits(unit, text);

  EXPECT_EQ(text, "x0001000900af0f10abcdffff");
}

// What the escaping looks at, and texts in its neighbourhood.
const std::vector<std::string> kEscapePieces = {
    "=",      ":",      " ",          "\t",           "\\",          "#",    "!",    "-",
    "X",      "u",      "\n",         "\r",           "0",           "9",    "a",    "F",
    "g",      "\x1F",   "~",          "\x7F",         "\x80",        "\x85", "\xA0", "\xE9",
    "\xFF",   "\\u",    "\\u00e9",    "\\ud",         "U",           "",     "%@",   "\v",
    "\u00e9", "\u20ac", "\U0001F600", "\xED\xA0\xBD", "\xED\xB8\x80"};

TEST(StringUtilTest, RandomKeysAndValuesAreEscapedAsTheModelSays) {
  proves("PROPERTIES-12");
  forRandomCases([](RandomSource& random) {
    const std::string text = random.textOf(kEscapePieces, 12);

    EXPECT_EQ(StringUtil::convertNSStringTo8859_1Key(text), model::escapedKey(text));
    EXPECT_EQ(StringUtil::convertNSStringTo8859_1Value(text), model::escapedValue(text));
  });
}

// --- Escapes decoded -----------------------------------------------------------------------------

struct TextRow {
  std::string name;
  std::string text;
  std::string result;
};

class DecodeTable : public ::testing::TestWithParam<TextRow> {};

TEST_P(DecodeTable, EscapesBecomeCharacters) {
  proves("TEXT-7");
  EXPECT_EQ(StringUtil::convertUnicode2Characters(GetParam().text), GetParam().result);
}

INSTANTIATE_TEST_SUITE_P(
    StringUtil, DecodeTable,
    ::testing::Values(TextRow{"Nothing", "", ""}, TextRow{"PlainText", "a b\\c", "a b\\c"},
                      TextRow{"Lowercase", "<\\u00e9>", "<\u00e9>"},
                      TextRow{"Uppercase", "\\u00E9", "\u00e9"},
                      TextRow{"UppercaseUIsNoEscape", "\\U00e9", "\\U00e9"},
                      TextRow{"AllDigits", "\\u0123\\u4567\\u89ab\\ucdef\\uABCD\\uEF00",
                              "\u0123\u4567\u89ab\ucdef\uabcd\uef00"},
                      TextRow{"ThreePlacesOnly", "\\u00e", "\\u00e"},
                      TextRow{"ThreePlacesBehindAnother", "\\u0041\\u00e", "A\\u00e"},
                      TextRow{"FourPlacesAtTheEnd", "\\u0041", "A"},
                      TextRow{"FifthPlaceIsText", "\\u00411", "A1"},
                      TextRow{"PlacesThatAreNoDigitsCountForNothing", "\\u0g4z1",
                              "\x04"
                              "1"},
                      TextRow{"NeighboursOfDigits", "\\u/4:1\\u@4`1\\uG4g1", "AAA"},
                      TextRow{"NoDigitAtAll", "\\uzzzz!", std::string(1, '\0') + "!"},
                      TextRow{"PlacesTakeABackslashToo", "\\u00\\u0041",
                              std::string(1, '\0') + "0041"},
                      TextRow{"PairBecomesOneCharacter", "\\ud83d\\ude00", "\U0001F600"},
                      TextRow{"LoneHalfIsKept", "\\ud83dx", "\xED\xA0\xBDx"},
                      TextRow{"LoneHalfIsReadAgain", "\xED\xA0\xBD\\ude00", "\U0001F600"},
                      TextRow{"OtherCharacterCountsAsTwoPlaces",
                              "\\u\U0001F600"
                              "41",
                              "A"},
                      TextRow{"OtherCharacterLeavesTooFewPlaces", "\\u\u20ac41", "\\u\u20ac41"},
                      TextRow{"DoubledBackslash", "\\\\u0041", "\\A"},
                      TextRow{"NoUtf8BecomesLatin1", "\xE9", "\u00e9"}),
    [](const auto& tested) { return tested.param.name; });

TEST(StringUtilTest, RandomEscapesAreDecodedAsTheModelSays) {
  proves("TEXT-7");
  const std::vector<std::string> pieces = {"\\",
                                           "u",
                                           "\\u",
                                           "0",
                                           "1",
                                           "9",
                                           "a",
                                           "f",
                                           "A",
                                           "F",
                                           "g",
                                           "G",
                                           "/",
                                           ":",
                                           "@",
                                           "`",
                                           "\\u00",
                                           "\\ud83d",
                                           "\\ude00",
                                           "\\uD",
                                           " ",
                                           "x",
                                           "\u00e9",
                                           "\u20ac",
                                           "\U0001F600",
                                           "\xED\xA0\xBD",
                                           "\xED\xB8\x80",
                                           "\xE9"};
  forRandomCases([&](RandomSource& random) {
    const std::string text = random.textOf(pieces, 14);

    EXPECT_EQ(StringUtil::convertUnicode2Characters(text), model::unicodeDecoded(text));
  });
}

// --- Single characters ---------------------------------------------------------------------------

TEST(StringUtilTest, CharacterAtAPlaceInsideIsATextOfItsOwn) {
  proves("TEXT-6");
  EXPECT_EQ(StringUtil::charAtIndex(0, "abc"), "a");
  EXPECT_EQ(StringUtil::charAtIndex(2, "abc"), "c");
  EXPECT_EQ(StringUtil::charAtIndex(1, "\u00e9\u20ac"), "\u20ac");
}

TEST(StringUtilTest, CharacterOutsideTheTextIsAbsent) {
  proves("TEXT-6");
  EXPECT_EQ(StringUtil::charAtIndex(3, "abc"), std::nullopt);
  EXPECT_EQ(StringUtil::charAtIndex(-1, "abc"), std::nullopt);
  EXPECT_EQ(StringUtil::charAtIndex(0, ""), std::nullopt);
  EXPECT_EQ(StringUtil::charAtIndex(1, "\u00e9"), std::nullopt);
  EXPECT_EQ(StringUtil::charAtIndex(0, std::nullopt), std::nullopt);
}

TEST(StringUtilTest, CharacterBeyondSixteenBitsCountsAsTwoPlaces) {
  proves("TEXT-6");
  EXPECT_EQ(StringUtil::charAtIndex(0, "\U0001F600z"), "\xED\xA0\xBD");
  EXPECT_EQ(StringUtil::charAtIndex(1, "\U0001F600z"), "\xED\xB8\x80");
  EXPECT_EQ(StringUtil::charAtIndex(2, "\U0001F600z"), "z");
}

// --- Replacement ---------------------------------------------------------------------------------

struct ReplaceRow {
  std::string name;
  std::string source;
  std::string target;
  std::string replacement;
  std::string result;
};

class ReplaceTable : public ::testing::TestWithParam<ReplaceRow> {};

TEST_P(ReplaceTable, OccurrencesAreReplacedFromTheEnd) {
  proves("TEXT-8");
  EXPECT_EQ(StringUtil::stringByReplacingOccurrencesOfString(GetParam().source, GetParam().target,
                                                             GetParam().replacement),
            GetParam().result);
}

INSTANTIATE_TEST_SUITE_P(
    StringUtil, ReplaceTable,
    ::testing::Values(ReplaceRow{"NoOccurrence", "abc", "x", "y", "abc"},
                      ReplaceRow{"EveryOccurrence", "a-b-c", "-", "+", "a+b+c"},
                      ReplaceRow{"WholeText", "abc", "abc", "x", "x"},
                      ReplaceRow{"AtBothEnds", "xax", "x", "yy", "yyayy"},
                      ReplaceRow{"ByNothing", "a-b-c", "-", "", "abc"},
                      ReplaceRow{"OverlapsGoToTheLastOne", "aaa", "aa", "b", "ab"},
                      ReplaceRow{"SideBySide", "aaaa", "aa", "b", "bb"},
                      ReplaceRow{"ReplacementIsNotSearched", "aab", "ab", "b", "ab"},
                      ReplaceRow{"ReplacementHoldsTheTarget", "a", "a", "aa", "aa"},
                      ReplaceRow{"EmptyTarget", "abc", "", "x", "abc"},
                      ReplaceRow{"EmptySource", "", "a", "x", ""},
                      ReplaceRow{"AllEmpty", "", "", "x", ""},
                      ReplaceRow{"TargetLongerThanTheSource", "ab", "abc", "x", "ab"},
                      ReplaceRow{"CaseMatters", "aA", "a", "x", "xA"}),
    [](const auto& tested) { return tested.param.name; });

TEST(StringUtilTest, RandomReplacementsAgreeWithTheModel) {
  proves("TEXT-8");
  const std::vector<std::string> pieces = {"a", "b", "ab", "aa", "${x}", "$", "\u00e9"};
  forRandomCases([&](RandomSource& random) {
    const std::string source = random.textOf(pieces, 12);
    const std::string target = random.textOf(pieces, 2);
    const std::string replacement = random.textOf(pieces, 2);

    EXPECT_EQ(StringUtil::stringByReplacingOccurrencesOfString(source, target, replacement),
              model::replacedBackwards(source, target, replacement));
  });
}

// --- Small ones ----------------------------------------------------------------------------------

TEST(StringUtilTest, BooleansAreTextsInLowerCase) {
  proves("TEXT-2");
  EXPECT_EQ(StringUtil::boolToString(true), "true");
  EXPECT_EQ(StringUtil::boolToString(false), "false");
}

TEST(StringUtilTest, TranslationSignChangesNothing) {
  proves("TEXT-5");
  const std::string text = "text";

  StringUtil::addTranslationSignToString(text);

  EXPECT_EQ(text, "text");
}

TEST(StringUtilTest, QuotesGoAroundTheTextAsItIs) {
  proves("TEXT-1");
  EXPECT_EQ(StringUtil::addQuotesToString("a b"), "\"a b\"");
  EXPECT_EQ(StringUtil::addQuotesToString(""), "\"\"");
  EXPECT_EQ(StringUtil::addQuotesToString("say \"x\"\\"), "\"say \"x\"\\\"");
}

// --- Placeholders --------------------------------------------------------------------------------

struct BindRow {
  std::string name;
  std::optional<std::string> pattern;
  std::vector<std::string> with;
  std::optional<std::string> result;
};

class BindTable : public ::testing::TestWithParam<BindRow> {};

TEST_P(BindTable, PlaceholdersTakeTheTextsInOrder) {
  proves("TEXT-9");
  EXPECT_EQ(StringUtil::bindString(GetParam().pattern, GetParam().with), GetParam().result);
}

INSTANTIATE_TEST_SUITE_P(
    StringUtil, BindTable,
    ::testing::Values(BindRow{"AbsentPattern", std::nullopt, {"x"}, std::nullopt},
                      BindRow{"EmptyPattern", "", {"x"}, ""},
                      BindRow{"NoPlaceholder", "100 % @ %s", {"x"}, "100 % @ %s"},
                      BindRow{"TooFewTexts", "%@ and %@", {"x"}, "x and "},
                      BindRow{"NoTexts", "<%@>", {}, "<>"},
                      BindRow{"AsManyTexts", "%@ and %@", {"x", "y"}, "x and y"},
                      BindRow{"SurplusTexts", "%@ and %@", {"x", "y", "z"}, "x and y"},
                      BindRow{"PlaceholderOnly", "%@", {"x"}, "x"},
                      BindRow{"SideBySide", "%@%@", {"x", "y"}, "xy"},
                      BindRow{"TextsAreNotSearched", "%@-%@", {"%@", "y"}, "%@-y"},
                      BindRow{"TextsDoNotFormPlaceholders", "%@@", {"%"}, "%@"},
                      BindRow{"PercentSignBeforeAPlaceholder", "%%@", {"x"}, "%x"},
                      BindRow{"EmptyTextTakesItsPlace", "%@%@", {"", "y"}, "y"}),
    [](const auto& tested) { return tested.param.name; });

TEST(StringUtilTest, RandomPatternsAreBoundAsTheModelSays) {
  proves("TEXT-9");
  const std::vector<std::string> pieces = {"%", "@", "%@", "a", " ", "%s", ""};
  forRandomCases([&](RandomSource& random) {
    std::optional<std::string> pattern;
    if (random.below(50) != 0) pattern = random.textOf(pieces, 10);
    std::vector<std::string> with;
    for (std::size_t left = random.below(5); left > 0; --left)
      with.push_back(random.textOf(pieces, 3));

    EXPECT_EQ(StringUtil::bindString(pattern, with), model::bound(pattern, with));
  });
}

// --- Volumes -------------------------------------------------------------------------------------

class VolumeTest : public ::testing::Test {
 protected:
  Platform _platform;  // nothing but the fixed paths
  ScopedPlatform _scope{_platform};
};

TEST_F(VolumeTest, PathBelowAVolumeBelongsToIt) {
  proves("PATH-3");
  EXPECT_EQ(StringUtil::getVolume("/Volumes/Data/x/y"), "/Volumes/Data");
  EXPECT_EQ(StringUtil::getVolume("/Volumes/My Data/x"), "/Volumes/My Data");
}

TEST_F(VolumeTest, VolumeBelongsToItself) {
  proves("PATH-3");
  EXPECT_EQ(StringUtil::getVolume("/Volumes/Data"), "/Volumes/Data");
  EXPECT_EQ(StringUtil::getVolume("/Volumes/Data/"), "/Volumes/Data");
}

TEST_F(VolumeTest, EverythingElseIsOnTheStartVolume) {
  proves("PATH-3");
  for (const char* path : {"/", "/Users/me/file", "/Volumes", "/Volumes/", "/x", "/a/Volumes/b",
                           "/volumes/Data/x", "/VolumesX/Data"})
    EXPECT_EQ(StringUtil::getVolume(path), "/") << path;
}

TEST_F(VolumeTest, RelativePathIsOnTheStartVolume) {
  proves("PATH-3");
  for (const char* path : {"", "x", "a/b/c", "Volumes/Data/x", "Volumes"})
    EXPECT_EQ(StringUtil::getVolume(path), "/") << path;
}

TEST_F(VolumeTest, AbsentPathHasNoVolume) {
  proves("PATH-3");
  EXPECT_EQ(StringUtil::getVolume(std::nullopt), std::nullopt);
}

TEST_F(VolumeTest, TildeIsTheHomeFoldersVolume) {
  proves("PATH-3");
  test::FakeUserContext users;
  users.variables["HOME"] = "/Volumes/Homes/me";
  _platform.users = &users;

  EXPECT_EQ(StringUtil::getVolume("~/x/y"), "/Volumes/Homes");
  EXPECT_EQ(StringUtil::getVolume("~"), "/Volumes/Homes");
}

TEST_F(VolumeTest, VolumesFolderIsThePlatforms) {
  _platform.paths.volumes = "/root/Volumes";

  EXPECT_EQ(StringUtil::getVolume("/root/Volumes/Data/x"), "/root/Volumes/Data");
  EXPECT_EQ(StringUtil::getVolume("/Volumes/Data/x"), "/");
}

TEST_F(VolumeTest, RandomPathsAgreeWithTheModel) {
  const std::vector<std::string> pieces = {"/", "//", "/Volumes", "/Volumes/", "Volumes",
                                           "a", "/b", "..",       ".",         " "};
  forRandomCases([&](RandomSource& random) {
    const std::string path = random.textOf(pieces, 8);

    EXPECT_EQ(StringUtil::getVolume(path), model::volumeOf(path)) << path;
  });
}

}  // namespace
}  // namespace installer
