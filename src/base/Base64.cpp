#include "base/Base64.h"

#include <array>
#include <cstdint>

namespace installer {

namespace {

constexpr std::string_view kAlphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::size_t kBytesAGroup = 3;
constexpr std::size_t kDigitsAGroup = 4;
constexpr std::int8_t kNoDigit = -1;

constexpr std::array<std::int8_t, 256> digitValues() {
  std::array<std::int8_t, 256> values{};
  values.fill(kNoDigit);
  for (std::size_t value = 0; value < kAlphabet.size(); ++value)
    values[static_cast<unsigned char>(kAlphabet[value])] = static_cast<std::int8_t>(value);
  return values;
}

bool isBlank(char character) {
  return character == ' ' || character == '\t' || character == '\n' || character == '\r';
}

// Up to three bytes as four digits, the missing ones as padding.
void appendGroup(std::string_view bytes, std::string& text) {
  std::uint32_t bits = 0;
  for (std::size_t at = 0; at < kBytesAGroup; ++at)
    bits = (bits << 8) | (at < bytes.size() ? static_cast<unsigned char>(bytes[at]) : 0U);
  for (std::size_t digit = 0; digit < kDigitsAGroup; ++digit) {
    const std::uint32_t value = (bits >> (18 - 6 * digit)) & 0x3F;
    text += digit <= bytes.size() ? kAlphabet[value] : '=';
  }
}

// Gathers digits and hands out a byte for every eight bits.
class Decoder {
 public:
  bool take(char character) {
    if (character == '=') return takePadding();
    const std::int8_t value = kValues[static_cast<unsigned char>(character)];
    if (value == kNoDigit || _padding > 0) return false;
    ++_digits;
    _bits = (_bits << 6) | static_cast<std::uint32_t>(value);
    if (_digits % kDigitsAGroup != 1) appendByte();
    return true;
  }

  bool complete() const { return (_digits + _padding) % kDigitsAGroup == 0; }
  std::string takeBytes() { return std::move(_bytes); }

 private:
  static constexpr std::array<std::int8_t, 256> kValues = digitValues();

  // Padding stands for the third and the fourth digit of a group only.
  bool takePadding() {
    ++_padding;
    return _digits % kDigitsAGroup >= 2 && _digits % kDigitsAGroup + _padding <= kDigitsAGroup;
  }

  // After the second, third and fourth digit of a group 4, 2 and 0 bits are left over.
  void appendByte() {
    const std::size_t left = (kDigitsAGroup - _digits % kDigitsAGroup) % kDigitsAGroup * 2;
    _bytes += static_cast<char>((_bits >> left) & 0xFF);
  }

  std::string _bytes;
  std::uint32_t _bits = 0;
  std::size_t _digits = 0;
  std::size_t _padding = 0;
};

}  // namespace

std::string encodeBase64(std::string_view bytes) {
  std::string text;
  for (std::size_t at = 0; at < bytes.size(); at += kBytesAGroup)
    appendGroup(bytes.substr(at, kBytesAGroup), text);
  return text;
}

std::optional<std::string> decodeBase64(std::string_view text) {
  Decoder decoder;
  for (const char character : text)
    if (!isBlank(character) && !decoder.take(character)) return std::nullopt;
  if (!decoder.complete()) return std::nullopt;
  return decoder.takeBytes();
}

}  // namespace installer
