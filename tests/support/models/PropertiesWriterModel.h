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

inline std::string escapedKey(const std::string& key) {
  std::string escaped;
  for (const unsigned unit : unitsOf(key)) {
    if (unit < 0x20 || unit > 0x7E) {
      escaped += "\\u" + fourDigits(unit);
      continue;
    }
    const std::string character(1, static_cast<char>(unit));
    if (character == " ")
      escaped += "\\ ";
    else if (character == "#")
      escaped += "\\#";
    else if (character == "!")
      escaped += "\\!";
    else if (character == "=")
      escaped += "\\=";
    else if (character == ":")
      escaped += "\\:";
    else if (character == "\\")
      escaped += "\\\\";
    else
      escaped += character;
  }
  return escaped;
}

inline std::string escapedValue(const std::string& value) {
  const Units units = unitsOf(value);
  std::string escaped;
  for (std::size_t i = 0; i < units.size(); ++i) {
    if (units[i] < 0x20 || units[i] > 0x7E) {
      escaped += "\\u" + fourDigits(units[i]);
      continue;
    }
    const std::string character(1, static_cast<char>(units[i]));
    const bool beforeU = i + 1 < units.size() && units[i + 1] == 'u';
    if (character == "#")
      escaped += "\\#";
    else if (character == "!")
      escaped += "\\!";
    else if (character == "=")
      escaped += "\\=";
    else if (character == ":")
      escaped += "\\:";
    else if (character == "\\" && beforeU)
      escaped += "\\";
    else if (character == "\\")
      escaped += "\\\\";
    else
      escaped += character;
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
