#include "base/TraceLine.h"

#include <gmock/gmock.h>

#include "support/Proves.h"

namespace installer {
namespace {

std::string escapedMessage(std::string_view message) {
  LineText text;
  appendEscaped(message, text);
  return fmt::to_string(text);
}

std::string formatted(const TraceLine& line) {
  LineText text;
  appendFormatted(line, text);
  return fmt::to_string(text);
}

struct EscapeCase {
  std::string name;
  std::string message;
  std::string expected;
};

class EscapedMessageTest : public ::testing::TestWithParam<EscapeCase> {};

TEST_P(EscapedMessageTest, IsOneReadableLine) {
  proves("LOG-3");
  EXPECT_EQ(escapedMessage(GetParam().message), GetParam().expected);
}

const std::vector<EscapeCase> kEscapeCases = {
    {"Nothing", "", ""},
    {"PlainText", "rcp home is /a b.", "rcp home is /a b."},
    {"BackslashStays", R"(C:\n \x41)", R"(C:\n \x41)"},
    {"LineFeedAtTheEndIsDropped", "workspace is x\n", "workspace is x"},
    {"OnlyOneLineFeedIsDropped", "x\n\n", "x\\n"},
    {"LineFeedAlone", "\n", ""},
    {"LineFeedInside", "a\nb", "a\\nb"},
    {"LineFeedAtTheBeginning", "\na", "\\na"},
    {"CarriageReturn", "a\rb", "a\\rb"},
    {"CarriageReturnAtTheEndStays", "a\r", "a\\r"},
    {"Tab", "a\tb", "a\\tb"},
    {"Zero", std::string("a\0b", 3), "a\\x00b"},
    {"Bell", "\a", "\\x07"},
    {"Escape", "\x1b[31m", "\\x1b[31m"},
    {"LastControl", "\x1f", "\\x1f"},
    {"BlankStays", "\x20", " "},
    {"TildeStays", "~", "~"},
    {"Delete", "\x7f", "\\x7f"},
    {"FirstC1", "\xC2\x80", "\\x80"},
    {"NextLine", "\xC2\x85", "\\x85"},
    {"LastC1", "\xC2\x9F", "\\x9f"},
    {"NoBreakSpaceStays", "\xC2\xA0", "\xC2\xA0"},
    {"UmlautStays", "M\xC3\xBCller", "M\xC3\xBCller"},
    {"OtherLeadWithC1Tail", "\xC3\x85", "\xC3\x85"},
    {"LastOfTwoBytes", "\xDF\xBF", "\xDF\xBF"},
    {"FirstOfThreeBytes", "\xE0\xA0\x80", "\xE0\xA0\x80"},
    {"ChineseStays", "\xE4\xB8\xAD\xE6\x96\x87", "\xE4\xB8\xAD\xE6\x96\x87"},
    {"LastBeforeSurrogates", "\xED\x9F\xBF", "\xED\x9F\xBF"},
    {"FirstAfterSurrogates", "\xEE\x80\x80", "\xEE\x80\x80"},
    {"LastOfThreeBytes", "\xEF\xBF\xBF", "\xEF\xBF\xBF"},
    {"FirstOfFourBytes", "\xF0\x90\x80\x80", "\xF0\x90\x80\x80"},
    {"EmojiStays", "\xF0\x9F\x98\x80!", "\xF0\x9F\x98\x80!"},
    {"LastOfUnicode", "\xF4\x8F\xBF\xBF", "\xF4\x8F\xBF\xBF"},
    {"Latin1Byte", "M\xFCller", "M\\xfcller"},
    {"LoneContinuation", "\x80", "\\x80"},
    {"LastContinuation", "\xBF", "\\xbf"},
    {"OverlongNull", "\xC0\x80", "\\xc0\\x80"},
    {"OverlongTwoBytes", "\xC1\xBF", "\\xc1\\xbf"},
    {"OverlongThreeBytes", "\xE0\x9F\xBF", "\\xe0\\x9f\\xbf"},
    {"OverlongFourBytes", "\xF0\x8F\xBF\xBF", "\\xf0\\x8f\\xbf\\xbf"},
    {"Surrogate", "\xED\xA0\x80", "\\xed\\xa0\\x80"},
    {"BeyondUnicode", "\xF4\x90\x80\x80", "\\xf4\\x90\\x80\\x80"},
    {"FirstUnusedLead", "\xF5\x80\x80\x80", "\\xf5\\x80\\x80\\x80"},
    {"HighestByte", "\xFF", "\\xff"},
    {"CutAfterOneOfTwo", "a\xC3", "a\\xc3"},
    {"CutAfterTwoOfThree", "\xE4\xB8", "\\xe4\\xb8"},
    {"CutAfterThreeOfFour", "\xF0\x9F\x98", "\\xf0\\x9f\\x98"},
    {"LetterInsteadOfSecondByte", "\xC3z", "\\xc3z"},
    {"LetterInsteadOfThirdByte", "\xE4\xB8z", "\\xe4\\xb8z"},
    {"LetterInsteadOfFourthByte", "\xF0\x9F\x98z", "\\xf0\\x9f\\x98z"},
    {"LeadInsteadOfSecondByte", "\xC3\xC3\xBC", "\\xc3\xC3\xBC"},
};

INSTANTIATE_TEST_SUITE_P(Texts, EscapedMessageTest, ::testing::ValuesIn(kEscapeCases),
                         [](const auto& test) { return test.param.name; });

TraceLine exampleLine() {
  TraceLine line;
  line.time.tm_mon = 10;
  line.time.tm_mday = 28;
  line.time.tm_hour = 23;
  line.time.tm_min = 59;
  line.time.tm_sec = 58;
  line.host = "quill.example";
  line.process = 4711;
  line.message = "Hello {} %s";
  return line;
}

TEST(TraceLineTest, TellsTimeHostProcessLevelAndMessage) {
  proves("LOG-1");
  EXPECT_EQ(formatted(exampleLine()),
            "Nov 28 23:59:58 quill.example HotfixInstaller[4711] <Info>: Hello {} %s\n");
}

TEST(TraceLineTest, PadsTheDayWithABlankAndTheTimeWithZeros) {
  proves("LOG-1");
  TraceLine line = exampleLine();
  line.time.tm_mday = 9;
  line.time.tm_hour = 1;
  line.time.tm_min = 2;
  line.time.tm_sec = 3;

  EXPECT_THAT(formatted(line), ::testing::StartsWith("Nov  9 01:02:03 quill"));
}

TEST(TraceLineTest, NamesTheMonthsInEnglish) {
  proves("LOG-1");
  const std::string names = "JanFebMarAprMayJunJulAugSepOctNovDec";
  for (int month = 0; month < 12; ++month) {
    TraceLine line = exampleLine();
    line.time.tm_mon = month;

    EXPECT_THAT(
        formatted(line),
        ::testing::StartsWith(names.substr(static_cast<std::size_t>(month) * 3, 3) + " 28 "));
  }
}

TEST(TraceLineTest, NamesTheLevels) {
  proves("LOG-1");
  const std::vector<std::pair<LogLevel, std::string>> levels = {{LogLevel::error, "<Error>: "},
                                                                {LogLevel::warning, "<Warning>: "},
                                                                {LogLevel::notice, "<Notice>: "},
                                                                {LogLevel::info, "<Info>: "}};
  for (const auto& [level, name] : levels) {
    TraceLine line = exampleLine();
    line.level = level;

    EXPECT_THAT(formatted(line), ::testing::HasSubstr("[4711] " + name + "Hello"));
  }
}

}  // namespace
}  // namespace installer
