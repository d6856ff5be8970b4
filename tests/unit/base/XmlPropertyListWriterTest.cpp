#include "base/XmlPropertyListWriter.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "support/Proves.h"
#include "support/XmlList.h"

namespace installer::PropertyList {
namespace {

using test::xmlList;

struct WrittenElement {
  std::string name;
  Value value;
  std::string element;
};
void PrintTo(const WrittenElement& row, std::ostream* stream) {
  *stream << row.name;
}

class WrittenElements : public ::testing::TestWithParam<WrittenElement> {};

TEST_P(WrittenElements, ReadsLikeThis) {
  proves("LIST-16");
  EXPECT_EQ(writeXml(GetParam().value), xmlList(GetParam().element));
}

INSTANTIATE_TEST_SUITE_P(
    Kinds, WrittenElements,
    ::testing::ValuesIn(std::vector<WrittenElement>{
        {"Text", "a b", "<string>a b</string>"},
        {"EmptyText", "", "<string></string>"},
        {"EscapedText", "<&>\"'\r\n\t]]>", "<string>&lt;&amp;&gt;\"'&#13;\n\t]]&gt;</string>"},
        {"WideText", "\u00E9\U0001F600", "<string>\u00E9\U0001F600</string>"},
        {"True", true, "<true/>"},
        {"False", false, "<false/>"},
        {"Integer", 42, "<integer>42</integer>"},
        {"Lowest", std::numeric_limits<std::int64_t>::min(),
         "<integer>-9223372036854775808</integer>"},
        {"Highest", std::numeric_limits<std::uint64_t>::max(),
         "<integer>18446744073709551615</integer>"},
        {"Real", 0.1, "<real>0.1</real>"},
        {"WholeReal", 3.0, "<real>3</real>"},
        {"NegativeZero", -0.0, "<real>-0</real>"},
        {"SmallestReal", std::numeric_limits<double>::denorm_min(), "<real>5e-324</real>"},
        {"LargestReal", std::numeric_limits<double>::max(), "<real>1.7976931348623157e+308</real>"},
        {"LongestReal", -2.2250738585072014e-308, "<real>-2.2250738585072014e-308</real>"},
        {"Infinity", HUGE_VAL, "<real>+infinity</real>"},
        {"NegativeInfinity", -HUGE_VAL, "<real>-infinity</real>"},
        {"NotANumber", std::nan(""), "<real>nan</real>"},
        {"Data", Data{"fo"}, "<data>Zm8=</data>"},
        {"NoData", Data{}, "<data></data>"},
        {"Date", Date{86401}, "<date>2001-01-02T00:00:01Z</date>"},
        {"DateWithPartOfASecond", Date{86401.75}, "<date>2001-01-02T00:00:01Z</date>"},
        {"Reference", Uid{7}, "<dict>\n\t<key>CF$UID</key>\n\t<integer>7</integer>\n</dict>"},
        {"EmptyArray", Array{}, "<array/>"},
        {"EmptyDictionary", Dictionary{}, "<dict/>"},
        {"Array", Array{1, "a"}, "<array>\n\t<integer>1</integer>\n\t<string>a</string>\n</array>"},
        {"Dictionary", Dictionary{{"b<", 1}, {"a", 2}},
         "<dict>\n\t<key>b&lt;</key>\n\t<integer>1</integer>\n\t<key>a</key>\n"
         "\t<integer>2</integer>\n</dict>"},
        {"Nested", Array{Dictionary{{"k", Array{Array{}, Uid{1}}}}, true},
         "<array>\n\t<dict>\n\t\t<key>k</key>\n\t\t<array>\n\t\t\t<array/>\n\t\t\t<dict>\n"
         "\t\t\t\t<key>CF$UID</key>\n\t\t\t\t<integer>1</integer>\n\t\t\t</dict>\n\t\t</array>\n"
         "\t</dict>\n\t<true/>\n</array>"},
    }),
    [](const auto& test) { return test.param.name; });

TEST(XmlPropertyListWriterTest, DatesWithoutAFourDigitYearHaveNoForm) {
  const Date tooLate{1e300};

  EXPECT_EQ(writeXml(tooLate), std::nullopt);
  EXPECT_EQ(writeXml(Array{true, tooLate, true}), std::nullopt);
  EXPECT_EQ(writeXml(Dictionary{{"a", tooLate}, {"b", true}}), std::nullopt);
}

Value nested(int depth, Value innermost) {
  Value value = std::move(innermost);
  for (; depth > 0; --depth) value = Array{std::move(value)};
  return value;
}

TEST(XmlPropertyListWriterTest, ContainersNestUpToTheMaximumDepth) {
  proves("LIST-17");
  EXPECT_TRUE(writeXml(nested(128, true)));
  EXPECT_EQ(writeXml(nested(129, true)), std::nullopt);
  EXPECT_TRUE(writeXml(nested(127, Array{})));
  EXPECT_EQ(writeXml(nested(128, Array{})), std::nullopt);
  EXPECT_EQ(writeXml(nested(128, Dictionary{})), std::nullopt);
  EXPECT_EQ(writeXml(nested(128, Uid{})), std::nullopt);
}

}  // namespace
}  // namespace installer::PropertyList
