#include "formats/JavaPropertiesReader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "formats/JavaPropertiesWriter.h"
#include "support/Proves.h"
#include "support/RandomText.h"
#include "support/models/PropertiesReaderModel.h"
#include "support/models/PropertiesWriterModel.h"

namespace installer {
namespace {

using model::Entries;
using test::forRandomCases;
using test::RandomSource;

Entries entriesOf(const TextDictionary& dictionary) {
  Entries entries;
  for (const auto& [key, value] : dictionary) entries.emplace_back(key, value);
  return entries;
}

TextDictionary dictionaryOf(const Entries& entries) {
  TextDictionary dictionary;
  for (const auto& [key, value] : entries) dictionary.set(key, value);
  return dictionary;
}

std::string written(const Entries& entries) {
  return writeJavaProperties(dictionaryOf(entries));
}

Entries read(const std::string& text) {
  TextDictionary dictionary;
  readJavaProperties(text, dictionary);
  return entriesOf(dictionary);
}

struct ReadRow {
  std::string name;
  std::string text;
  Entries entries;
};

class JavaPropertiesReadTable : public ::testing::TestWithParam<ReadRow> {};

TEST_P(JavaPropertiesReadTable, TextGivesTheseEntries) {
  proves("PROPERTIES-1", "PROPERTIES-2", "PROPERTIES-3", "PROPERTIES-4", "PROPERTIES-5",
         "PROPERTIES-6", "PROPERTIES-7", "PROPERTIES-8", "PROPERTIES-9", "PROPERTIES-10");
  EXPECT_EQ(read(GetParam().text), GetParam().entries);
}

TEST_P(JavaPropertiesReadTable, ModelAgrees) {
  EXPECT_EQ(model::readProperties(GetParam().text), GetParam().entries);
}

std::string nameOf(const ::testing::TestParamInfo<ReadRow>& tested) {
  return tested.param.name;
}

INSTANTIATE_TEST_SUITE_P(
    Lines, JavaPropertiesReadTable,
    ::testing::Values(
        ReadRow{"Nothing", "", {}}, ReadRow{"OneBlankLine", "\n", {{"", ""}}},
        ReadRow{"LineOfBlanksWithoutLineFeed", "  ", {{"", ""}}},
        ReadRow{"LastLineFeedAddsNoLine", "a=1\n", {{"a", "1"}}},
        ReadRow{"MissingLastLineFeed", "a=1\nb=2", {{"a", "1"}, {"b", "2"}}},
        ReadRow{"BlankLineBetween", "a=1\n\nb=2\n", {{"a", "1"}, {"", ""}, {"b", "2"}}},
        ReadRow{"BlankLineAtTheEnd", "a=1\n\n", {{"a", "1"}, {"", ""}}},
        ReadRow{"CarriageReturnsAtLineEnds", "a=1\r\nb=2\r\n", {{"a", "1"}, {"b", "2"}}},
        ReadRow{"CarriageReturnInside", "a=1\rb=2\n", {{"a", "1\rb=2"}}},
        ReadRow{"BlanksAroundTheLine", " \t a=1 \t \n", {{"a", "1"}}},
        ReadRow{"EveryTrimmedCharacter",
                "\t\v\f\r \x85\xA0"
                "a=1\xA0\x85 \r\f\v\t",
                {{"a", "1"}}},
        ReadRow{"NeighboursOfTrimmedOnesStay",
                "\x08"
                "a\x0E=\x1F"
                "1\x84\x86\x9F\xA1",
                {{"\x08"
                  "a\x0E",
                  "\x1F"
                  "1\u0084\u0086\u009f\u00a1"}}},
        ReadRow{"LaterKeyWinsAtTheOldPlace", "k=1\nj=3\nk=2\n", {{"k", "2"}, {"j", "3"}}},
        ReadRow{"Latin1IsWidened", "\xE9=\xFF\x80\n", {{"\u00e9", "\u00ff\u0080"}}},
        ReadRow{"Utf8IsReadAsLatin1", "a=\u00e9\n", {{"a", "\u00c3\u00a9"}}},
        ReadRow{"ZeroIsACharacter",
                std::string("a\0=\0", 4),
                {{std::string("a\0", 2), std::string("\0", 1)}}}),
    nameOf);

INSTANTIATE_TEST_SUITE_P(
    Comments, JavaPropertiesReadTable,
    ::testing::Values(ReadRow{"CommentsOnly", "# a=1\n#b=2\n#\n", {}},
                      ReadRow{"BlanksBeforeAComment", "  # x\n", {}},
                      ReadRow{"NumberSignInside", "a#b=1#2\n", {{"a#b", "1#2"}}},
                      ReadRow{"ExclamationMarkIsNoComment", "!x=1\n", {{"!x", "1"}}},
                      ReadRow{"EscapedNumberSignIsNoComment", "\\#x=1\n", {{"#x", "1"}}},
                      ReadRow{"CommentKeepsTheContinuation", "a=1 \\\n# x\n2\n", {{"", "2"}}},
                      ReadRow{
                          "CommentKeepsTheOptionLine", "-Xa\n#x\n=\n", {{"-Xa", ""}, {"", "="}}},
                      ReadRow{"CommentEndingInAContinuation", "# x \\\na=1\n", {{"a", "1"}}}),
    nameOf);

INSTANTIATE_TEST_SUITE_P(
    Separators, JavaPropertiesReadTable,
    ::testing::Values(ReadRow{"KeyOnly", "key", {{"key", ""}}},
                      ReadRow{"EmptyValue", "key=", {{"key", ""}}},
                      ReadRow{"EmptyKey", "=value", {{"", "value"}}},
                      ReadRow{"SeparatorOnly", "=", {{"", ""}}},
                      ReadRow{"BlanksAroundTheEqualsSign", "key = value", {{"key", "value"}}},
                      ReadRow{"Colon", "key:value", {{"key", "value"}}},
                      ReadRow{"Blank", "key value", {{"key", "value"}}},
                      ReadRow{"Tab", "key\tvalue", {{"key", "value"}}},
                      ReadRow{"RunOfSeparators", "key =:\t =value", {{"key", "value"}}},
                      ReadRow{"OtherBlanksDoNotSeparate",
                              "a\vb\fc\xA0"
                              "d=1",
                              {{"a\vb\fc\u00a0d", "1"}}},
                      ReadRow{"EqualsSignInTheValue", "a=b=c", {{"a", "b=c"}}},
                      ReadRow{"BlankInTheValue", "a=b c", {{"a", "b c"}}},
                      ReadRow{"EverySeparatorInTheValue", "a=b: \t=c", {{"a", "b: \t=c"}}},
                      ReadRow{"RunOfSeparatorsOnly", "a = : =", {{"a", ""}}}),
    nameOf);

INSTANTIATE_TEST_SUITE_P(
    Backslashes, JavaPropertiesReadTable,
    ::testing::Values(
        ReadRow{"EscapedColonSeparates", "a\\:b=c", {{"a", "b=c"}}},
        ReadRow{"EscapedEqualsSignSeparates", "a\\=b=c", {{"a", "b=c"}}},
        ReadRow{"EscapedBlankSeparates", "a\\ b=c", {{"a", "b=c"}}},
        ReadRow{"TabIsNotEscaped", "a\\\tb", {{"a\\", "b"}}},
        ReadRow{"EscapedNumberSign", "a\\#b=\\#", {{"a#b", "#"}}},
        ReadRow{"EscapedExclamationMark", "a\\!b=\\!", {{"a!b", "!"}}},
        ReadRow{"EscapedColonInTheValue", "a=c\\:\\\\dir", {{"a", "c:\\dir"}}},
        ReadRow{"EscapedSeparatorsInTheValue", "a=b\\=\\ \\:c", {{"a", "b= :c"}}},
        ReadRow{"EscapedSeparatorsBeforeTheValue", "a=\\=\\ \\:c", {{"a", "c"}}},
        ReadRow{"DoubledBackslash", "a\\\\b=c", {{"a\\b", "c"}}},
        ReadRow{"DoubledBackslashBeforeASeparator", "a\\\\=b", {{"a", "b"}}},
        ReadRow{"TripledBackslash", "a\\\\\\b=c", {{"a\\b", "c"}}},
        ReadRow{"DoubledBackslashAtTheEnd", "a=1\\\\", {{"a", "1\\"}}},
        ReadRow{"BackslashBeforeAnOrdinaryCharacter", "a\\b=c\\d", {{"a\\b", "c\\d"}}},
        ReadRow{"UnicodeEscapeStays", "k=\\u00e9", {{"k", "\\u00e9"}}},
        ReadRow{"UnicodeEscapeInTheKeyStays", "\\u00e9=1", {{"\\u00e9", "1"}}},
        ReadRow{"BackslashOnly", "\\", {{"\\", ""}}},
        ReadRow{"BlankAndBackslashOnly", " \\", {{"\\", ""}}},
        ReadRow{"BackslashAtTheEndWithoutABlank", "a=1\\\n2\n", {{"a", "1\\"}, {"2", ""}}},
        ReadRow{"BackslashAtTheEndBehindATab", "a=1\t\\\n2\n", {{"a", "1\t\\"}, {"2", ""}}}),
    nameOf);

INSTANTIATE_TEST_SUITE_P(
    Continuations, JavaPropertiesReadTable,
    ::testing::Values(
        ReadRow{"ContinuedValueLosesItsKey", "a=1 \\\n2\n", {{"", "2"}}},
        ReadRow{"ContinuationBehindBlanks", "a=1 \\  \r\n2\n", {{"", "2"}}},
        ReadRow{"ContinuationWithoutValue", "a \\\n2\n", {{"", "2"}}},
        ReadRow{"ContinuationBehindAnEscapedBlank", "a=1\\ \\\n2\n", {{"", "2"}}},
        ReadRow{"BackslashBehindTheDroppedOne", "a=1 \\\\\n2\n", {{"a", "1 \\"}, {"2", ""}}},
        ReadRow{"ContinuationOfAContinuation", "a=1 \\\n2 \\\n3\n", {{"", "3"}}},
        ReadRow{"LineBehindTheContinuedOneIsOrdinary", "a=1 \\\n2\nb=3\n", {{"", "2"}, {"b", "3"}}},
        ReadRow{"SeparatorsInTheContinuedLine", "a=1 \\\nb=2 c\n", {{"", "b=2 c"}}},
        ReadRow{"LeadingSeparatorsOfTheContinuedLineAreDropped", "a=1 \\\n=: 2\n", {{"", "2"}}},
        ReadRow{
            "BlankLineBehindAContinuationIsLost", "a=1 \\\n\n2\nb=3\n", {{"", "2"}, {"b", "3"}}},
        ReadRow{"SeparatorLineBehindAContinuationIsLost", "a=1 \\\n=\n2\n", {{"", "2"}}},
        ReadRow{"ContinuationAtTheEndOfTheFile", "b=2\na=1 \\\n", {{"b", "2"}}},
        ReadRow{"ContinuationReplacesTheEmptyKey", "\na=1 \\\n2\n", {{"", "2"}}}),
    nameOf);

INSTANTIATE_TEST_SUITE_P(
    OptionLines, JavaPropertiesReadTable,
    ::testing::Values(
        ReadRow{"OptionWithoutSeparator", "-Xmx512m", {{"-Xmx512m", ""}}},
        ReadRow{"OptionKeepsItsSeparator",
                "-Xbootclasspath/a:x.jar",
                {{"-Xbootclasspath/a", ":x.jar"}}},
        ReadRow{"OptionKeepsARunOfSeparators", "-Xa = \t:1=2", {{"-Xa", " = \t:1=2"}}},
        ReadRow{"OptionWithAnEscapedSeparator", "-Xa\\:b", {{"-Xa", ":b"}}},
        ReadRow{"ShortestOption", "-X", {{"-X", ""}}},
        ReadRow{"OtherMinusSign", "-D=1", {{"-D", "1"}}},
        ReadRow{"LowercaseXIsNoOption", "-xa:1", {{"-xa", "1"}}},
        ReadRow{"BlanksBeforeTheOption", "  -Xa:1", {{"-Xa", ":1"}}},
        ReadRow{"OptionInsideTheLineIsNone", "a-X:1", {{"a-X", "1"}}},
        ReadRow{"NextLineIsOrdinary", "-Xa:1\nb:2\n", {{"-Xa", ":1"}, {"b", "2"}}},
        ReadRow{"LineOfTwoCharactersIsOrdinary", "-Xa\n==\n", {{"-Xa", ""}, {"", ""}}},
        ReadRow{"LineOfOneCharacterKeepsTheFlag",
                "-Xa\n=\nb=1\n",
                {{"-Xa", ""}, {"", "="}, {"b", "1"}}},
        ReadRow{"LineOfOneCharacterBeyondAsciiKeepsTheFlag",
                "-Xa\n\xE9\n=\n",
                {{"-Xa", ""}, {"\xC3\xA9", ""}, {"", "="}}},
        ReadRow{"BlankLineKeepsTheFlag", "-Xa\n\n:\n", {{"-Xa", ""}, {"", ":"}}},
        ReadRow{"LineOfOneCharacterKeepsTheClearedFlag", "a\n=\n", {{"a", ""}, {"", ""}}},
        ReadRow{"ContinuationOfAnOptionKeepsTheFlag", "-Xa \\\n=b\n", {{"", "=b"}}},
        ReadRow{"ContinuationIsNoOption", "a=1 \\\n-X:b\n", {{"", "-X:b"}}},
        ReadRow{"SeparatorOfAContinuedOptionKeepsTheContinuation", "-Xa \\\n=\nb\n", {{"", "b"}}},
        ReadRow{"ContinuationIsNoOptionForTheNextLine", "a=1 \\\n-Xb\n=\n", {{"", ""}}},
        ReadRow{"OptionBehindALostLine", "a=1 \\\n\n-Xb=c\n", {{"", "-Xb=c"}}}),
    nameOf);

TEST(JavaPropertiesReaderTest, EntriesJoinTheOnesThatAreThere) {
  proves("PROPERTIES-20");
  TextDictionary dictionary = dictionaryOf({{"k", "1"}, {"j", "3"}});

  readJavaProperties("x=4\nk=2\n", dictionary);

  EXPECT_EQ(entriesOf(dictionary), (Entries{{"k", "2"}, {"j", "3"}, {"x", "4"}}));
}

TEST(JavaPropertiesReaderTest, ManyLinesAreAllThere) {
  proves("PROPERTIES-3");
  constexpr int kLines = 100'000;
  std::string text;
  for (int line = 0; line < kLines; ++line) text += std::to_string(line) + "=x\n";
  TextDictionary dictionary;

  readJavaProperties(text, dictionary);

  EXPECT_EQ(dictionary.size(), static_cast<std::size_t>(kLines));
  EXPECT_THAT(dictionary.find("99999"), ::testing::Optional(std::string_view("x")));
}

// Bytes beyond ASCII become two, for which a line has no room.
TEST(JavaPropertiesReaderTest, ManyLinesBeyondAsciiAreAllThere) {
  proves("PROPERTIES-3");
  constexpr int kLines = 10'000;
  std::string text;
  Entries expected;
  for (int line = 0; line < kLines; ++line) {
    const std::string number = std::to_string(line);
    text += "k" + number + "\xE9=\xFF\\:" + number + "\n";
    expected.emplace_back("k" + number + "\u00e9", "\u00ff:" + number);
  }

  EXPECT_EQ(read(text), expected);
}

// Longer than the entries that are stored together.
TEST(JavaPropertiesReaderTest, LaterOnesOfManyEqualKeysWin) {
  proves("PROPERTIES-3");
  std::string text;
  for (int line = 0; line < 1000; ++line)
    text += std::to_string(line % 7) + "=" + std::to_string(line) + "\n";

  EXPECT_EQ(read(text), (Entries{{"0", "994"},
                                 {"1", "995"},
                                 {"2", "996"},
                                 {"3", "997"},
                                 {"4", "998"},
                                 {"5", "999"},
                                 {"6", "993"}}));
}

// --- Writing -------------------------------------------------------------------------------------

TEST(JavaPropertiesWriterTest, EveryEntryIsALineInOrder) {
  proves("PROPERTIES-11");
  EXPECT_EQ(written({{"b", "2"}, {"a", "1"}}), "b=2\na=1\n");
}

TEST(JavaPropertiesWriterTest, NoEntriesAreNoText) {
  proves("PROPERTIES-11");
  EXPECT_EQ(written({}), "");
}

TEST(JavaPropertiesWriterTest, EmptyKeyHasNoLine) {
  proves("PROPERTIES-11");
  EXPECT_EQ(written({{"a", "1"}, {"", "x"}, {"b", ""}}), "a=1\nb=\n");
}

TEST(JavaPropertiesWriterTest, KeyAndValueAreEscapedEachInItsWay) {
  proves("PROPERTIES-11");
  EXPECT_EQ(
      written(
          {{"a b", "x y"}, {"d", "c:\\dir"}, {"u", "\\u00e9"}, {"\\u00e9", "\u00e9\t\U0001F600"}}),
      "a\\ b=x y\nd=c\\:\\\\dir\nu=\\u00e9\n\\\\u00e9=\\u00e9\\u0009\\ud83d\\ude00\n");
}

// --- Against the models --------------------------------------------------------------------------

const std::vector<std::string> kPieces = {"=",
                                          "=",
                                          ":",
                                          " ",
                                          " ",
                                          "\t",
                                          "\\",
                                          "\\",
                                          "\\",
                                          "#",
                                          "!",
                                          "-",
                                          "X",
                                          "-X",
                                          "u",
                                          "\n",
                                          "\n",
                                          "\n",
                                          "\r",
                                          "0",
                                          "7",
                                          "a",
                                          "k",
                                          " \\\n",
                                          " \\\n",
                                          "\n-X",
                                          "\n#",
                                          "\\u",
                                          "\xE9",
                                          "\x85",
                                          "\xA0",
                                          "\xFF",
                                          "\v",
                                          "\f",
                                          "\x1F",
                                          "\x7F",
                                          std::string(1, '\0')};

TEST(JavaPropertiesModelTest, RandomTextsAreReadAsTheModelSays) {
  proves("PROPERTIES-13");
  forRandomCases([](RandomSource& random) {
    const std::string text = random.textOf(kPieces, 24);

    EXPECT_EQ(read(text), model::readProperties(text)) << ::testing::PrintToString(text);
  });
}

TextDictionary randomEntries(RandomSource& random) {
  const std::vector<std::string> more = {"\u00e9", "\u20ac", "\U0001F600", "\xED\xA0\xBD"};
  TextDictionary entries;
  for (std::size_t left = random.below(5); left > 0; --left)
    entries.set(random.textOf(kPieces, 4) + random.textOf(more, 1),
                random.textOf(kPieces, 8) + random.textOf(more, 1));
  return entries;
}

TEST(JavaPropertiesModelTest, RandomEntriesAreWrittenAsTheModelSays) {
  proves("PROPERTIES-13");
  forRandomCases([](RandomSource& random) {
    const TextDictionary entries = randomEntries(random);

    EXPECT_EQ(writeJavaProperties(entries), model::writtenProperties(entriesOf(entries)));
  });
}

TEST(JavaPropertiesModelTest, WhatIsWrittenIsReadBackAsTheModelSays) {
  proves("PROPERTIES-13");
  forRandomCases([](RandomSource& random) {
    const std::string text = writeJavaProperties(randomEntries(random));

    EXPECT_EQ(read(text), model::readProperties(text)) << ::testing::PrintToString(text);
  });
}

TEST(JavaPropertiesModelTest, WhatIsWrittenIsPrintableAsciiInLines) {
  proves("PROPERTIES-11", "PROPERTIES-12");
  forRandomCases([](RandomSource& random) {
    for (const char character : writeJavaProperties(randomEntries(random)))
      EXPECT_TRUE(character == '\n' || (character >= 0x20 && character <= 0x7E));
  });
}

// Keys without anything to escape and values that neither begin with a separator nor end in a
// blank nor hold backslashes or control characters come back whole.
TEST(JavaPropertiesModelTest, PlainEntriesSurviveARoundTrip) {
  proves("PROPERTIES-13");
  const std::vector<std::string> plain = {"a", "b", "0", ".", "-", "_", "/", "~"};
  const std::vector<std::string> inside = {"a", "=", ":", "#", "!", " ", "0", ".", "\"", "x"};
  forRandomCases([&](RandomSource& random) {
    TextDictionary entries;
    for (std::size_t left = random.below(5); left > 0; --left)
      entries.set("k" + random.textOf(plain, 6), "v" + random.textOf(inside, 8) + "v");

    EXPECT_EQ(read(writeJavaProperties(entries)), entriesOf(entries));
  });
}

}  // namespace
}  // namespace installer
