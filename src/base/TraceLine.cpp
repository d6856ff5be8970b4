#include "base/TraceLine.h"

#include <fmt/format.h>

#include <array>
#include <optional>

#include "base/Characters.h"

namespace installer {
namespace {

constexpr std::array kMonths = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};

// In the order of the levels' numbers, the first being LogLevel::error.
constexpr std::array kLevels = {"Error", "Warning", "Notice", "Info"};

std::string escapedCode(char32_t number) {
  switch (number) {
    case '\n':
      return "\\n";
    case '\r':
      return "\\r";
    case '\t':
      return "\\t";
    default:
      return fmt::format("\\x{:02x}", static_cast<unsigned>(number));
  }
}

bool isControl(char32_t character) {
  return character < 0x20 || (character >= 0x7F && character < 0xA0);
}

const char* nameOf(LogLevel level) {
  return kLevels.at(static_cast<std::size_t>(level) - static_cast<std::size_t>(LogLevel::error));
}

}  // namespace

std::string escapedMessage(std::string_view message) {
  if (message.ends_with('\n')) message.remove_suffix(1);
  std::string line;
  for (std::size_t at = 0; at < message.size();) {
    const std::optional<DecodedCharacter> decoded = decodeUtf8(message, at);
    const auto [character, length] =
        decoded.value_or(DecodedCharacter{static_cast<unsigned char>(message[at]), 1});
    const bool shown = decoded && !isControl(character);
    line += shown ? std::string(message.substr(at, length)) : escapedCode(character);
    at += length;
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
