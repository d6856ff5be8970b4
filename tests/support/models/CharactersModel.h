#pragma once

#include <cstddef>
#include <string>
#include <vector>

// Models what a text's 16-bit units are and how units become a text again: UTF-8 in which halves of
// pairs may stand alone; a byte that begins no character is a unit of the same number.
namespace installer::model {

using Units = std::vector<unsigned>;

inline std::string encoded(unsigned character) {
  const auto byte = [](unsigned number) { return static_cast<char>(number); };
  const auto sixBits = [&](unsigned divisor) { return byte(0x80 + character / divisor % 64); };
  if (character < 0x80) return {byte(character)};
  if (character < 0x800) return {byte(0xC0 + character / 64), sixBits(1)};
  if (character < 0x10000) return {byte(0xE0 + character / 4096), sixBits(64), sixBits(1)};
  return {byte(0xF0 + character / 262144), sixBits(4096), sixBits(64), sixBits(1)};
}

// The number that `length` bytes would spell if they were a sequence.
inline unsigned spelledBy(const std::string& bytes) {
  static const unsigned leads[] = {0, 0, 0xC0, 0xE0, 0xF0};
  unsigned number = (static_cast<unsigned char>(bytes[0]) - leads[bytes.size()]) & 0x1F;
  for (std::size_t place = 1; place < bytes.size(); ++place)
    number = number * 64 + static_cast<unsigned char>(bytes[place]) % 64;
  return number;
}

inline Units charactersOf(const std::string& text) {
  Units characters;
  std::size_t at = 0;
  while (at < text.size()) {
    unsigned character = static_cast<unsigned char>(text[at]);
    std::size_t taken = 1;
    for (std::size_t length = 2; length <= 4 && at + length <= text.size(); ++length) {
      const std::string bytes = text.substr(at, length);
      const unsigned number = spelledBy(bytes);
      // Only the one right form comes out again as it went in.
      if (number > 0x10FFFF || encoded(number) != bytes) continue;
      character = number;
      taken = length;
    }
    characters.push_back(character);
    at += taken;
  }
  return characters;
}

inline Units unitsOf(const std::string& text) {
  Units units;
  for (const unsigned character : charactersOf(text)) {
    if (character < 0x10000) {
      units.push_back(character);
    } else {
      units.push_back(0xD800 + (character - 0x10000) / 0x400);
      units.push_back(0xDC00 + (character - 0x10000) % 0x400);
    }
  }
  return units;
}

inline std::string textOf(Units units) {
  std::string text;
  units.push_back(0);  // so that there is always a next unit to look at
  for (std::size_t at = 0; at + 1 < units.size(); ++at) {
    const bool high = units[at] / 0x400 == 0xD800 / 0x400;
    const bool lowNext = units[at + 1] / 0x400 == 0xDC00 / 0x400;
    if (high && lowNext) {
      text += encoded(0x10000 + units[at] % 0x400 * 0x400 + units[at + 1] % 0x400);
      ++at;
    } else {
      text += encoded(units[at]);
    }
  }
  return text;
}

}  // namespace installer::model
