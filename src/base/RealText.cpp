#include "base/RealText.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <locale>
#include <sstream>

namespace installer {
namespace {

// What a number is written with: 12.5 has the digits "125" and the exponent -1.
struct Decimal {
  std::string digits;
  int exponent = 0;
};

bool isDigit(char c) {
  return c >= '0' && c <= '9';
}

// Takes the digits at the beginning of the text away; how many there were.
std::size_t takeDigits(std::string_view& text) {
  const auto end = std::ranges::find_if_not(text, isDigit);
  const auto count = static_cast<std::size_t>(end - text.begin());
  text.remove_prefix(count);
  return count;
}

bool take(std::string_view& text, std::string_view characters) {
  if (text.empty() || characters.find(text.front()) == characters.npos) return false;
  text.remove_prefix(1);
  return true;
}

// Digits with at most one point among them or around, and an exponent behind an "e". What strtod
// takes besides, blanks and hexadecimal digits, is none.
bool isDecimal(std::string_view text) {
  std::size_t digits = takeDigits(text);
  if (take(text, ".")) digits += takeDigits(text);
  if (digits == 0) return false;
  if (take(text, "eE")) {
    take(text, "+-");
    if (takeDigits(text) == 0) return false;
  }
  return text.empty();
}

bool isLetter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

// The word is in small letters.
bool isWord(std::string_view text, std::string_view word) {
  return std::ranges::equal(text, word,
                            [](char c, char small) { return isLetter(c) && (c | 0x20) == small; });
}

// It may have a word in brackets behind it.
bool isNan(std::string_view text) {
  if (!isWord(text.substr(0, 3), "nan")) return false;
  text.remove_prefix(3);
  if (text.empty()) return true;
  return text.size() >= 2 && text.front() == '(' && text.back() == ')' &&
         std::ranges::all_of(text.substr(1, text.size() - 2),
                             [](char c) { return isDigit(c) || isLetter(c) || c == '_'; });
}

// Whether the text says zero, not something too small.
bool isZero(std::string_view text) {
  const std::string_view mantissa = text.substr(0, text.find_first_of("eE"));
  return mantissa.find_first_of("123456789") == mantissa.npos;
}

// Of {fmt}'s text, "12.5" or "1.25e+20".
Decimal decimalOf(const std::string& text) {
  const std::size_t mantissa = std::min(text.find('e'), text.size());
  Decimal decimal;
  if (mantissa < text.size()) decimal.exponent = std::stoi(text.substr(mantissa + 1));
  const std::size_t point = std::min(text.find('.'), mantissa);
  decimal.digits = text.substr(0, point);
  if (point < mantissa) {
    decimal.digits += text.substr(point + 1, mantissa - point - 1);
    decimal.exponent -= static_cast<int>(mantissa - point - 1);
  }
  decimal.digits.erase(0,
                       std::min(decimal.digits.find_first_not_of('0'), decimal.digits.size() - 1));
  while (decimal.digits.size() > 1 && decimal.digits.back() == '0') {
    decimal.digits.pop_back();
    ++decimal.exponent;
  }
  if (decimal.digits == "0") decimal.exponent = 0;
  return decimal;
}

std::string scientific(const Decimal& decimal) {
  std::string mantissa = decimal.digits;
  if (mantissa.size() > 1) mantissa.insert(1, ".");
  const int exponent = decimal.exponent + static_cast<int>(decimal.digits.size()) - 1;
  return fmt::format("{}e{}{:02}", mantissa, exponent < 0 ? '-' : '+', std::abs(exponent));
}

// A whole number has all of its digits, also those that would not be needed to tell it from others.
std::string fixed(const Decimal& decimal, double number) {
  if (decimal.exponent >= 0) return fmt::format("{:.0f}", number);
  const auto behind = static_cast<std::size_t>(-decimal.exponent);
  std::string digits = decimal.digits;
  if (digits.size() <= behind) digits.insert(0, behind - digits.size() + 1, '0');
  return digits.insert(digits.size() - behind, ".");
}

std::optional<double> magnitudeFromText(std::string_view text) {
  if (isWord(text, "inf") || isWord(text, "infinity"))
    return std::numeric_limits<double>::infinity();
  if (isNan(text)) return std::numeric_limits<double>::quiet_NaN();
  if (!isDecimal(text)) return std::nullopt;
  std::istringstream stream{std::string(text)};
  stream.imbue(std::locale::classic());
  double number = 0;
  stream >> number;
  // Some libraries take what is held with fewer digits for a failure; the text itself is none.
  const bool isRead = !stream.fail() || std::fpclassify(number) == FP_SUBNORMAL;
  const bool isHeld = std::isfinite(number) && isRead && (number != 0 || isZero(text));
  if (!isHeld) return std::nullopt;
  return number;
}

}  // namespace

std::optional<double> realFromText(std::string_view text) {
  if (text.starts_with('-')) {
    const std::optional<double> magnitude = magnitudeFromText(text.substr(1));
    if (!magnitude) return std::nullopt;
    return -*magnitude;
  }
  return magnitudeFromText(text);
}

std::string textFromReal(double number) {
  if (std::isnan(number)) return "nan";
  if (std::isinf(number)) return number > 0 ? "+infinity" : "-infinity";
  if (std::signbit(number)) return "-" + textFromReal(-number);
  const Decimal decimal = decimalOf(fmt::format("{}", number));
  std::string shorter = scientific(decimal);
  std::string whole = fixed(decimal, number);
  return whole.size() <= shorter.size() ? whole : shorter;
}

}  // namespace installer
