#include "base/LetterCase.h"

#include <utf8proc.h>

#include <array>
#include <cstddef>

namespace installer::letterCase {

namespace {

constexpr std::size_t kLongestFolding = 3;  // characters

struct Character {
  std::string_view bytes;
  utf8proc_int32_t point = -1;  // -1 for a byte that begins no character
};

// Takes the first character, or a byte that begins none, off the text, which must not be empty.
Character takeCharacter(std::string_view& text) {
  Character first;
  const utf8proc_ssize_t length =
      utf8proc_iterate(reinterpret_cast<const utf8proc_uint8_t*>(text.data()),
                       static_cast<utf8proc_ssize_t>(text.size()), &first.point);
  first.bytes = text.substr(0, length > 0 ? static_cast<std::size_t>(length) : 1);
  text.remove_prefix(first.bytes.size());
  return first;
}

void appendPoint(utf8proc_int32_t point, std::string& to) {
  utf8proc_uint8_t encoded[4];
  const utf8proc_ssize_t written = utf8proc_encode_char(point, encoded);
  to.append(reinterpret_cast<const char*>(encoded), static_cast<std::size_t>(written));
}

void appendFolded(const Character& character, std::string& to) {
  if (character.point < 0) {
    to += character.bytes;
    return;
  }
  std::array<utf8proc_int32_t, kLongestFolding> points;
  const utf8proc_ssize_t count = utf8proc_decompose_char(character.point, points.data(),
                                                         points.size(), UTF8PROC_CASEFOLD, nullptr);
  for (utf8proc_ssize_t i = 0; i < count; ++i) appendPoint(points[static_cast<std::size_t>(i)], to);
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
    if (character.point < 0)
      result += character.bytes;
    else
      appendPoint(utf8proc_tolower(character.point), result);
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
