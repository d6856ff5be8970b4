#include "base/TraceLine.h"

#include <fmt/compile.h>
#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <iterator>
#include <optional>

#include "base/Characters.h"

namespace installer {
namespace {

constexpr std::array kMonths = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};

// In the order of the levels' numbers, the first being LogLevel::error.
constexpr std::array kLevels = {"Error", "Warning", "Notice", "Info"};

void append(std::string_view bytes, LineText& text) {
  text.append(bytes.data(), bytes.data() + bytes.size());
}

void appendCode(char32_t number, LineText& text) {
  switch (number) {
    case '\n':
      return append("\\n", text);
    case '\r':
      return append("\\r", text);
    case '\t':
      return append("\\t", text);
    default:
      fmt::format_to(std::back_inserter(text), "\\x{:02x}", static_cast<unsigned>(number));
  }
}

bool isControl(char32_t character) {
  return character < 0x20 || (character >= 0x7F && character < 0xA0);
}

// How many bytes from the first one on are letters, digits and signs of ASCII, most of all that is
// told.
std::size_t plainBytes(std::string_view text) {
  const auto* other = std::find_if(text.begin(), text.end(), [](char byte) {
    return byte < ' ' || byte > '~';  // bytes beyond ASCII are one or the other
  });
  return static_cast<std::size_t>(other - text.begin());
}

const char* nameOf(LogLevel level) {
  return kLevels.at(static_cast<std::size_t>(level) - static_cast<std::size_t>(LogLevel::error));
}

}  // namespace

void appendEscaped(std::string_view message, LineText& text) {
  if (message.ends_with('\n')) message.remove_suffix(1);
  for (std::size_t at = 0; at < message.size();) {
    const std::size_t plain = plainBytes(message.substr(at));
    append(message.substr(at, plain), text);
    at += plain;
    if (at == message.size()) break;
    const std::optional<DecodedCharacter> decoded = decodeUtf8(message, at);
    const auto [character, length] =
        decoded.value_or(DecodedCharacter{static_cast<unsigned char>(message[at]), 1});
    if (decoded && !isControl(character))
      append(message.substr(at, length), text);
    else
      appendCode(character, text);
    at += length;
  }
}

void appendFormatted(const TraceLine& line, LineText& text) {
  fmt::format_to(std::back_inserter(text),
                 FMT_COMPILE("{} {:2} {:02}:{:02}:{:02} {} HotfixInstaller[{}] <{}>: {}\n"),
                 kMonths.at(static_cast<std::size_t>(line.time.tm_mon)), line.time.tm_mday,
                 line.time.tm_hour, line.time.tm_min, line.time.tm_sec, line.host, line.process,
                 nameOf(line.level), line.message);
}

}  // namespace installer
