#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

// Texts as characters and 16-bit units. UTF-8 is read in its generalised form: the halves of
// surrogate pairs may stand alone, as three bytes each. A byte that begins no character is the
// Latin-1 character of the same number.
namespace installer {

struct DecodedCharacter {
  char32_t character = 0;
  std::size_t length = 0;  // bytes that it takes in the text, 1 to 4
};

bool isAscii(std::string_view text);

// The character at byte `at`, which must be inside the text.
DecodedCharacter decodeCharacter(std::string_view text, std::size_t at);

// The same by the letter of UTF-8; nullopt where it has no character: at a byte that begins none,
// and at half of a surrogate pair.
[[nodiscard]] std::optional<DecodedCharacter> decodeUtf8(std::string_view text, std::size_t at);

// `character` is at most U+10FFFF and may be half of a surrogate pair.
void appendCharacter(char32_t character, std::string& to);

// One unit, or two for a character beyond 16 bits.
void appendUnits(char32_t character, std::u16string& to);

std::u16string toUnits(std::string_view text);

// Halves that stand side by side become one character, lone ones stay as they are.
std::string fromUnits(std::u16string_view units);

// Whether an XML document may hold the character, be it as a reference.
bool isXmlCharacter(char32_t character);

// The text as XML can hold it: bytes that are no UTF-8 become their Latin-1 characters, and what no
// document may hold (control characters, lone halves) becomes U+FFFD.
std::string asXmlCharacters(std::string_view text);

}  // namespace installer
