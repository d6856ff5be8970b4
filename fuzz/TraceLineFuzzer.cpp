// Any message becomes one line of text that no reader takes for several, and comes back from it.

#include "Fuzzed.h"
#include "base/Characters.h"
#include "base/TraceLine.h"

namespace installer::fuzz {

namespace {

constexpr std::string_view kBefore = "Mar  9 14:05:07 host HotfixInstaller[42] <Info>: ";

std::string escaped(std::string_view message) {
  LineText text;
  appendEscaped(message, text);
  return std::string(viewOf(text));
}

std::string lineOf(std::string_view message) {
  TraceLine line{.host = "host", .process = 42, .message = message};
  line.time.tm_mon = 2;
  line.time.tm_mday = 9;
  line.time.tm_hour = 14;
  line.time.tm_min = 5;
  line.time.tm_sec = 7;
  LineText text;
  appendFormatted(line, text);
  return std::string(viewOf(text));
}

bool isControl(char32_t character) {
  return character < 0x20 || (character >= 0x7F && character < 0xA0);
}

void requireText(std::string_view line) {
  for (std::size_t at = 0; at < line.size();) {
    const std::optional<DecodedCharacter> decoded = decodeUtf8(line, at);
    require(decoded.has_value(), "a line is UTF-8");
    require(!isControl(decoded->character), "a line has no control characters");
    at += decoded->length;
  }
}

// What an escape at the line's beginning stands for, as bytes, and how long it is.
std::pair<std::string, std::size_t> unescaped(std::string_view line) {
  const std::string_view kLetters = "nrt";
  const std::size_t letter = line.size() > 1 ? kLetters.find(line[1]) : std::string_view::npos;
  if (letter != std::string_view::npos) return {std::string(1, "\n\r\t"[letter]), 2};
  const unsigned long number = std::stoul(std::string(line.substr(2, 2)), nullptr, 16);
  return {std::string(1, static_cast<char>(number)), 4};
}

// Controls beyond ASCII are characters of two bytes and are told by their number alone, as a byte
// that is no UTF-8 is.
std::string withoutFirstByteOfControls(std::string_view message) {
  std::string text;
  for (std::size_t at = 0; at < message.size();) {
    const auto decoded = decodeUtf8(message, at).value_or(DecodedCharacter{0, 1});
    const bool isLong = decoded.length == 2 && isControl(decoded.character);
    text += message.substr(isLong ? at + 1 : at, isLong ? 1 : decoded.length);
    at += decoded.length;
  }
  return text;
}

// Backslashes are not escaped themselves: only a message without one can be told from its line.
void readBack(std::string_view message, std::string_view line) {
  std::string text;
  while (!line.empty()) {
    const auto [bytes, length] = line.front() == '\\'
                                     ? unescaped(line)
                                     : std::pair(std::string(line.substr(0, 1)), std::size_t{1});
    text += bytes;
    line.remove_prefix(length);
  }
  require(text == withoutFirstByteOfControls(message), "a message comes back from its line");
}

}  // namespace

void tryInput(std::string_view input) {
  const std::string line = escaped(input);
  requireText(line);
  require(escaped(line) == line, "an escaped text has nothing left to escape");
  require(lineOf(line) == std::string(kBefore) + line + "\n", "a line is what it is made of");
  if (input.ends_with('\n')) input.remove_suffix(1);
  if (input.find('\\') == std::string_view::npos) readBack(input, line);
}

}  // namespace installer::fuzz
