#include "base/BinaryPropertyListReader.h"

#include <gmock/gmock.h>

#include <bit>
#include <cmath>
#include <iterator>
#include <limits>

#include "support/BinaryList.h"
#include "support/Proves.h"

namespace installer::PropertyList {
namespace {

using test::asciiObject;
using test::bigEndian;
using test::BinaryList;
using test::object;
using namespace std::string_view_literals;

std::optional<Value> readSingle(const std::string& single) {
  return readBinary(BinaryList{{single}}.bytes());
}

// --- One object ----------------------------------------------------------------------------------

struct ReadableObject {
  std::string name;
  std::string bytes;
  Value value;
};
void PrintTo(const ReadableObject& row, std::ostream* stream) {
  *stream << row.name;
}

class ReadableObjects : public ::testing::TestWithParam<ReadableObject> {};

TEST_P(ReadableObjects, ReadsAsItsValue) {
  proves("LIST-11", "LIST-21");
  EXPECT_EQ(readSingle(GetParam().bytes), GetParam().value);
}

std::string utf16(std::u16string_view units) {
  std::string bytes;
  for (const char16_t unit : units) bytes += bigEndian(unit, 2);
  return bytes;
}

std::string doubleBytes(double number) {
  return bigEndian(std::bit_cast<std::uint64_t>(number), 8);
}
std::string floatBytes(float number) {
  return bigEndian(std::bit_cast<std::uint32_t>(number), 4);
}

const std::int64_t kLowest = std::numeric_limits<std::int64_t>::min();
const std::uint64_t kHighest = std::numeric_limits<std::uint64_t>::max();

INSTANTIATE_TEST_SUITE_P(
    Kinds, ReadableObjects,
    ::testing::ValuesIn(std::vector<ReadableObject>{
        {"False", object(0x08), false},
        {"True", object(0x09), true},
        {"ByteIsUnsigned", object(0x10, "\xFF"), 255},
        {"TwoBytesAreUnsigned", object(0x11, "\xFF\xFE"), 65534},
        {"FourBytesAreUnsigned", object(0x12, "\xFF\xFF\xFF\xFE"), std::int64_t{4294967294}},
        {"EightBytesAreSigned", object(0x13, bigEndian(kHighest, 8)), -1},
        {"LowestSigned", object(0x13, bigEndian(std::uint64_t{1} << 63, 8)), kLowest},
        {"SixteenBytesHoldTheHighest", object(0x14, bigEndian(0, 8) + bigEndian(kHighest, 8)),
         kHighest},
        {"SixteenBytesHoldASmallNumber", object(0x14, bigEndian(0, 8) + bigEndian(5, 8)), 5},
        {"SixteenBytesHoldANegative", object(0x14, bigEndian(kHighest, 8) + bigEndian(kHighest, 8)),
         -1},
        {"SixteenBytesHoldTheLowest",
         object(0x14, bigEndian(kHighest, 8) + bigEndian(std::uint64_t{1} << 63, 8)), kLowest},
        {"FourByteReal", object(0x22, floatBytes(1.5F)), 1.5},
        {"EightByteReal", object(0x23, doubleBytes(-0.1)), -0.1},
        {"Date", object(0x33, doubleBytes(86400.25)), Date{86400.25}},
        {"NoData", object(0x40), Data{}},
        {"Data", object(0x43, "\x00\xFF\x01"sv), Data{std::string("\x00\xFF\x01"sv)}},
        {"FourteenBytesOfData", object(0x4E, "12345678901234"), Data{"12345678901234"}},
        {"LongDataWithByteLength", object(0x4F, "\x10\x0F"sv).append("123456789012345"),
         Data{"123456789012345"}},
        {"LongDataWithTwoByteLength", object(0x4F, "\x11\x00\x10"sv).append("1234567890123456"),
         Data{"1234567890123456"}},
        {"LongDataWithFourByteLength", object(0x4F, "\x12\x00\x00\x00\x01"sv).append("1"),
         Data{"1"}},
        {"LongDataWithEightByteLength",
         object(0x4F, "\x13\x00\x00\x00\x00\x00\x00\x00\x02"sv).append("12"), Data{"12"}},
        {"NoText", object(0x50), ""},
        {"AsciiText", object(0x53, "a\x7F~"), "a\x7F~"},
        {"AsciiTextWithAZeroByte", object(0x53, "a\x00z"sv), "a\uFFFDz"},
        {"LongAsciiText", object(0x5F, "\x10\x11"sv).append("12345678901234567"),
         "12345678901234567"},
        {"WideTextOfOneByteCharacters", object(0x62, utf16(u"A\x7F")), "A\x7F"},
        {"WideTextOfTwoByteCharacters", object(0x62, utf16(u"\x80\x7FF")), "\u0080\u07FF"},
        {"WideTextOfThreeByteCharacters", object(0x64, utf16(u"\x800\xD7FF\xE000\xFFFD")),
         "\u0800\uD7FF\uE000\uFFFD"},
        {"WideTextThatXmlCannotHold", object(0x63, utf16(u"\xFFFE\xFFFF\x01")),
         "\uFFFD\uFFFD\uFFFD"},
        {"WideTextOfALoneHighHalf", object(0x61, utf16(u"\xD800")), "\uFFFD"},
        {"WideTextOfTheLastHighHalf", object(0x61, utf16(u"\xDBFF")), "\uFFFD"},
        {"WideTextOfAHighHalfBeforeAPair", object(0x63, utf16(u"\xD800\xD800\xDC00")),
         "\uFFFD\U00010000"},
        {"WideTextOfAHighHalfBeforeALetter", object(0x62, utf16(u"\xD800z")), "\uFFFDz"},
        {"WideTextOfAHighHalfBeforeTheFirstBehindTheHalves", object(0x62, utf16(u"\xD800\xE000")),
         "\uFFFD\uE000"},
        {"WideTextOfALoneLowHalf", object(0x61, utf16(u"\xDC00")), "\uFFFD"},
        {"WideTextOfTheLastLowHalf", object(0x61, utf16(u"\xDFFF")), "\uFFFD"},
        {"WideTextOfHalvesInTheWrongOrder", object(0x62, utf16(u"\xDC00\xD800")), "\uFFFD\uFFFD"},
        {"WideTextOfPairs", object(0x64, utf16(u"\xD800\xDC00\xDBFF\xDFFF")),
         "\U00010000\U0010FFFF"},
        {"WideTextOfAnyPair", object(0x63, utf16(u"\xD83D\xDE00z")), "\U0001F600z"},
        {"LongWideText", object(0x6F, "\x10\x02"sv).append(utf16(u"ab")), "ab"},
        {"ByteReference", object(0x80, "\xFF"), Uid{255}},
        {"ThreeByteReference", object(0x82, "\x01\x00\x02"sv), Uid{65538}},
        {"EightByteReference", object(0x87, bigEndian(kHighest, 8)), Uid{kHighest}},
        {"SixteenByteReferenceThatFits", object(0x8F, bigEndian(0, 8) + bigEndian(kHighest, 8)),
         Uid{kHighest}},
        {"EmptyArray", object(0xA0), Array{}},
        {"EmptyDictionary", object(0xD0), Dictionary{}},
    }),
    [](const auto& test) { return test.param.name; });

struct UnreadableObject {
  std::string name;
  std::string bytes;
};
void PrintTo(const UnreadableObject& row, std::ostream* stream) {
  *stream << row.name;
}

class UnreadableObjects : public ::testing::TestWithParam<UnreadableObject> {};

TEST_P(UnreadableObjects, MakeTheListUnreadable) {
  proves("LIST-11");
  EXPECT_EQ(readSingle(GetParam().bytes), std::nullopt);
}

INSTANTIATE_TEST_SUITE_P(
    Kinds, UnreadableObjects,
    ::testing::ValuesIn(std::vector<UnreadableObject>{
        {"Null", object(0x00)},
        {"FirstBeforeTheFlags", object(0x07)},
        {"FirstAfterTheFlags", object(0x0A)},
        {"Filler", object(0x0F)},
        {"ThirtyTwoByteInteger", object(0x15, std::string(32, '\0'))},
        {"CutInteger", object(0x13, "1234567")},
        {"CutWideInteger", object(0x14, "123456789012345")},
        {"WideIntegerTooHigh", object(0x14, bigEndian(1, 8) + bigEndian(0, 8))},
        {"WideIntegerTooLow", object(0x14, bigEndian(kHighest, 8) + bigEndian(0, 8))},
        {"WideIntegerFarTooLow", object(0x14, bigEndian(kHighest - 1, 8) + bigEndian(kHighest, 8))},
        {"TwoByteReal", object(0x21, "12")},
        {"SixteenByteReal", object(0x24, "1234567890123456")},
        {"CutFourByteReal", object(0x22, "123")},
        {"CutReal", object(0x23, "1234567")},
        {"FourByteDate", object(0x32, "1234")},
        {"CutDate", object(0x33, "1234567")},
        {"CutData", object(0x42, "1")},
        {"CutText", object(0x52, "1")},
        {"CutWideText", object(0x62, "123")},
        {"TextBeyondAscii", object(0x51, "\x80")},
        {"EightBitText", object(0x71, "a")},
        {"CutReference", object(0x81, "1")},
        {"ReferenceBeyondEightBytes", object(0x88, "\x01" + std::string(8, '\0'))},
        {"UnusedKind", object(0x90)},
        {"OrderedSet", object(0xB0)},
        {"Set", object(0xC0)},
        {"LastUnusedKinds", object(0xE0)},
        {"VeryLastKind", object(0xF0)},
        {"MissingLength", object(0x5F)},
        {"LengthOfAnotherKind", object(0x5F, "\x20\x01"sv).append("1")},
        {"LengthOfSixteenBytes",
         object(0x5F, "\x14"sv).append(std::string(15, '\0') + "\x01" + "1")},
        {"CutLength", object(0x5F, "\x11\x00"sv)},
        {"LengthBeyondTheObjects", object(0x5F, "\x10\x02"sv).append("1")},
        {"LengthThatWrapsAroundInBytes", object(0x4F, "\x13" + bigEndian(kHighest, 8))},
        {"LengthThatWrapsAroundInUnits",
         object(0x6F, "\x13" + bigEndian((std::uint64_t{1} << 63) + 1, 8)).append("12")},
        {"LengthThatWrapsAroundInItems", object(0xAF, "\x13" + bigEndian(kHighest, 8))},
        {"LengthThatWrapsAroundInEntries", object(0xDF, "\x13" + bigEndian(kHighest, 8))},
        {"CutArray", object(0xA1)},
        {"CutDictionaryKeys", object(0xD1)},
        {"CutDictionaryValues", object(0xD1, "\x00"sv)},
    }),
    [](const auto& test) { return test.param.name; });

TEST(BinaryPropertyListReaderTest, RealsKeepEverySpecialValue) {
  proves("LIST-11");
  const auto infinity = readSingle(object(0x22, floatBytes(-HUGE_VALF)));
  const auto nan = readSingle(object(0x23, doubleBytes(std::numeric_limits<double>::quiet_NaN())));

  EXPECT_EQ(infinity, Value(-HUGE_VAL));
  ASSERT_TRUE(nan && nan->as<double>());
  EXPECT_TRUE(std::isnan(*nan->as<double>()));
}

// --- Containers ----------------------------------------------------------------------------------

TEST(BinaryPropertyListReaderTest, ArrayHoldsItsItemsInOrder) {
  proves("LIST-12");
  const BinaryList list{{object(0xA3, "\x02\x01\x02"), asciiObject("a"), asciiObject("b")}};

  EXPECT_EQ(readBinary(list.bytes()), Value(Array{"b", "a", "b"}));
}

TEST(BinaryPropertyListReaderTest, DictionaryHoldsItsEntriesInOrder) {
  proves("LIST-7");
  const BinaryList list{{object(0xD2, "\x02\x01\x03\x04"), asciiObject("a"), asciiObject("b"),
                         object(0x10, "\x07"), object(0x09)}};

  const std::optional<Value> value = readBinary(list.bytes());

  ASSERT_TRUE(value && value->as<Dictionary>());
  const auto* dictionary = value->as<Dictionary>();
  ASSERT_EQ(dictionary->size(), 2U);
  EXPECT_EQ(*dictionary->begin(), Dictionary::Entry("b", 7));
  EXPECT_EQ(*std::next(dictionary->begin()), Dictionary::Entry("a", true));
}

TEST(BinaryPropertyListReaderTest, LaterOfTwoEqualKeysWinsAtTheFirstPlace) {
  proves("LIST-7");
  const BinaryList list{{object(0xD3, "\x01\x02\x01\x03\x04\x05"), asciiObject("a"),
                         asciiObject("b"), asciiObject("old"), asciiObject("other"),
                         asciiObject("new")}};

  const std::optional<Value> value = readBinary(list.bytes());

  ASSERT_TRUE(value && value->as<Dictionary>());
  EXPECT_EQ(*value->as<Dictionary>()->begin(), Dictionary::Entry("a", "new"));
  EXPECT_EQ(value->as<Dictionary>()->size(), 2U);
}

TEST(BinaryPropertyListReaderTest, KeysMayBeWideTexts) {
  proves("LIST-12");
  const BinaryList list{{object(0xD1, "\x01\x01"), object(0x61, "\x20\xAC")}};

  EXPECT_EQ(readBinary(list.bytes()), Value(Dictionary{{"\u20AC", "\u20AC"}}));
}

TEST(BinaryPropertyListReaderTest, KeysMustBeTexts) {
  proves("LIST-12");
  for (const std::string& key : {object(0x10, "\x01"), object(0x41, "a"), object(0xA0)})
    EXPECT_EQ(readBinary(BinaryList{{object(0xD1, "\x01\x01"), key}}.bytes()), std::nullopt);
}

TEST(BinaryPropertyListReaderTest, UnreadableKeyValueOrItemMakesTheListUnreadable) {
  proves("LIST-12");
  const std::string bad = object(0x51, "\x80");

  EXPECT_EQ(readBinary(BinaryList{{object(0xA1, "\x01"), bad}}.bytes()), std::nullopt);
  EXPECT_EQ(readBinary(BinaryList{{object(0xD1, "\x01\x02"), bad, object(0x09)}}.bytes()),
            std::nullopt);
  EXPECT_EQ(readBinary(BinaryList{{object(0xD1, "\x02\x01"), bad, asciiObject("k")}}.bytes()),
            std::nullopt);
}

TEST(BinaryPropertyListReaderTest, ReferenceBeyondTheLastObjectIsUnreadable) {
  proves("LIST-14");
  EXPECT_EQ(readBinary(BinaryList{{object(0xA1, "\x02"), object(0x09)}}.bytes()), std::nullopt);
}

TEST(BinaryPropertyListReaderTest, RootNeedNotBeTheFirstObject) {
  proves("LIST-14");
  EXPECT_EQ(readBinary(BinaryList{{object(0x08), object(0x09)}, 1, 1, 1}.bytes()), Value(true));
}

class SizesOfNumbers : public ::testing::TestWithParam<std::size_t> {};

TEST_P(SizesOfNumbers, OffsetsOfThatManyBytesAreRead) {
  proves("LIST-11");
  const BinaryList list{{object(0xA1, "\x01"), asciiObject("x")}, GetParam()};

  EXPECT_EQ(readBinary(list.bytes()), Value(Array{"x"}));
}

TEST_P(SizesOfNumbers, ReferencesOfThatManyBytesAreRead) {
  proves("LIST-11");
  const BinaryList list{{object(0xD1, bigEndian(1, GetParam()) + bigEndian(2, GetParam())),
                         asciiObject("k"), asciiObject("v")},
                        1,
                        GetParam()};

  EXPECT_EQ(readBinary(list.bytes()), Value(Dictionary{{"k", "v"}}));
}

INSTANTIATE_TEST_SUITE_P(Bytes, SizesOfNumbers, ::testing::Range<std::size_t>(1, 9));

TEST(BinaryPropertyListReaderTest, ReferencesOfSeveralBytesUseAllOfThem) {
  proves("LIST-14");
  BinaryList list{{object(0xA1, "\x01\x00"sv)}, 2, 2};
  for (int place = 1; place <= 255; ++place) list.objects.push_back(object(0x08));
  list.objects.push_back(object(0x09));

  EXPECT_EQ(readBinary(list.bytes()), Value(Array{true}));
}

// --- The frame of the file -----------------------------------------------------------------------

std::string framed(std::string_view objects, std::string_view offsets, std::string_view trailer) {
  return std::string("bplist00").append(objects).append(offsets).append(trailer);
}

TEST(BinaryPropertyListReaderTest, AnyMinorVersionIsRead) {
  proves("LIST-13");
  BinaryList list{{object(0x09)}};
  list.magic = "bplist01";

  EXPECT_EQ(readBinary(list.bytes()), Value(true));
}

TEST(BinaryPropertyListReaderTest, AnotherMagicIsUnreadable) {
  proves("LIST-13");
  for (const char* magic : {"bplist10", "bplisT00", "xplist00"}) {
    BinaryList list{{object(0x09)}};
    list.magic = magic;

    EXPECT_EQ(readBinary(list.bytes()), std::nullopt) << magic;
  }
}

TEST(BinaryPropertyListReaderTest, EveryCutOfAFileIsUnreadable) {
  proves("LIST-13");
  const std::string whole =
      BinaryList{{object(0xD1, "\x01\x02"), asciiObject("k"), asciiObject("v")}}.bytes();

  for (std::size_t size = 0; size < whole.size(); ++size)
    EXPECT_EQ(readBinary(std::string_view(whole).substr(0, size)), std::nullopt) << size;
}

TEST(BinaryPropertyListReaderTest, SizesOutsideOneToEightAreUnreadable) {
  proves("LIST-13");
  for (const std::size_t size : {std::size_t{0}, std::size_t{9}, std::size_t{255}}) {
    const BinaryList offsets{{object(0x09)}, size, 1};
    const BinaryList references{{object(0x09)}, 1, size};

    EXPECT_EQ(readBinary(framed("\x09", bigEndian(8, size), offsets.trailer(1, 9))), std::nullopt);
    EXPECT_EQ(readBinary(references.bytes()), std::nullopt) << size;
  }
}

TEST(BinaryPropertyListReaderTest, RootMustBeAnObjectOfTheTable) {
  proves("LIST-14");
  EXPECT_EQ(readBinary(BinaryList{{object(0x09)}, 1, 1, 1}.bytes()), std::nullopt);
  EXPECT_EQ(readBinary(BinaryList{{object(0x09)}, 1, 1, kHighest}.bytes()), std::nullopt);
}

TEST(BinaryPropertyListReaderTest, NoObjectsAtAllAreUnreadable) {
  EXPECT_EQ(readBinary(framed("\x09", "\x08", BinaryList().trailer(0, 9))), std::nullopt);
}

TEST(BinaryPropertyListReaderTest, TableMustLieBetweenHeaderAndTrailer) {
  proves("LIST-13");
  const BinaryList list;

  EXPECT_EQ(readBinary(framed("\x09", "\x08", list.trailer(1, 9))), Value(true));
  constexpr std::uint64_t kFar = std::uint64_t{1} << 63;
  for (const std::uint64_t table : {std::uint64_t{0}, std::uint64_t{7}, std::uint64_t{10},
                                    std::uint64_t{11}, kFar, kFar + 9, kHighest})
    EXPECT_EQ(readBinary(framed("\x09", "\x08", list.trailer(1, table))), std::nullopt) << table;
}

TEST(BinaryPropertyListReaderTest, TableAtTheVeryHeaderLeavesNoRoomForObjects) {
  EXPECT_EQ(readBinary(framed("", "\x08", BinaryList().trailer(1, 8))), std::nullopt);
}

TEST(BinaryPropertyListReaderTest, TableMustHoldAsManyEntriesAsTheTrailerSays) {
  proves("LIST-13");
  const BinaryList list;

  EXPECT_EQ(readBinary(framed("\x09", "\x08\x08", list.trailer(2, 9))), Value(true));
  for (const std::uint64_t count : {std::uint64_t{3}, (std::uint64_t{1} << 63) + 1, kHighest})
    EXPECT_EQ(readBinary(framed("\x09", "\x08\x08", list.trailer(count, 9))), std::nullopt);
}

TEST(BinaryPropertyListReaderTest, EntriesOfTheTableAreCountedInTheirSize) {
  const BinaryList list{{}, 2};

  EXPECT_EQ(readBinary(framed("\x09", "\x00\x08\x00\x08"sv, list.trailer(2, 9))), Value(true));
  EXPECT_EQ(readBinary(framed("\x09", "\x00\x08\x00\x08"sv, list.trailer(3, 9))), std::nullopt);
}

TEST(BinaryPropertyListReaderTest, BytesBehindTheTableDoNotMatter) {
  EXPECT_EQ(readBinary(framed("\x09", "\x08?????", BinaryList().trailer(1, 9))), Value(true));
}

TEST(BinaryPropertyListReaderTest, ObjectsMustLieBetweenHeaderAndTable) {
  proves("LIST-14");
  for (const char offset : {'\x00', '\x07', '\x09', '\x0A', '\xFF'})
    EXPECT_EQ(readBinary(framed("\x09", std::string(1, offset), BinaryList().trailer(1, 9))),
              std::nullopt)
        << static_cast<int>(offset);
}

TEST(BinaryPropertyListReaderTest, ContentMustNotReachIntoTheTable) {
  proves("LIST-14");
  EXPECT_EQ(readBinary(framed("\x52z", "\x08", BinaryList().trailer(1, 10))), std::nullopt);
  EXPECT_EQ(readBinary(framed("\x51z", "\x08", BinaryList().trailer(1, 10))), Value("z"));
}

// --- Bounds --------------------------------------------------------------------------------------

TEST(BinaryPropertyListReaderTest, ObjectThatHoldsItselfIsUnreadable) {
  proves("LIST-15");
  EXPECT_EQ(readBinary(BinaryList{{object(0xA1, "\x00"sv)}}.bytes()), std::nullopt);
  EXPECT_EQ(readBinary(BinaryList{{object(0xD1, "\x01\x00"sv), asciiObject("k")}}.bytes()),
            std::nullopt);
  EXPECT_EQ(readBinary(BinaryList{{object(0xA1, "\x01"), object(0xA1, "\x00"sv)}}.bytes()),
            std::nullopt);
}

// So many arrays, each within the one before, around one flag.
BinaryList nestedArrays(std::size_t arrays) {
  BinaryList list{{}, 2, 2};
  for (std::size_t level = 1; level <= arrays; ++level)
    list.objects.push_back(object(0xA1, bigEndian(level, 2)));
  list.objects.push_back(object(0x09));
  return list;
}

TEST(BinaryPropertyListReaderTest, ContainersNestUpToTheMaximumDepth) {
  proves("LIST-15");
  const std::optional<Value> deepest = readBinary(nestedArrays(kMaximumDepth).bytes());

  ASSERT_TRUE(deepest);
  int depth = 0;
  for (const Value* value = &*deepest; value->as<Array>(); value = &value->as<Array>()->front())
    ++depth;
  EXPECT_EQ(depth, 128);
  EXPECT_EQ(readBinary(nestedArrays(kMaximumDepth + 1).bytes()), std::nullopt);
}

TEST(BinaryPropertyListReaderTest, DepthCountsOpenContainersOnly) {
  BinaryList list{{object(0xAF, "\x11\x00\xC8"sv), object(0xA0)}};
  list.objects[0] += std::string(200, '\x01');

  const std::optional<Value> value = readBinary(list.bytes());

  ASSERT_TRUE(value && value->as<Array>());
  EXPECT_EQ(value->as<Array>()->size(), 200U);
}

TEST(BinaryPropertyListReaderTest, SharedObjectsThatMultiplyAreUnreadable) {
  proves("LIST-15");
  BinaryList list;
  for (char level = 1; level <= 60; ++level)
    list.objects.push_back(object(0xA2, std::string(2, level)));
  list.objects.push_back(object(0x09));

  EXPECT_EQ(readBinary(list.bytes()), std::nullopt);
}

// So many arrays, each of as many references to the next one, around the last object.
std::string multiplying(std::size_t arrays, unsigned width, const std::string& last) {
  BinaryList list;
  for (std::size_t level = 1; level <= arrays; ++level)
    list.objects.push_back(object(0xA0U + width, std::string(width, static_cast<char>(level))));
  list.objects.push_back(last);
  return list.bytes();
}

TEST(BinaryPropertyListReaderTest, AListIsNoLargerThanItsFileAndTenThousandObjectsMore) {
  proves("LIST-15");
  EXPECT_TRUE(readBinary(multiplying(4, 9, object(0x09))));
  EXPECT_EQ(readBinary(multiplying(4, 10, object(0x09))), std::nullopt);
}

TEST(BinaryPropertyListReaderTest, SharedTextsAreNoLongerThanEightTimesTheFileAndAMebibyteMore) {
  proves("LIST-15");
  const std::string text = object(0x5F, "\x11" + bigEndian(5000, 2)) + std::string(5000, 'a');

  EXPECT_TRUE(readBinary(multiplying(2, 14, text)));
  EXPECT_EQ(readBinary(multiplying(3, 7, text)), std::nullopt);
}

// An array whose items are all one flag: as many objects as it has items, and itself.
std::string arrayOf(std::size_t items) {
  BinaryList list{{object(0xAF, "\x12" + bigEndian(items, 4)), object(0x09)}};
  list.objects[0] += std::string(items, '\x01');
  list.offsetSize = 4;
  return list.bytes();
}

TEST(BinaryPropertyListReaderTest, AMillionObjectsAreReadAndNotOneMore) {
  proves("LIST-15");
  const std::optional<Value> most = readBinary(arrayOf(999'999));

  ASSERT_TRUE(most && most->as<Array>());
  EXPECT_EQ(most->as<Array>()->size(), 999'999U);
  EXPECT_EQ(most->as<Array>()->back(), Value(true));
  EXPECT_EQ(readBinary(arrayOf(1'000'000)), std::nullopt);
}

// A file of 16 MiB whose data is taken over four times, less four bytes, before the last object.
std::string withFourBytesLeft(const std::string& last) {
  constexpr std::size_t quarter = std::size_t{16} << 20;
  BinaryList list{{object(0xA5, "\x01\x01\x01\x02\x03"),
                   object(0x4F, "\x12" + bigEndian(quarter, 4)) + std::string(quarter, 'a'),
                   object(0x4F, "\x12" + bigEndian(quarter - 4, 4)) + std::string(quarter - 4, 'a'),
                   last}};
  list.offsetSize = 4;
  return list.bytes();
}

TEST(BinaryPropertyListReaderTest, SharedContentCountsAsOftenAsItIsTakenOver) {
  EXPECT_TRUE(readBinary(withFourBytesLeft(object(0x44, "1234"))));
  EXPECT_EQ(readBinary(withFourBytesLeft(object(0x45, "12345"))), std::nullopt);
  EXPECT_TRUE(readBinary(withFourBytesLeft(asciiObject("1234"))));
  EXPECT_EQ(readBinary(withFourBytesLeft(asciiObject("12345"))), std::nullopt);
  EXPECT_TRUE(readBinary(withFourBytesLeft(object(0x62, utf16(u"12")))));
  EXPECT_EQ(readBinary(withFourBytesLeft(object(0x63, utf16(u"123")))), std::nullopt);
}

}  // namespace
}  // namespace installer::PropertyList
