#include "util/PropertyEscapes.h"

#include <cstddef>

#include "base/Characters.h"

namespace installer {

namespace {

bool isPrintable(char character) {
  return character >= 0x20 && character <= 0x7E;
}

bool takesBackslashAnywhere(char character) {
  return character == '#' || character == '!' || character == '=' || character == ':';
}

void appendUnicodeEscapes(char32_t character, std::string& to) {
  std::u16string units;
  appendUnits(character, units);
  for (const char16_t unit : units) {
    to += "\\u";
    appendHexDigits(unit, to);
  }
}

// `takesBackslash` is asked for printable characters by their place in the text.
template <class TakesBackslash>
void appendEscaped(std::string_view text, TakesBackslash takesBackslash, std::string& to) {
  for (std::size_t at = 0; at < text.size();) {
    if (isPrintable(text[at])) {
      if (takesBackslash(at)) to += '\\';
      to += text[at++];
      continue;
    }
    const auto [character, length] = decodeCharacter(text, at);
    appendUnicodeEscapes(character, to);
    at += length;
  }
}

}  // namespace

void appendEscapedKey(std::string_view key, std::string& to) {
  const auto takesBackslash = [key](std::size_t at) {
    return key[at] == ' ' || key[at] == '\\' || takesBackslashAnywhere(key[at]);
  };
  appendEscaped(key, takesBackslash, to);
}

void appendEscapedValue(std::string_view value, std::string& to) {
  // A backslash before "u" stays single, so that an escape already in the text stays one.
  const auto takesBackslash = [value](std::size_t at) {
    if (value[at] == '\\') return value.substr(at + 1, 1) != "u";
    return takesBackslashAnywhere(value[at]);
  };
  appendEscaped(value, takesBackslash, to);
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
