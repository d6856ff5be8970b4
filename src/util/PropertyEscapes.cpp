#include "util/PropertyEscapes.h"

#include <array>
#include <cstddef>

#include "base/Characters.h"

namespace installer {

namespace {

using CharacterSet = std::array<bool, 256>;

// Those that stand for themselves: the printable ones without the given.
constexpr CharacterSet plainBut(std::string_view others) {
  CharacterSet plain{};
  for (std::size_t character = 0x20; character <= 0x7E; ++character) plain[character] = true;
  for (const char other : others) plain[static_cast<unsigned char>(other)] = false;
  return plain;
}

constexpr CharacterSet kPlainInKey = plainBut("#!=:\\ ");
constexpr CharacterSet kPlainInValue = plainBut("#!=:\\");

bool isAmong(const CharacterSet& characters, char character) {
  return characters[static_cast<unsigned char>(character)];
}

bool isPrintable(char character) {
  return character >= 0x20 && character <= 0x7E;
}

void appendUnicodeEscapes(char32_t character, std::string& to) {
  std::u16string units;
  appendUnits(character, units);
  for (const char16_t unit : units) {
    to += "\\u";
    appendHexDigits(unit, to);
  }
}

std::size_t endOfPlain(std::string_view text, std::size_t at, const CharacterSet& plain) {
  while (at < text.size() && isAmong(plain, text[at])) ++at;
  return at;
}

// What stands for the character that is not plain; answers where to go on.
std::size_t appendEscape(std::string_view text, std::size_t at, bool isKey, std::string& to) {
  if (isPrintable(text[at])) {
    // In a value a backslash before "u" stays single, so that an escape already in the text stays
    // one.
    if (isKey || text.substr(at, 2) != "\\u") to += '\\';
    to += text[at];
    return at + 1;
  }
  const auto [character, length] = decodeCharacter(text, at);
  appendUnicodeEscapes(character, to);
  return at + length;
}

void appendEscaped(std::string_view text, bool isKey, std::string& to) {
  const CharacterSet& plain = isKey ? kPlainInKey : kPlainInValue;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t end = endOfPlain(text, at, plain);
    to += text.substr(at, end - at);
    at = end < text.size() ? appendEscape(text, end, isKey, to) : end;
  }
}

}  // namespace

void appendEscapedKey(std::string_view key, std::string& to) {
  appendEscaped(key, true, to);
}

void appendEscapedValue(std::string_view value, std::string& to) {
  appendEscaped(value, false, to);
}

void appendHexDigits(char16_t unit, std::string& to) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::string digits = "0000";
  std::size_t rest = unit;
  for (auto digit = digits.rbegin(); digit != digits.rend(); ++digit) {
    *digit = kDigits[rest % 16];
    rest /= 16;
  }
  to += digits;
}

}  // namespace installer
