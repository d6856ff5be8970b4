#include "base/Characters.h"

#include <array>
#include <cstdint>
#include <cstring>

namespace installer {

namespace {

constexpr char32_t kFirstHighHalf = 0xD800;
constexpr char32_t kFirstLowHalf = 0xDC00;
constexpr char32_t kBehindLowHalves = 0xE000;
constexpr char32_t kFirstPair = 0x10000;
constexpr char32_t kLastCharacter = 0x10FFFF;
constexpr char32_t kReplacement = 0xFFFD;

// The smallest characters that need sequences of two, three and four bytes.
constexpr std::array<char32_t, 3> kSmallest = {0x80, 0x800, kFirstPair};

std::size_t lengthAnnouncedBy(unsigned char lead) {
  if (lead < 0xC2) return 1;
  if (lead < 0xE0) return 2;
  if (lead < 0xF0) return 3;
  return lead < 0xF8 ? 4 : 1;
}

// What two to four bytes spell, halves of pairs among it; nullopt when they are no sequence, or a
// longer one than needed.
std::optional<char32_t> spelledBy(std::string_view sequence) {
  char32_t character = static_cast<unsigned char>(sequence[0]) & (0x7Fu >> sequence.size());
  for (const char next : sequence.substr(1)) {
    const auto byte = static_cast<unsigned char>(next);
    if ((byte & 0xC0u) != 0x80u) return std::nullopt;
    character = character << 6 | (byte & 0x3Fu);
  }
  if (character < kSmallest[sequence.size() - 2] || character > kLastCharacter) return std::nullopt;
  return character;
}

// nullopt at a byte that begins nothing.
std::optional<DecodedCharacter> sequenceAt(std::string_view text, std::size_t at) {
  const auto lead = static_cast<unsigned char>(text[at]);
  if (lead < kSmallest[0]) return DecodedCharacter{lead, 1};
  const std::size_t length = lengthAnnouncedBy(lead);
  if (length == 1 || text.size() - at < length) return std::nullopt;
  const std::optional<char32_t> character = spelledBy(text.substr(at, length));
  if (!character) return std::nullopt;
  return DecodedCharacter{*character, length};
}

bool isHighHalf(char32_t unit) {
  return unit >= kFirstHighHalf && unit < kFirstLowHalf;
}
bool isLowHalf(char32_t unit) {
  return unit >= kFirstLowHalf && unit < kBehindLowHalves;
}

bool isHalf(char32_t character) {
  return isHighHalf(character) || isLowHalf(character);
}

bool isPlainAscii(char byte) {
  return byte >= ' ' && byte <= '~';
}

char tail(char32_t character, int shift) {
  return static_cast<char>(0x80u | (character >> shift & 0x3Fu));
}

}  // namespace

// Eight bytes at a time.
bool isAscii(std::string_view text) {
  constexpr std::uint64_t kHighBits = 0x8080808080808080U;
  std::uint64_t seen = 0;
  for (; text.size() >= sizeof seen; text.remove_prefix(sizeof seen)) {
    std::uint64_t block = 0;
    std::memcpy(&block, text.data(), sizeof block);
    seen |= block;
  }
  for (const char character : text) seen |= static_cast<unsigned char>(character);
  return (seen & kHighBits) == 0;
}

DecodedCharacter decodeCharacter(std::string_view text, std::size_t at) {
  return sequenceAt(text, at).value_or(DecodedCharacter{static_cast<unsigned char>(text[at]), 1});
}

std::optional<DecodedCharacter> decodeUtf8(std::string_view text, std::size_t at) {
  const std::optional<DecodedCharacter> decoded = sequenceAt(text, at);
  return decoded && isHalf(decoded->character) ? std::nullopt : decoded;
}

void appendCharacter(char32_t character, std::string& to) {
  if (character < 0x80) {
    to += static_cast<char>(character);
  } else if (character < 0x800) {
    to += static_cast<char>(0xC0u | character >> 6);
    to += tail(character, 0);
  } else if (character < kFirstPair) {
    to += static_cast<char>(0xE0u | character >> 12);
    to += tail(character, 6);
    to += tail(character, 0);
  } else {
    to += static_cast<char>(0xF0u | character >> 18);
    to += tail(character, 12);
    to += tail(character, 6);
    to += tail(character, 0);
  }
}

std::u16string toUnits(std::string_view text) {
  std::u16string units;
  for (std::size_t at = 0; at < text.size();) {
    const auto [character, length] = decodeCharacter(text, at);
    appendUnits(character, units);
    at += length;
  }
  return units;
}

static char32_t unitAt(std::u16string_view units, std::size_t at) {
  return static_cast<char32_t>(units[at]);
}

std::string fromUnits(std::u16string_view units) {
  std::string text;
  for (std::size_t at = 0; at < units.size(); ++at) {
    char32_t character = unitAt(units, at);
    if (isHighHalf(character) && at + 1 < units.size() && isLowHalf(unitAt(units, at + 1))) {
      ++at;
      character =
          kFirstPair + ((character - kFirstHighHalf) << 10) + (unitAt(units, at) - kFirstLowHalf);
    }
    appendCharacter(character, text);
  }
  return text;
}

void appendUnits(char32_t character, std::u16string& to) {
  if (character < kFirstPair) {
    to += static_cast<char16_t>(character);
    return;
  }
  const char32_t rest = character - kFirstPair;
  to += static_cast<char16_t>(kFirstHighHalf + (rest >> 10));
  to += static_cast<char16_t>(kFirstLowHalf + (rest & 0x3FFu));
}

bool isXmlCharacter(char32_t character) {
  if (character < 0x20) return character == '\t' || character == '\n' || character == '\r';
  return !isHalf(character) && character != 0xFFFE && character != 0xFFFF &&
         character <= kLastCharacter;
}

std::string asXmlCharacters(std::string_view text) {
  std::string result;
  result.reserve(text.size());
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t begin = at;
    while (at < text.size() && isPlainAscii(text[at])) ++at;
    result += text.substr(begin, at - begin);
    if (at == text.size()) break;
    const auto [character, length] = decodeCharacter(text, at);
    appendCharacter(isXmlCharacter(character) ? character : kReplacement, result);
    at += length;
  }
  return result;
}

}  // namespace installer
