#pragma once

#include <cstddef>
#include <string>

#include "support/models/CharactersModel.h"
#include "support/models/PropertiesReaderModel.h"

// Models how keys and values are escaped and how entries become a properties file's text.
namespace installer::model {

inline std::string fourDigits(unsigned unit) {
  const std::string digits = "0123456789abcdef";
  std::string text = "0000";
  text[3] = digits[unit % 16];
  text[2] = digits[unit / 16 % 16];
  text[1] = digits[unit / 256 % 16];
  text[0] = digits[unit / 4096];
  return text;
}

// Whether the unit is written as its number, for a value and a key alike.
inline bool isNumbered(unsigned unit) {
  return unit < 0x20 || unit > 0x7E;
}

// The escape of a character that ends a key or begins a comment; any other as it is.
inline std::string escapedCharacter(char character) {
  switch (character) {
    case '#':
      return "\\#";
    case '!':
      return "\\!";
    case '=':
      return "\\=";
    case ':':
      return "\\:";
    case '\\':
      return "\\\\";
    default:
      return std::string(1, character);
  }
}

inline std::string escapedKey(const std::string& key) {
  std::string escaped;
  for (const unsigned unit : unitsOf(key)) {
    if (isNumbered(unit))
      escaped += "\\u" + fourDigits(unit);
    else if (unit == ' ')
      escaped += "\\ ";
    else
      escaped += escapedCharacter(static_cast<char>(unit));
  }
  return escaped;
}

inline std::string escapedValue(const std::string& value) {
  const Units units = unitsOf(value);
  std::string escaped;
  for (std::size_t i = 0; i < units.size(); ++i) {
    const bool beforeU = i + 1 < units.size() && units[i + 1] == 'u';
    if (isNumbered(units[i]))
      escaped += "\\u" + fourDigits(units[i]);
    else if (units[i] == '\\' && beforeU)
      escaped += "\\";
    else
      escaped += escapedCharacter(static_cast<char>(units[i]));
  }
  return escaped;
}

inline std::string writtenProperties(const Entries& entries) {
  std::string text;
  for (const auto& [key, value] : entries)
    if (escapedKey(key) != "") text += escapedKey(key) + "=" + escapedValue(value) + "\n";
  return text;
}

}  // namespace installer::model
