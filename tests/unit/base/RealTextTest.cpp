#include "base/RealText.h"

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <limits>
#include <locale>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace installer {
namespace {

using Limits = std::numeric_limits<double>;

TEST(RealTextTest, NumbersAreWrittenInTheShorterNotation) {
  const std::vector<std::pair<double, std::string>> written = {
      {0.0, "0"},         {-0.0, "-0"},          {1.0, "1"},
      {-1.5, "-1.5"},     {0.1, "0.1"},          {10000, "10000"},
      {100000, "1e+05"},  {123456, "123456"},    {0.001, "0.001"},
      {0.0001, "1e-04"},  {0.00001, "1e-05"},    {0.00012, "0.00012"},
      {1e22, "1e+22"},    {1e100, "1e+100"},     {12345678901234567890.0, "12345678901234567168"},
      {5e-324, "5e-324"}, {1.5e300, "1.5e+300"}, {Limits::max(), "1.7976931348623157e+308"}};
  for (const auto& [number, text] : written) EXPECT_EQ(textFromReal(number), text);
}

TEST(RealTextTest, WhatIsNoNumberHasTheListsWords) {
  EXPECT_EQ(textFromReal(Limits::quiet_NaN()), "nan");
  EXPECT_EQ(textFromReal(Limits::infinity()), "+infinity");
  EXPECT_EQ(textFromReal(-Limits::infinity()), "-infinity");
}

TEST(RealTextTest, DecimalNumbersAreRead) {
  const std::vector<std::pair<std::string, double>> read = {
      {"0", 0},        {"12", 12},         {"-12.5", -12.5},
      {".5", 0.5},     {"5.", 5},          {"1e5", 1e5},
      {"1E+5", 1e5},   {"1.5e-3", 0.0015}, {"007", 7},
      {"0e999999", 0}, {"5e-324", 5e-324}, {"2.2250738585072011e-308", 2.2250738585072011e-308}};
  for (const auto& [text, number] : read) EXPECT_EQ(realFromText(text), number) << text;
  EXPECT_TRUE(std::signbit(realFromText("-0").value()));
}

TEST(RealTextTest, SpecialWordsAreReadInAnyCase) {
  for (const char* text : {"inf", "INF", "infinity", "Infinity"})
    EXPECT_EQ(realFromText(text), Limits::infinity()) << text;
  EXPECT_EQ(realFromText("-inf"), -Limits::infinity());
  for (const char* text : {"nan", "NaN", "-nan", "nan(a_0)", "nan()"})
    EXPECT_TRUE(std::isnan(realFromText(text).value())) << text;
}

TEST(RealTextTest, AnythingElseIsNoNumber) {
  for (const char* text : {"",       "-",
                           "+1",     "--1",
                           " 1",     "1 ",
                           "1,5",    "1.5.5",
                           ".",      "e5",
                           "1e",     "1e+",
                           "0x10",   "0x1p3",
                           "1f",     "in",
                           "infi",   "nan(",
                           "nan(-)", "na",
                           "nano",   "in\xEF\xAC\x81nity",
                           "\t1"})
    EXPECT_EQ(realFromText(text), std::nullopt) << text;
  EXPECT_EQ(realFromText(std::string_view("1\0", 2)), std::nullopt);
}

TEST(RealTextTest, WhatADoubleCannotHoldIsNotRead) {
  for (const char* text : {"1e309", "-1e309", "1e-400", "-1e-400", "1e99999999999"})
    EXPECT_EQ(realFromText(text), std::nullopt) << text;
}

class CommaAndGroups : public std::numpunct<char> {
  char do_decimal_point() const override { return ','; }
  char do_thousands_sep() const override { return '.'; }
  std::string do_grouping() const override { return "\3"; }
};

TEST(RealTextTest, NoLocaleIsAsked) {
  const std::locale before =
      std::locale::global(std::locale(std::locale::classic(), new CommaAndGroups));
  EXPECT_EQ(realFromText("1.5"), 1.5);
  EXPECT_EQ(realFromText("1234.5"), 1234.5);
  EXPECT_EQ(realFromText("1,5"), std::nullopt);
  EXPECT_EQ(textFromReal(1234.5), "1234.5");
  std::locale::global(before);
}

// Where the standard library has the conversions, they are the judge.
#ifdef __cpp_lib_to_chars
std::string judged(double number) {
  std::array<char, 32> text{};
  return {text.data(), std::to_chars(text.data(), text.data() + text.size(), number).ptr};
}

std::optional<double> judged(std::string_view text) {
  double number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc{} || end != text.data() + text.size()) return std::nullopt;
  return number;
}

TEST(RealTextTest, RandomNumbersAreWrittenAsTheStandardLibraryDoes) {
  std::mt19937_64 generator(20130305);
  std::uniform_real_distribution<double> small(-1e7, 1e7);
  for (int count = 0; count < 5'000; ++count) {
    const double any = std::bit_cast<double>(generator());
    const double whole = std::ldexp(static_cast<double>(generator() >> 11), count % 40);
    for (const double number : {any, whole, small(generator), std::round(small(generator))}) {
      if (!std::isfinite(number)) continue;
      const std::string text = textFromReal(number);
      ASSERT_EQ(text, judged(number));
      ASSERT_EQ(realFromText(text), number) << text;
    }
  }
}

TEST(RealTextTest, RandomTextsAreReadAsTheStandardLibraryDoes) {
  std::mt19937_64 generator(20130305);
  const std::string alphabet = "0123456789012345..--++eExXinfatyNA()_ ";
  for (int count = 0; count < 200'000; ++count) {
    std::string text;
    for (std::size_t length = generator() % 8; length > 0; --length)
      text += alphabet[generator() % alphabet.size()];
    const std::optional<double> ours = realFromText(text);
    const std::optional<double> theirs = judged(text);
    ASSERT_EQ(ours.has_value(), theirs.has_value()) << text;
    if (ours && !std::isnan(*ours)) {
      ASSERT_EQ(*ours, *theirs) << text;
    }
  }
}
#endif

}  // namespace
}  // namespace installer
