#include "base/LetterCase.h"

#include <utf8proc.h>

#include <array>
#include <cstddef>
#include <optional>

#include "base/Characters.h"

namespace installer::letterCase {

namespace {

constexpr std::size_t kLongestFolding = 3;  // characters

struct Character {
  std::string_view bytes;
  std::optional<char32_t> point;  // absent for a byte that begins no character
};

// Takes the first character, or a byte that begins none, off the text, which must not be empty.
Character takeCharacter(std::string_view& text) {
  Character first{text.substr(0, 1), std::nullopt};
  if (const std::optional<DecodedCharacter> decoded = decodeUtf8(text, 0))
    first = {text.substr(0, decoded->length), decoded->character};
  text.remove_prefix(first.bytes.size());
  return first;
}

char32_t lower(char32_t point) {
  return static_cast<char32_t>(utf8proc_tolower(static_cast<utf8proc_int32_t>(point)));
}

void appendFolded(const Character& character, std::string& to) {
  if (!character.point) {
    to += character.bytes;
    return;
  }
  const auto point = static_cast<utf8proc_int32_t>(*character.point);
  std::array<utf8proc_int32_t, kLongestFolding> points;
  const utf8proc_ssize_t count =
      utf8proc_decompose_char(point, points.data(), points.size(), UTF8PROC_CASEFOLD, nullptr);
  for (utf8proc_ssize_t i = 0; i < count; ++i)
    appendCharacter(static_cast<char32_t>(points[static_cast<std::size_t>(i)]), to);
}

std::string folded(std::string_view text) {
  std::string result;
  while (!text.empty()) appendFolded(takeCharacter(text), result);
  return result;
}

}  // namespace

std::string lowered(std::string_view text) {
  std::string result;
  while (!text.empty()) {
    const Character character = takeCharacter(text);
    if (!character.point)
      result += character.bytes;
    else
      appendCharacter(lower(*character.point), result);
  }
  return result;
}

bool equalIgnoringCase(std::string_view left, std::string_view right) {
  return folded(left) == folded(right);
}

bool beginsIgnoringCase(std::string_view text, std::string_view prefix) {
  const std::string wanted = folded(prefix);
  std::string beginning;
  while (beginning.size() < wanted.size() && !text.empty())
    appendFolded(takeCharacter(text), beginning);
  return beginning == wanted;
}

}  // namespace installer::letterCase
