#include "hotfix/platform/PropertyListFile.h"

#include <gmock/gmock.h>

#include <cerrno>
#include <cmath>
#include <limits>
#include <string_view>

#include "support/BinaryList.h"
#include "support/Proves.h"
#include "support/Sandbox.h"
#include "support/XmlList.h"

namespace installer::PropertyList {
namespace {

using namespace std::string_view_literals;
using test::asciiObject;
using test::BinaryList;
using test::object;
using test::xmlList;

// --- Values --------------------------------------------------------------------------------------

TEST(PropertyListValueTest, IntegersThatFitAreSigned) {
  proves("LIST-2");
  const Value value(std::uint64_t{9223372036854775807U});

  ASSERT_TRUE(value.as<std::int64_t>());
  EXPECT_EQ(*value.as<std::int64_t>(), std::numeric_limits<std::int64_t>::max());
}

TEST(PropertyListValueTest, IntegersBeyondTheSignedRangeAreUnsigned) {
  proves("LIST-2");
  const Value value(std::uint64_t{9223372036854775808U});

  ASSERT_TRUE(value.as<std::uint64_t>());
  EXPECT_EQ(*value.as<std::uint64_t>(), 9223372036854775808U);
}

TEST(PropertyListValueTest, TypesTellValuesApart) {
  proves("LIST-2");
  EXPECT_EQ(Value(), Value(""));
  EXPECT_NE(Value(1), Value(true));
  EXPECT_NE(Value(1), Value(1.0));
  EXPECT_NE(Value(Data{"a"}), Value("a"));
  EXPECT_NE(Value(Uid{1}), Value(1));
  EXPECT_EQ(Value(1).as<std::string>(), nullptr);
}

TEST(PropertyListValueTest, HeldValueCanBeTakenOut) {
  EXPECT_EQ(Value(Dictionary{{"a", 1}}).take<Dictionary>(), (Dictionary{{"a", 1}}));
  EXPECT_EQ(Value("a").take<Dictionary>(), std::nullopt);
}

// --- Looking up ----------------------------------------------------------------------------------

TEST(PropertyListLookupTest, OnlyTextsAreTexts) {
  proves("LIST-8");
  const Dictionary dictionary{{"text", "a"}, {"empty", ""}, {"number", 1}, {"flag", true}};

  EXPECT_EQ(textForKey(dictionary, "text"), "a");
  EXPECT_EQ(textForKey(dictionary, "empty"), "");
  EXPECT_EQ(textForKey(dictionary, "number"), std::nullopt);
  EXPECT_EQ(textForKey(dictionary, "flag"), std::nullopt);
  EXPECT_EQ(textForKey(dictionary, "missing"), std::nullopt);
}

TEST(PropertyListLookupTest, TruthsAreReadAsThePlatformDoes) {
  proves("LIST-8");
  for (const Value& value : {Value(true),    Value(1),
                             Value(-1),      Value(std::numeric_limits<std::uint64_t>::max()),
                             Value(0.5),     Value("YES"),
                             Value("yes"),   Value("Y"),
                             Value("true"),  Value("True"),
                             Value("tango"), Value("1"),
                             Value("9"),     Value("5 apples"),
                             Value("007"),   Value("  \t1"),
                             Value("\n1"),   Value("\r\n \ttrue"),
                             Value("\v1"),   Value("\f-1"),
                             Value("+1"),    Value("-1"),
                             Value("-007"),  Value(" +0y"),
                             Value("0T"),    Value("2"),
                             Value("3"),     Value("4"),
                             Value("6"),     Value("7"),
                             Value("8")})
    EXPECT_TRUE(booleanForKey({{"k", value}}, "k"))
        << ::testing::PrintToString(value.as<std::string>());
}

TEST(PropertyListLookupTest, EverythingElseIsFalse) {
  proves("LIST-8");
  for (const Value& value :
       {Value(false),   Value(0),       Value(0.0),         Value(""),
        Value(" "),     Value("0"),     Value("000"),       Value("NO"),
        Value("no"),    Value("false"), Value("on"),        Value("x1"),
        Value("--1"),   Value("+-1"),   Value("- 1"),       Value("0 1"),
        Value("+"),     Value("-"),     Value(" -"),        Value(Data{"1"}),
        Value(Date{1}), Value(Uid{1}),  Value(Array{true}), Value(Dictionary{{"k", true}})})
    EXPECT_FALSE(booleanForKey({{"k", value}}, "k"))
        << ::testing::PrintToString(value.as<std::string>());
}

TEST(PropertyListLookupTest, MissingTruthIsFalse) {
  proves("LIST-8");
  EXPECT_FALSE(booleanForKey({{"k", true}}, "other"));
}

// --- Reading and writing memory ------------------------------------------------------------------

TEST(PropertyListParseTest, BothFormsAreRead) {
  proves("LIST-1");
  EXPECT_EQ(parse(xmlList("<true/>")), Value(true));
  EXPECT_EQ(parse(BinaryList{{object(0x09)}}.bytes()), Value(true));
}

TEST(PropertyListParseTest, OtherFormsAreUnreadable) {
  proves("LIST-1");
  EXPECT_EQ(parse("{ a = b; }"), std::nullopt);
  EXPECT_EQ(parse(""), std::nullopt);
  EXPECT_EQ(parse("bplist00"), std::nullopt);
}

TEST(PropertyListParseTest, OnlyDictionariesCountAsDictionaries) {
  EXPECT_EQ(parseDictionary(xmlList("<dict><key>a</key><true/></dict>")),
            (Dictionary{{"a", true}}));
  EXPECT_EQ(parseDictionary(xmlList("<array/>")), std::nullopt);
  EXPECT_EQ(parseDictionary("<dict>"), std::nullopt);
}

TEST(PropertyListSerializeTest, EveryKindOfValueIsReadBackInOrder) {
  proves("LIST-16");
  const Value value(Dictionary{{"z", "<text>\r\n"},
                               {"flag", true},
                               {"other", false},
                               {"low", std::numeric_limits<std::int64_t>::min()},
                               {"high", std::numeric_limits<std::uint64_t>::max()},
                               {"real", 0.1},
                               {"data", Data{std::string(300, '\xFE')}},
                               {"date", Date{-1}},
                               {"reference", Uid{5}},
                               {"array", Array{Array{}, Dictionary{}}},
                               {"a", ""}});

  const std::optional<std::string> bytes = serialize(value);

  ASSERT_TRUE(bytes);
  const std::optional<Value> read = parse(*bytes);
  ASSERT_EQ(read, value);
  EXPECT_EQ(read->as<Dictionary>()->begin()->first, "z");
  EXPECT_EQ(serialize(*read), bytes);
}

TEST(PropertyListSerializeTest, DictionaryIsWrittenAsItsValueIs) {
  proves("LIST-16", "LIST-17");
  const Dictionary dictionary{{"a", "b"}, {"c", Array{1}}};

  EXPECT_EQ(serializeDictionary(dictionary), serialize(dictionary));
  EXPECT_EQ(serializeDictionary({}), serialize(Dictionary{}));
  EXPECT_EQ(serializeDictionary({{"a", "\x01"}}), std::nullopt);
  EXPECT_EQ(serializeDictionary({{"a", Date{1e300}}}), std::nullopt);
}

TEST(PropertyListSerializeTest, WhatXmlCannotTellIsRefused) {
  proves("LIST-17");
  for (const Value& value :
       {Value("\x01"), Value("\x1F"), Value(std::string("a\0b", 3)), Value("\uFFFE"), Value("\xE9"),
        Value("\xED\xA0\x80"), Value("\xC0\x80"), Value("\xF4\x90\x80\x80"), Value(Date{1e300}),
        Value(Date{std::nan("")})}) {
    EXPECT_EQ(serialize(value), std::nullopt);
    EXPECT_EQ(serialize(Array{true, value}), std::nullopt);
    EXPECT_EQ(serialize(Dictionary{{"a", true}, {"b", value}}), std::nullopt);
  }
  EXPECT_EQ(serialize(Dictionary{{"\x01", true}}), std::nullopt);
}

TEST(PropertyListSerializeTest, RefusalsAreSilent) {
  proves("LIST-17");
  ::testing::internal::CaptureStderr();

  EXPECT_EQ(serialize("\x01"), std::nullopt);

  EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
}

TEST(PropertyListSerializeTest, MoreThanAMillionObjectsAreRefused) {
  proves("LIST-17");
  EXPECT_EQ(serialize(Array(1'000'000, Value(true))), std::nullopt);
}

TEST(PropertyListSerializeTest, NotANumberIsToldAnywhere) {
  EXPECT_TRUE(serialize(std::nan("")));
  EXPECT_TRUE(serialize(Array{std::nan("")}));
  EXPECT_TRUE(serialize(Dictionary{{"k", std::nan("")}}));
}

TEST(PropertyListSerializeTest, PartOfASecondIsCutOff) {
  proves("LIST-9");
  const std::optional<std::string> bytes = serialize(Array{Date{-0.25}, Date{10.75}});

  ASSERT_TRUE(bytes);
  EXPECT_EQ(parse(*bytes), Value(Array{Date{-1}, Date{10}}));
}

TEST(PropertyListSerializeTest, DictionaryThatLooksLikeAReferenceBecomesOne) {
  proves("LIST-18");
  const std::optional<std::string> bytes =
      serialize(Array{Dictionary{{"CF$UID", 5}},
                      Dictionary{{"CF$UID", std::numeric_limits<std::uint64_t>::max()}}});

  ASSERT_TRUE(bytes);
  EXPECT_EQ(parse(*bytes), Value(Array{Uid{5}, Uid{std::numeric_limits<std::uint64_t>::max()}}));
}

TEST(PropertyListSerializeTest, ReferencesOfBinaryListsSurviveTheRewrite) {
  proves("LIST-18");
  const BinaryList list{{object(0xD1, "\x01\x02"), asciiObject("k"), object(0x80, "\x09")}};

  const std::optional<std::string> bytes = serialize(*parse(list.bytes()));

  ASSERT_TRUE(bytes);
  EXPECT_EQ(parse(*bytes), Value(Dictionary{{"k", Uid{9}}}));
}

TEST(PropertyListSerializeTest, WhatABinaryListHoldsCanBeTold) {
  proves("LIST-21");
  const BinaryList list{{object(0xD3, "\x01\x02\x03\x04\x05\x06"), asciiObject("\x01"),
                         asciiObject("wide"), asciiObject("date"), asciiObject("a\x1F\tb"),
                         object(0x63, "\xFF\xFE\x20\xAC\xD8\x00"sv),
                         object(0x33, "\x7F\xF8\0\0\0\0\0\0"sv)}};

  const std::optional<Value> read = parse(list.bytes());

  ASSERT_TRUE(read);
  const std::optional<std::string> bytes = serialize(*read);
  ASSERT_TRUE(bytes);
  EXPECT_EQ(parse(*bytes), read);
  EXPECT_EQ(textForKey(*read->as<Dictionary>(), "\uFFFD"), "a\uFFFD\tb");
  EXPECT_EQ(textForKey(*read->as<Dictionary>(), "wide"), "\uFFFD\u20AC\uFFFD");
}

// --- Files ---------------------------------------------------------------------------------------

class PropertyListFileTest : public ::testing::Test {
 protected:
  test::Sandbox _sandbox;
};

TEST_F(PropertyListFileTest, DictionaryIsReadFromEitherForm) {
  proves("LIST-1");
  _sandbox.write("a.plist", xmlList("<dict><key>a</key><true/></dict>"));
  _sandbox.write("b.plist",
                 BinaryList{{object(0xD1, "\x01\x02"), asciiObject("b"), object(0x08)}}.bytes());

  EXPECT_EQ(readDictionary(_sandbox.path("a.plist")), (Dictionary{{"a", true}}));
  EXPECT_EQ(readDictionary(_sandbox.path("b.plist")), (Dictionary{{"b", false}}));
}

TEST_F(PropertyListFileTest, AnythingElseIsAbsent) {
  proves("LIST-1");
  _sandbox.write("array.plist", xmlList("<array/>"));
  _sandbox.write("broken.plist", "<plist><dict>");
  _sandbox.makeFolder("folder.plist");

  for (const char* name : {"array.plist", "broken.plist", "folder.plist", "missing.plist"})
    EXPECT_EQ(readDictionary(_sandbox.path(name)), std::nullopt) << name;
}

TEST_F(PropertyListFileTest, DictionaryIsWrittenAsXml) {
  proves("LIST-16");
  EXPECT_TRUE(writeDictionary({{"a", "b"}}, _sandbox.path("new.plist")));

  EXPECT_EQ(_sandbox.read("new.plist"),
            xmlList("<dict>\n\t<key>a</key>\n\t<string>b</string>\n</dict>"));
}

TEST_F(PropertyListFileTest, WhatXmlCannotTellLeavesTheFile) {
  proves("LIST-17");
  _sandbox.write("old.plist", "old");

  EXPECT_FALSE(writeDictionary({{"a", "\x01"}}, _sandbox.path("old.plist")));

  EXPECT_EQ(_sandbox.read("old.plist"), "old");
}

TEST_F(PropertyListFileTest, RefusingDiskFailsTheWrite) {
  proves("LIST-17");
  _sandbox.write("old.plist", "old");
  _sandbox.files().failAt(1, ENOSPC);

  EXPECT_FALSE(writeDictionary({{"a", "b"}}, _sandbox.path("old.plist")));

  EXPECT_EQ(_sandbox.read("old.plist"), "old");
}

}  // namespace
}  // namespace installer::PropertyList
