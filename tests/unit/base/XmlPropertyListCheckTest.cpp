#include "base/XmlPropertyListCheck.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

#include "base/XmlPropertyListWriter.h"
#include "support/Proves.h"
#include "support/RandomValue.h"
#include "support/XmlList.h"

namespace installer::PropertyList {
namespace {

using test::xmlList;

struct CheckRow {
  std::string name;
  std::string elements;
  Value value;
};

std::string nameOf(const ::testing::TestParamInfo<CheckRow>& tested) {
  return tested.param.name;
}

class ToldTable : public ::testing::TestWithParam<CheckRow> {};

TEST_P(ToldTable, TheElementsTellTheValue) {
  proves("LIST-17");
  EXPECT_TRUE(isToldBy(xmlList(GetParam().elements), GetParam().value));
}

const double kInfinity = std::numeric_limits<double>::infinity();
constexpr std::uint64_t kLarge = std::numeric_limits<std::uint64_t>::max();

INSTANTIATE_TEST_SUITE_P(
    Values, ToldTable,
    ::testing::Values(
        CheckRow{"Text", "<string>a&lt;&#13;</string>", "a<\r"},
        CheckRow{"TextInPieces", "<string>a<![CDATA[b]]>c</string>", "abc"},
        CheckRow{"NoText", "<string/>", ""}, CheckRow{"Yes", "<true/>", true},
        CheckRow{"No", "<false/>", false}, CheckRow{"Integer", "<integer>-5</integer>", -5},
        CheckRow{"LargeInteger", "<integer>18446744073709551615</integer>", kLarge},
        CheckRow{"Real", "<real>0.5</real>", 0.5},
        CheckRow{"Infinity", "<real>+infinity</real>", kInfinity},
        CheckRow{"NoNumber", "<real>nan</real>", std::nan("")},
        CheckRow{"Data", "<data>YQ==</data>", Data{"a"}},
        CheckRow{"Date", "<date>2001-01-01T00:00:01Z</date>", Date{1}},
        CheckRow{"DateCutOff", "<date>2001-01-01T00:00:01Z</date>", Date{1.75}},
        CheckRow{"DateBeforeItsEpochCutOff", "<date>2000-12-31T23:59:59Z</date>", Date{-0.25}},
        CheckRow{"Reference", "<dict><key>CF$UID</key><integer>5</integer></dict>", Uid{5}},
        CheckRow{"LooksLikeAReference", "<dict><key>CF$UID</key><integer>5</integer></dict>",
                 Dictionary{{"CF$UID", 5}}},
        CheckRow{"EmptyArray", "<array/>", Array{}},
        CheckRow{"EmptyDictionary", "<dict/>", Dictionary{}},
        CheckRow{"Containers",
                 "<dict> <key>a</key> <array> <true/> <dict/> <integer>1</integer> </array>\n"
                 "<key>b</key> <string>c</string> </dict>",
                 Dictionary{{"a", Array{true, Dictionary{}, 1}}, {"b", "c"}}}),
    nameOf);

class NotToldTable : public ::testing::TestWithParam<CheckRow> {};

TEST_P(NotToldTable, TheElementsTellAnotherValue) {
  proves("LIST-17");
  EXPECT_FALSE(isToldBy(xmlList(GetParam().elements), GetParam().value));
}

INSTANTIATE_TEST_SUITE_P(
    Values, NotToldTable,
    ::testing::Values(
        CheckRow{"OtherText", "<string>b</string>", "a"},
        CheckRow{"LongerText", "<string>ab</string>", "a"},
        CheckRow{"TextOfAnotherType", "<data>abcd</data>", "abcd"},
        CheckRow{"KeyForText", "<key>a</key>", "a"}, CheckRow{"OtherTruth", "<true/>", false},
        CheckRow{"OtherInteger", "<integer>6</integer>", 5},
        CheckRow{"IntegerForAReal", "<integer>1</integer>", 1.0},
        CheckRow{"OtherReal", "<real>0.25</real>", 0.5},
        CheckRow{"NoNumber", "<real>nan</real>", 0.5},
        CheckRow{"NumberForNone", "<real>0.5</real>", std::nan("")},
        CheckRow{"OtherData", "<data>YQ==</data>", Data{"b"}},
        CheckRow{"OtherDate", "<date>2001-01-01T00:00:01Z</date>", Date{2}},
        CheckRow{"DateRoundedUp", "<date>2001-01-01T00:00:02Z</date>", Date{1.75}},
        CheckRow{"LeafThatCannotBeRead", "<integer>x</integer>", 5},
        CheckRow{"UnknownElement", "<text>a</text>", "a"},
        CheckRow{"ElementInAText", "<string>a<true/></string>", "a"}, CheckRow{"Nothing", "", "a"},
        CheckRow{"TwoValues", "<true/><true/>", true},
        CheckRow{"TextBesideTheValue", "<true/>a", true},
        CheckRow{"SecondList", "<plist><true/></plist>", true},
        CheckRow{"OtherReference", "<dict><key>CF$UID</key><integer>6</integer></dict>", Uid{5}},
        CheckRow{"NoReference", "<dict/>", Uid{5}},
        CheckRow{"MoreThanAReference",
                 "<dict><key>CF$UID</key><integer>5</integer><key>a</key><true/></dict>", Uid{5}},
        CheckRow{"ArrayForADictionary", "<array/>", Dictionary{}},
        CheckRow{"DictionaryForAnArray", "<dict/>", Array{}},
        CheckRow{"ArrayForAText", "<array/>", "a"},
        CheckRow{"TextForAnArray", "<string/>", Array{}},
        CheckRow{"ShorterArray", "<array><true/></array>", Array{true, true}},
        CheckRow{"LongerArray", "<array><true/><true/></array>", Array{true}},
        CheckRow{"KeyInAnArray", "<array><key>a</key></array>", Array{"a"}},
        CheckRow{"OtherKey", "<dict><key>b</key><true/></dict>", Dictionary{{"a", true}}},
        CheckRow{"OtherOrder", "<dict><key>b</key><true/><key>a</key><true/></dict>",
                 Dictionary{{"a", true}, {"b", true}}},
        CheckRow{"ValueWithoutItsKey", "<dict><true/></dict>", Dictionary{{"a", true}}},
        CheckRow{"KeyWithoutItsValue", "<dict><key>a</key></dict>", Dictionary{{"a", true}}},
        CheckRow{"TwoKeysForAValue", "<dict><key>a</key><key>a</key><true/></dict>",
                 Dictionary{{"a", true}}},
        CheckRow{"MissingEntry", "<dict><key>a</key><true/></dict>",
                 Dictionary{{"a", true}, {"b", true}}},
        CheckRow{"EntryTooMany", "<dict><key>a</key><true/><key>b</key><true/></dict>",
                 Dictionary{{"a", true}}},
        CheckRow{"OtherValueOfAnEntry", "<dict><key>a</key><false/></dict>",
                 Dictionary{{"a", true}}},
        CheckRow{"TextInADictionary", "<dict>x<key>a</key><true/></dict>",
                 Dictionary{{"a", true}}}),
    nameOf);

TEST(XmlPropertyListCheckTest, DictionaryIsComparedAsItsValueIs) {
  const Dictionary dictionary{{"a", true}};
  const std::string same = xmlList("<dict><key>a</key><true/></dict>");

  EXPECT_TRUE(isToldBy(same, dictionary));
  EXPECT_FALSE(isToldBy(xmlList("<dict/>"), dictionary));
  EXPECT_FALSE(isToldBy(xmlList("<array/>"), dictionary));
  EXPECT_FALSE(isToldBy("<dict><key>a</key><true/></dict>", dictionary)) << "we write the list";
  EXPECT_FALSE(isToldBy(same + "<", dictionary));
}

// The library is asked when the reader of plain documents stops in the middle.
TEST(XmlPropertyListCheckTest, UnusualBytesAreComparedFromTheirBeginning) {
  const Value value(Array{"a", "\u00e9"});
  const std::string elements = "<array><string>a</string><string>\u00e9</string></array>";

  EXPECT_TRUE(isToldBy(xmlList(elements + "\r\n"), value));
  EXPECT_TRUE(isToldBy(xmlList(elements + "<?A:b c?>"), value));
  EXPECT_FALSE(isToldBy(xmlList(elements + "<!-- a -- b"), value));
  EXPECT_FALSE(isToldBy(xmlList(elements + "<?A:b c?><true/>"), value));
}

TEST(XmlPropertyListCheckTest, NestingIsWhatCanBeRead) {
  Value deep(true);
  for (int level = 0; level < kMaximumDepth; ++level) deep = Array{deep};
  std::string elements = "<true/>";
  for (int level = 0; level < kMaximumDepth; ++level) elements = "<array>" + elements + "</array>";

  EXPECT_TRUE(isToldBy(xmlList(elements), deep));
  EXPECT_FALSE(isToldBy(xmlList("<array>" + elements + "</array>"), Array{deep}));
}

TEST(XmlPropertyListCheckTest, WhatIsWrittenTellsRandomValuesAndNoOthers) {
  proves("LIST-16");
  test::RandomValues random(17);
  for (int run = 0; run < 2000; ++run) {
    const Value value = random.value(3);
    const Value other = random.value(3);

    EXPECT_TRUE(isToldBy(writeXml(value).value(), value));
    EXPECT_EQ(isToldBy(writeXml(other).value(), value), writeXml(other) == writeXml(value));
  }
}

}  // namespace
}  // namespace installer::PropertyList
