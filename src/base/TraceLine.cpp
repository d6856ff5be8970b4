#include "base/TraceLine.h"

#include <fmt/format.h>

#include <array>

namespace installer {
namespace {

constexpr std::array kMonths = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};

// In the order of the levels' numbers, the first being LogLevel::error.
constexpr std::array kLevels = {"Error", "Warning", "Notice", "Info"};

unsigned byteAt(std::string_view text, std::size_t place) {
  return static_cast<unsigned char>(text[place]);
}

bool isContinuation(unsigned byte) {
  return (byte & 0xC0U) == 0x80U;
}

// How many bytes a character with this first byte has; 0 for a byte that begins none.
std::size_t lengthOf(unsigned firstByte) {
  if (firstByte < 0x80) return 1;
  if (firstByte < 0xC2) return 0;
  if (firstByte < 0xE0) return 2;
  if (firstByte < 0xF0) return 3;
  return firstByte < 0xF5 ? 4 : 0;
}

// Longer forms than needed, halves of surrogate pairs and numbers beyond Unicode show in the
// second byte of three or four.
bool isAllowedPair(unsigned first, unsigned second) {
  switch (first) {
    case 0xE0:
      return second >= 0xA0;
    case 0xED:
      return second < 0xA0;
    case 0xF0:
      return second >= 0x90;
    case 0xF4:
      return second < 0x90;
    default:
      return true;
  }
}

// The length of the UTF-8 character at the text's beginning; 0 when there is none.
std::size_t characterLength(std::string_view text) {
  const std::size_t length = lengthOf(byteAt(text, 0));
  if (length > text.size()) return 0;
  for (std::size_t place = 1; place < length; ++place)
    if (!isContinuation(byteAt(text, place))) return 0;
  return length < 3 || isAllowedPair(byteAt(text, 0), byteAt(text, 1)) ? length : 0;
}

std::string escapedCode(unsigned number) {
  switch (number) {
    case '\n':
      return "\\n";
    case '\r':
      return "\\r";
    case '\t':
      return "\\t";
    default:
      return fmt::format("\\x{:02x}", number);
  }
}

std::string escapedCharacter(std::string_view character) {
  const unsigned first = byteAt(character, 0);
  if (character.size() == 1 && (first < 0x20 || first == 0x7F)) return escapedCode(first);
  const bool isC1 = first == 0xC2 && byteAt(character, 1) < 0xA0;
  return isC1 ? escapedCode(byteAt(character, 1)) : std::string(character);
}

const char* nameOf(LogLevel level) {
  return kLevels.at(static_cast<std::size_t>(level) - static_cast<std::size_t>(LogLevel::error));
}

}  // namespace

std::string escapedMessage(std::string_view message) {
  if (message.ends_with('\n')) message.remove_suffix(1);
  std::string line;
  while (!message.empty()) {
    const std::size_t length = characterLength(message);
    line +=
        length == 0 ? escapedCode(byteAt(message, 0)) : escapedCharacter(message.substr(0, length));
    message.remove_prefix(length == 0 ? 1 : length);
  }
  return line;
}

std::string formatted(const TraceLine& line) {
  return fmt::format("{} {:2} {:02}:{:02}:{:02} {} HotfixInstaller[{}] <{}>: {}\n",
                     kMonths.at(static_cast<std::size_t>(line.time.tm_mon)), line.time.tm_mday,
                     line.time.tm_hour, line.time.tm_min, line.time.tm_sec, line.host, line.process,
                     nameOf(line.level), line.message);
}

}  // namespace installer
