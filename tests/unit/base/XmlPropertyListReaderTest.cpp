#include "base/XmlPropertyListReader.h"

#include <gmock/gmock.h>
#include <iconv.h>

#include <cmath>
#include <iterator>
#include <limits>
#include <vector>

#include "support/Memory.h"
#include "support/Proves.h"
#include "support/XmlList.h"

namespace installer::PropertyList {
namespace {

using test::xmlList;
using namespace std::string_view_literals;

const std::int64_t kLowest = std::numeric_limits<std::int64_t>::min();
const std::int64_t kHighestSigned = std::numeric_limits<std::int64_t>::max();
const std::uint64_t kHighest = std::numeric_limits<std::uint64_t>::max();

// --- Elements ------------------------------------------------------------------------------------

struct ReadableElement {
  std::string name;
  std::string element;
  Value value;
};
void PrintTo(const ReadableElement& row, std::ostream* stream) {
  *stream << row.name;
}

class ReadableElements : public ::testing::TestWithParam<ReadableElement> {};

TEST_P(ReadableElements, ReadsAsItsValue) {
  proves("LIST-3");
  EXPECT_EQ(readXml(xmlList(GetParam().element)), GetParam().value);
}

INSTANTIATE_TEST_SUITE_P(
    Kinds, ReadableElements,
    ::testing::ValuesIn(std::vector<ReadableElement>{
        {"Text", "<string>a b</string>", "a b"},
        {"EmptyText", "<string></string>", ""},
        {"ShortEmptyText", "<string/>", ""},
        {"TextKeepsItsWhiteSpace", "<string> \ta\n </string>", " \ta\n "},
        {"TextWithReferences", "<string>&lt;&amp;&gt;&quot;&apos;&#65;&#x1F600;&#13;</string>",
         "<&>\"'A\U0001F600\r"},
        {"TextWithSections", "<string>a<![CDATA[<&amp;]]>b</string>", "a<&amp;b"},
        {"TextWithComments", "<string>a<!-- c -->b<?p i?>c</string>", "abc"},
        {"TextWithLineEnds", "<string>a\r\nb\rc</string>", "a\nb\nc"},
        {"True", "<true/>", true},
        {"False", "<false/>", false},
        {"FlagWithWhiteSpace", "<true> \n</true>", true},
        {"Zero", "<integer>0</integer>", 0},
        {"NegativeZero", "<integer>-0</integer>", 0},
        {"Integer", "<integer>42</integer>", 42},
        {"IntegerWithPlus", "<integer>+42</integer>", 42},
        {"IntegerWithMinus", "<integer>-42</integer>", -42},
        {"IntegerWithLeadingZeros", "<integer>007</integer>", 7},
        {"IntegerInWhiteSpace", "<integer> \t\r\n42 \t\r\n</integer>", 42},
        {"Hexadecimal", "<integer>0x1fA</integer>", 0x1FA},
        {"UpperHexadecimal", "<integer>0X10</integer>", 16},
        {"NegativeHexadecimal", "<integer>-0x10</integer>", -16},
        {"HighestSigned", "<integer>9223372036854775807</integer>", kHighestSigned},
        {"FirstUnsigned", "<integer>9223372036854775808</integer>", std::uint64_t{1} << 63},
        {"Highest", "<integer>18446744073709551615</integer>", kHighest},
        {"HighestHexadecimal", "<integer>0xFFFFFFFFFFFFFFFF</integer>", kHighest},
        {"Lowest", "<integer>-9223372036854775808</integer>", kLowest},
        {"Real", "<real>1.5</real>", 1.5},
        {"RealWithPlus", "<real>+1.5</real>", 1.5},
        {"RealWithMinus", "<real>-1.5</real>", -1.5},
        {"RealWithExponent", "<real>1e-3</real>", 0.001},
        {"RealInWhiteSpace", "<real>\n 2 </real>", 2.0},
        {"RealWithSeventeenDigits", "<real>0.10000000000000001</real>", 0.1},
        {"Infinity", "<real>+infinity</real>", HUGE_VAL},
        {"NegativeInfinity", "<real>-infinity</real>", -HUGE_VAL},
        {"ShortInfinity", "<real>inf</real>", HUGE_VAL},
        {"Date", "<date>2001-01-02T00:00:01Z</date>", Date{86401}},
        {"DateInWhiteSpace", "<date> 2001-01-01T00:00:00Z\n</date>", Date{0}},
        {"Data", "<data>AP8B</data>", Data{std::string("\x00\xFF\x01"sv)}},
        {"DataOnManyLines", "<data>\n\t\tQU\n\t\tJD \r\n</data>", Data{"ABC"}},
        {"NoData", "<data/>", Data{}},
        {"EmptyArray", "<array/>", Array{}},
        {"ArrayOfWhiteSpace", "<array> \t\r\n</array>", Array{}},
        {"Array", "<array> <true/>\n<string>a</string><array/></array>", Array{true, "a", Array{}}},
        {"EmptyDictionary", "<dict/>", Dictionary{}},
        {"Dictionary", "<dict>\n<key>a</key>\n<true/><key>b</key><string>c</string></dict>",
         Dictionary{{"a", true}, {"b", "c"}}},
        {"EmptyKey", "<dict><key/><true/></dict>", Dictionary{{"", true}}},
        {"KeyKeepsItsWhiteSpace", "<dict><key> a&amp;\n</key><true/></dict>",
         Dictionary{{" a&\n", true}}},
        {"CommentsAnywhere", "<!--a--><dict><!--b--><key>k</key><!--c--><true/><?d e?></dict>",
         Dictionary{{"k", true}}},
        {"Attributes", "<array a='&lt;'><string xml:space='preserve'>x</string></array>",
         Array{"x"}},
        {"DefaultNamespace", "<dict xmlns='urn:x'><key>k</key><true/></dict>",
         Dictionary{{"k", true}}},
        {"ObjectReference", "<dict><key>CF$UID</key><integer>5</integer></dict>", Uid{5}},
        {"ObjectReferenceZero", "<dict><key>CF$UID</key><integer>0</integer></dict>", Uid{0}},
        {"HighestObjectReference",
         "<dict><key>CF$UID</key><integer>18446744073709551615</integer></dict>", Uid{kHighest}},
        {"NegativeReferenceIsADictionary", "<dict><key>CF$UID</key><integer>-1</integer></dict>",
         Dictionary{{"CF$UID", -1}}},
        {"TextReferenceIsADictionary", "<dict><key>CF$UID</key><string>5</string></dict>",
         Dictionary{{"CF$UID", "5"}}},
        {"ReferenceWithMoreIsADictionary",
         "<dict><key>CF$UID</key><integer>5</integer><key>b</key><true/></dict>",
         Dictionary{{"CF$UID", 5}, {"b", true}}},
        {"OtherSingleIntegerIsADictionary", "<dict><key>CF$UI</key><integer>5</integer></dict>",
         Dictionary{{"CF$UI", 5}}},
    }),
    [](const auto& test) { return test.param.name; });

struct UnreadableElement {
  std::string name;
  std::string element;
};
void PrintTo(const UnreadableElement& row, std::ostream* stream) {
  *stream << row.name;
}

class UnreadableElements : public ::testing::TestWithParam<UnreadableElement> {};

TEST_P(UnreadableElements, MakeTheListUnreadable) {
  proves("LIST-3");
  EXPECT_EQ(readXml(xmlList(GetParam().element)), std::nullopt);
}

TEST_P(UnreadableElements, MakeAnEnclosingArrayUnreadable) {
  proves("LIST-3");
  EXPECT_EQ(readXml(xmlList("<array>" + GetParam().element + "</array>")), std::nullopt);
}

INSTANTIATE_TEST_SUITE_P(Kinds, UnreadableElements,
                         ::testing::ValuesIn(std::vector<UnreadableElement>{
                             {"UnknownElement", "<text>a</text>"},
                             {"UpperCase", "<STRING>a</STRING>"},
                             {"Prefix", "<p:string xmlns:p='urn:p'>a</p:string>"},
                             {"UndeclaredPrefix", "<p:string>a</p:string>"},
                             {"LooseText", "a"},
                             {"LooseTextBeforeAValue", "a<true/>"},
                             {"LooseSection", "<![CDATA[a]]><true/>"},
                             {"LooseReference", "&amp;<true/>"},
                             {"ElementInText", "<string>a<true/></string>"},
                             {"ElementInKey", "<dict><key>a<true/></key><true/></dict>"},
                             {"TextInFlag", "<true>a</true>"},
                             {"TextInFalseFlag", "<false>a</false>"},
                             {"NestedList", "<plist><true/></plist>"},
                             {"KeyAlone", "<key>a</key>"},
                             {"ValueWithoutKey", "<dict><true/></dict>"},
                             {"SecondValueWithoutKey", "<dict><key>a</key><true/><true/></dict>"},
                             {"KeyWithoutValue", "<dict><key>a</key></dict>"},
                             {"LastKeyWithoutValue",
                              "<dict><key>a</key><true/><key>b</key></dict>"},
                             {"TwoKeysInARow", "<dict><key>a</key><key>b</key><true/></dict>"},
                             {"TextInDictionary", "<dict>a<key>a</key><true/></dict>"},
                             {"TextInArray", "<array><true/>,<true/></array>"},
                             {"NoInteger", "<integer/>"},
                             {"BlankInteger", "<integer> </integer>"},
                             {"SignOnly", "<integer>-</integer>"},
                             {"PlusOnly", "<integer>+</integer>"},
                             {"TwoSigns", "<integer>--1</integer>"},
                             {"PlusMinus", "<integer>+-1</integer>"},
                             {"HexadecimalWithoutDigits", "<integer>0x</integer>"},
                             {"HexadecimalWithSignInside", "<integer>0x-1</integer>"},
                             {"DigitsOfHexadecimalWithoutPrefix", "<integer>1f</integer>"},
                             {"IntegerWithRest", "<integer>1 2</integer>"},
                             {"IntegerWithPoint", "<integer>1.0</integer>"},
                             {"IntegerTooHigh", "<integer>18446744073709551616</integer>"},
                             {"HexadecimalTooHigh", "<integer>0x10000000000000000</integer>"},
                             {"IntegerTooLow", "<integer>-9223372036854775809</integer>"},
                             {"NoReal", "<real/>"},
                             {"RealWithRest", "<real>1.5x</real>"},
                             {"RealWithComma", "<real>1,5</real>"},
                             {"RealWithTwoSigns", "<real>+-1</real>"},
                             {"RealWithTwoPlus", "<real>++1</real>"},
                             {"RealTooHigh", "<real>1e999</real>"},
                             {"RealTooSmall", "<real>1e-999</real>"},
                             {"NoDate", "<date/>"},
                             {"WrongDate", "<date>2001-02-29T00:00:00Z</date>"},
                             {"WrongData", "<data>A*==</data>"},
                             {"CutData", "<data>QUJ</data>"},
                             {"UndefinedEntity", "<string>&nbsp;</string>"},
                             {"ControlCharacter", "<string>\x01</string>"},
                             {"ReferenceToAControlCharacter", "<string>&#1;</string>"},
                             {"ZeroByte", std::string("<string>a\0b</string>", 20)},
                             {"NoUtf8", "<string>\xE9</string>"},
                             {"SurrogateInUtf8", "<string>\xED\xA0\x80</string>"},
                             {"NoCharacter", "<string>\uFFFE</string>"},
                             {"OpenElement", "<string>a"},
                             {"WrongEnd", "<string>a</key>"},
                             {"AttributeTwice", "<string a='1' a='2'>a</string>"},
                         }),
                         [](const auto& test) { return test.param.name; });

TEST(XmlPropertyListReaderTest, NotANumberIsRead) {
  proves("LIST-3");
  const std::optional<Value> value = readXml(xmlList("<real>nan</real>"));

  ASSERT_TRUE(value && value->as<double>());
  EXPECT_TRUE(std::isnan(*value->as<double>()));
}

TEST(XmlPropertyListReaderTest, EntriesKeepTheirOrder) {
  proves("LIST-7");
  const std::optional<Value> value =
      readXml(xmlList("<dict><key>b</key><true/><key>a</key><false/></dict>"));

  ASSERT_TRUE(value && value->as<Dictionary>());
  EXPECT_EQ(value->as<Dictionary>()->begin()->first, "b");
}

TEST(XmlPropertyListReaderTest, LaterOfTwoEqualKeysWinsAtTheFirstPlace) {
  proves("LIST-7");
  const std::optional<Value> value = readXml(xmlList(
      "<dict><key>a</key><string>old</string><key>b</key><true/><key>a</key><string>new</string>"
      "</dict>"));

  ASSERT_TRUE(value && value->as<Dictionary>());
  EXPECT_EQ(*value->as<Dictionary>()->begin(), Dictionary::Entry("a", "new"));
  EXPECT_EQ(value->as<Dictionary>()->size(), 2U);
}

// --- The document --------------------------------------------------------------------------------

struct Document {
  std::string name;
  std::string bytes;
};
void PrintTo(const Document& row, std::ostream* stream) {
  *stream << row.name;
}

class ReadableDocuments : public ::testing::TestWithParam<Document> {};

TEST_P(ReadableDocuments, HoldTheValue) {
  proves("LIST-5");
  EXPECT_EQ(readXml(GetParam().bytes), Value("x"));
}

INSTANTIATE_TEST_SUITE_P(
    Forms, ReadableDocuments,
    ::testing::ValuesIn(std::vector<Document>{
        {"ListElementAlone", "<plist><string>x</string></plist>"},
        {"ValueAlone", "<string>x</string>"},
        {"ValueAloneWithDeclaration", "<?xml version='1.0'?><string>x</string>"},
        {"ByteOrderMark", "\xEF\xBB\xBF<plist><string>x</string></plist>"},
        {"WhiteSpaceAround", "\n <plist> <string>x</string> </plist> \n"},
        {"CommentsAround", "<!--a--><?b?><plist><string>x</string></plist><!--c--><?d?>"},
        {"SystemDoctype", "<!DOCTYPE plist SYSTEM 'file:///nowhere.dtd'><string>x</string>"},
        {"Standalone", "<?xml version='1.0' standalone='yes'?><string>x</string>"},
        {"SubsetWithoutDeclarations",
         "<!DOCTYPE plist [<!-- c --> <?d?> ]><plist><string>x</string></plist>"},
        {"LaterVersion", "<?xml version='1.1'?><string>x</string>"},
    }),
    [](const auto& test) { return test.param.name; });

class UnreadableDocuments : public ::testing::TestWithParam<Document> {};

TEST_P(UnreadableDocuments, HoldNoValue) {
  proves("LIST-5");
  ::testing::internal::CaptureStderr();

  EXPECT_EQ(readXml(GetParam().bytes), std::nullopt);

  EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
}

INSTANTIATE_TEST_SUITE_P(
    Forms, UnreadableDocuments,
    ::testing::ValuesIn(std::vector<Document>{
        {"Empty", ""},
        {"Blank", " \n"},
        {"Text", "hello"},
        {"NoElement", "<?xml version='1.0'?><!-- c -->"},
        {"EmptyList", "<plist/>"},
        {"BlankList", "<plist> </plist>"},
        {"TwoValues", "<plist><true/><true/></plist>"},
        {"TwoContainers", "<plist><dict/><array/></plist>"},
        {"TextBehindTheValue", "<plist><true/>a</plist>"},
        {"KeyAlone", "<key>a</key>"},
        {"AnotherRoot", "<list><true/></list>"},
        {"ListWithPrefix", "<p:plist xmlns:p='urn:p'><true/></p:plist>"},
        {"TwoLists", "<plist><true/></plist><plist><true/></plist>"},
        {"TextBehindTheList", "<plist><true/></plist>x"},
        {"ZeroByteBehindTheList", std::string("<plist><true/></plist>\0", 23)},
        {"ZeroByteAndTextBehindTheList", std::string("<plist><true/></plist>\0x", 24)},
        {"OpenList", "<plist><true/>"},
        {"TextBeforeTheDeclaration", " <?xml version='1.0'?><plist><true/></plist>"},
        {"UnknownEncoding", "<?xml version='1.0' encoding='X-NONE'?><plist><true/></plist>"},
        {"WrongEncoding", "<?xml version='1.0' encoding='UTF-8'?><string>\xE9</string>"},
        {"CutUtf16", std::string("\xFF\xFE<\0t\0r\0u\0e\0/\0", 14)},
        {"DeclaredElement", "<!DOCTYPE plist [<!ELEMENT plist ANY>]><plist><true/></plist>"},
        {"DeclaredAttribute",
         "<!DOCTYPE plist [<!ATTLIST plist v CDATA #IMPLIED>]><plist><true/></plist>"},
        {"DeclaredChoice", "<!DOCTYPE plist [<!ATTLIST plist v (a|b) 'a'>]><plist><true/></plist>"},
        {"DeclaredNotation", "<!DOCTYPE plist [<!NOTATION n SYSTEM 'n'>]><plist><true/></plist>"},
        {"UnusedEntity", "<!DOCTYPE plist [<!ENTITY e 'x'>]><plist><true/></plist>"},
        {"UsedEntity", "<!DOCTYPE plist [<!ENTITY e 'x'>]><string>&e;</string>"},
        {"RedefinedEntity", "<!DOCTYPE plist [<!ENTITY lt '&#38;#60;'>]><string>a</string>"},
        {"ExternalEntity",
         "<!DOCTYPE plist [<!ENTITY e SYSTEM 'file:///etc/passwd'>]><string>a</string>"},
        {"UnparsedEntity",
         "<!DOCTYPE plist [<!NOTATION n SYSTEM 'n'><!ENTITY e SYSTEM 'e' NDATA n>]><true/>"},
        {"ParameterEntity", "<!DOCTYPE plist [<!ENTITY % e '<!-- c -->'> %e;]><true/>"},
        {"UndefinedParameterEntity", "<!DOCTYPE plist SYSTEM 'x' [ %e; ]><true/>"},
        {"UndefinedEntityOfAnOutsideDefinition",
         "<!DOCTYPE plist SYSTEM 'x'><string>a&nbsp;b</string>"},
        {"UndefinedEntityInAnAttribute",
         "<!DOCTYPE plist SYSTEM 'x'><string a='&nbsp;'>a</string>"},
        {"ManyEntities",
         "<!DOCTYPE p [<!ENTITY a 'aaaaaaaaaa'><!ENTITY b '&a;&a;&a;&a;&a;&a;&a;&a;'>"
         "<!ENTITY c '&b;&b;&b;&b;&b;&b;&b;&b;'>]><string>&c;&c;&c;&c;</string>"},
    }),
    [](const auto& test) { return test.param.name; });

// --- Encodings -----------------------------------------------------------------------------------

// The UTF-8 text in another encoding, without a mark of its byte order.
std::string encoded(std::string text, const char* encoding) {
  const iconv_t converter = iconv_open(encoding, "UTF-8");
  EXPECT_NE(converter, reinterpret_cast<iconv_t>(-1)) << encoding;
  std::string bytes(text.size() * 4, '\0');
  char* from = text.data();
  char* to = bytes.data();
  std::size_t fromSize = text.size();
  std::size_t toSize = bytes.size();
  EXPECT_EQ(iconv(converter, &from, &fromSize, &to, &toSize), 0U) << encoding;
  iconv_close(converter);
  bytes.resize(bytes.size() - toSize);
  return bytes;
}

struct Encoding {
  std::string name;      // as the document declares it; "" for no declaration
  const char* encoding;  // as iconv calls it
  std::string mark;      // bytes before the document
  std::string text;      // characters that the encoding holds
};
void PrintTo(const Encoding& row, std::ostream* stream) {
  *stream << row.name << " in " << row.encoding;
}

class Encodings : public ::testing::TestWithParam<Encoding> {};

TEST_P(Encodings, TextsKeepTheirCharacters) {
  proves("LIST-6");
  const Encoding& row = GetParam();
  const std::string declaration =
      row.name.empty() ? "" : "<?xml version=\"1.0\" encoding=\"" + row.name + "\"?>\n";
  const std::string document = declaration + "<plist><dict><key>" + row.text + "</key><string>" +
                               row.text + "</string></dict></plist>\n";

  const std::optional<Value> value = readXml(row.mark + encoded(document, row.encoding));

  EXPECT_EQ(value, Value(Dictionary{{row.text, row.text}}));
}

INSTANTIATE_TEST_SUITE_P(All, Encodings,
                         ::testing::ValuesIn(std::vector<Encoding>{
                             {"UTF-8", "UTF-8", "", "\u00E9\u65E5\U0001F600"},
                             {"utf-8", "UTF-8", "\xEF\xBB\xBF", "\u00E9\u65E5\U0001F600"},
                             {"UTF-16", "UTF-16LE", "\xFF\xFE", "\u00E9\u65E5\U0001F600"},
                             {"UTF-16", "UTF-16BE", "\xFE\xFF", "\u00E9\u65E5\U0001F600"},
                             {"", "UTF-16LE", "\xFF\xFE", "\u00E9\u65E5\U0001F600"},
                             {"", "UTF-16BE", "\xFE\xFF", "\u00E9\u65E5\U0001F600"},
                             {"UTF-16LE", "UTF-16LE", "", "\u00E9\u65E5\U0001F600"},
                             {"UTF-16BE", "UTF-16BE", "", "\u00E9\u65E5\U0001F600"},
                             {"US-ASCII", "US-ASCII", "", "abc"},
                             {"ISO-8859-1", "ISO-8859-1", "", "\u00E9\u00DF"},
                             {"ISO-8859-15", "ISO-8859-15", "", "\u20AC\u00E9"},
                             {"windows-1252", "WINDOWS-1252", "", "\u20AC\u2019"},
                             {"Shift_JIS", "SHIFT_JIS", "", "\u65E5\u672C\u30BD"},
                             {"EUC-JP", "EUC-JP", "", "\u65E5\u672C\u30BD"},
                             {"GB18030", "GB18030", "", "\u4E2D\U0001F600"},
                             {"KOI8-R", "KOI8-R", "", "\u0436"},
                         }));

TEST(XmlPropertyListReaderTest, ZeroCharacterBehindAnUtf16ListMakesItUnreadable) {
  proves("LIST-6");
  const std::string list = "\xFF\xFE" + encoded("<plist><true/></plist>", "UTF-16LE");

  EXPECT_EQ(readXml(list), Value(true));
  EXPECT_EQ(readXml(list + std::string(2, '\0')), std::nullopt);
}

TEST(XmlPropertyListReaderTest, CharactersThatAnEncodingLacksMakeTheListUnreadable) {
  proves("LIST-6");
  ::testing::internal::CaptureStderr();

  EXPECT_EQ(readXml("<?xml version='1.0' encoding='Shift_JIS'?><string>a\xFF\xFF</string>"),
            std::nullopt);

  EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
}

// --- Bounds --------------------------------------------------------------------------------------

std::string repeated(std::string_view text, std::size_t times) {
  std::string whole;
  whole.reserve(text.size() * times);
  for (; times > 0; --times) whole += text;
  return whole;
}

std::string nested(const char* open, const char* close, std::size_t depth) {
  return xmlList(repeated(open, depth) + "<true/>" + repeated(close, depth));
}

TEST(XmlPropertyListReaderTest, ContainersNestUpToTheMaximumDepth) {
  proves("LIST-15");
  const std::optional<Value> deepest = readXml(nested("<array>", "</array>", 128));

  ASSERT_TRUE(deepest);
  int depth = 0;
  for (const Value* value = &*deepest; value->as<Array>(); value = &value->as<Array>()->front())
    ++depth;
  EXPECT_EQ(depth, 128);
  EXPECT_EQ(readXml(nested("<array>", "</array>", 129)), std::nullopt);
  EXPECT_TRUE(readXml(nested("<dict><key/>", "</dict>", 128)));
  EXPECT_EQ(readXml(nested("<dict><key/>", "</dict>", 129)), std::nullopt);
}

TEST(XmlPropertyListReaderTest, DeepNestingThatNeverEndsIsUnreadable) {
  proves("LIST-15");
  EXPECT_EQ(readXml("<plist>" + repeated("<array>", 1'000'000)), std::nullopt);
}

TEST(XmlPropertyListReaderTest, DepthCountsOpenContainersOnly) {
  const std::optional<Value> value =
      readXml(xmlList("<array>" + repeated("<array/>", 200) + "</array>"));

  ASSERT_TRUE(value && value->as<Array>());
  EXPECT_EQ(value->as<Array>()->size(), 200U);
}

TEST(XmlPropertyListReaderTest, AMillionObjectsAreReadAndNotOneMore) {
  proves("LIST-15");
  const std::optional<Value> most =
      readXml(xmlList("<array>" + repeated("<true/>", 999'999) + "</array>"));

  ASSERT_TRUE(most && most->as<Array>());
  EXPECT_EQ(most->as<Array>()->size(), 999'999U);
  EXPECT_EQ(readXml(xmlList("<array>" + repeated("<true/>", 1'000'000) + "</array>")),
            std::nullopt);
}

TEST(XmlPropertyListReaderTest, KeysCountAsObjects) {
  const std::string entries = repeated("<key/><true/>", 500'000);

  EXPECT_EQ(readXml(xmlList("<dict>" + entries + "</dict>")), std::nullopt);
  EXPECT_EQ(readXml("<dict>" + entries.substr(13) + "</dict>"), Value(Dictionary{{"", true}}));
}

std::string attributes(std::size_t count) {
  std::string text;
  for (std::size_t number = 0; number < count; ++number)
    text += " a" + std::to_string(number) + "=''";
  return text;
}

TEST(XmlPropertyListReaderTest, ElementsHaveAtMostSixtyFourAttributes) {
  proves("LIST-10");
  EXPECT_EQ(readXml("<true" + attributes(64) + "/>"), Value(true));

  EXPECT_EQ(readXml("<true" + attributes(65) + "/>"), std::nullopt);
}

// Far too many would take hours to compare with one another.
TEST(XmlPropertyListReaderTest, LongMarkupIsUnreadableInEveryEncoding) {
  const std::string attribute = "<true" + attributes(1'000'000) + "/>";

  EXPECT_EQ(readXml(attribute), std::nullopt);
  EXPECT_EQ(readXml("\xFF\xFE" + encoded(attribute, "UTF-16LE")), std::nullopt);
  EXPECT_EQ(readXml(encoded(attribute, "UTF-16BE")), std::nullopt);
  for (const char* const encoding : {"ISO-8859-1", "Shift_JIS", "UTF-7", "ISO-2022-JP"})
    EXPECT_EQ(readXml(std::string("<?xml version='1.0' encoding='") + encoding + "'?>" +
                      encoded(attribute, encoding)),
              std::nullopt)
        << encoding;
}

TEST(XmlPropertyListReaderTest, LongChoiceIsUnreadable) {
  std::string choices = "a";
  for (int number = 0; number < 1'000'000; ++number) choices += "|a" + std::to_string(number);

  EXPECT_EQ(readXml("<!DOCTYPE plist [<!ATTLIST plist v (" + choices + ") 'a'>]><plist/>"),
            std::nullopt);
}

// Behind an error nobody knows any more what is a tag.
TEST(XmlPropertyListReaderTest, NothingIsReadBehindTheFirstError) {
  EXPECT_EQ(readXml("<string>&#1;<a ' <b" + attributes(1'000'000) + "/></string>"), std::nullopt);
}

TEST(XmlPropertyListReaderTest, NothingStaysInMemory) {
  const std::string list = xmlList("<string>text</string>");
  const std::string declaring = "<!DOCTYPE plist [<!ENTITY who 'one'>]>" + list;
  const std::string choosing = "<!DOCTYPE plist [<!ATTLIST plist v (a|b) 'a'>]>" + list;
  const std::string damaged = list.substr(0, list.size() / 2);

  EXPECT_LT(test::bytesKeptBy([&] {
              for (const std::string& bytes : {list, declaring, choosing, damaged})
                (void)readXml(bytes);  // the memory counts
            }),
            1000);
}

TEST(XmlPropertyListReaderTest, TextsMayBeLong) {
  const std::string text(12'000'000, 'a');

  EXPECT_EQ(readXml(xmlList("<string>" + text + "</string>")), Value(text));
}

}  // namespace
}  // namespace installer::PropertyList
