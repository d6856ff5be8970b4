#include "base/LetterCase.h"

#include <utf8proc.h>

#include <array>
#include <cstddef>
#include <cstdlib>
#include <memory>
#include <new>
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

struct Freed {
  void operator()(utf8proc_uint8_t* text) const { std::free(text); }
};

// Of characters only.
std::string mapped(std::string_view characters, utf8proc_option_t options) {
  utf8proc_uint8_t* made = nullptr;
  const utf8proc_ssize_t size =
      utf8proc_map(reinterpret_cast<const utf8proc_uint8_t*>(characters.data()),
                   static_cast<utf8proc_ssize_t>(characters.size()), &made, options);
  const std::unique_ptr<utf8proc_uint8_t, Freed> owned(made);
  if (size == UTF8PROC_ERROR_NOMEM) throw std::bad_alloc();
  if (size < 0) return std::string(characters);
  return {reinterpret_cast<const char*>(made), static_cast<std::size_t>(size)};
}

// Bytes that begin no character stay where they are.
std::string mappedBetweenBytes(std::string_view text, utf8proc_option_t options) {
  std::string result;
  std::string_view rest = text;
  const char* begin = rest.data();
  while (!rest.empty()) {
    const Character character = takeCharacter(rest);
    if (character.point) continue;
    const char* const end = character.bytes.data();
    result += mapped({begin, static_cast<std::size_t>(end - begin)}, options);
    result += character.bytes;
    begin = rest.data();
  }
  return result + mapped({begin, static_cast<std::size_t>(rest.data() - begin)}, options);
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

std::string withoutCaseAndForm(std::string_view text) {
  return composed(folded(composed(text)));  // folding takes letters apart
}

std::string composed(std::string_view text) {
  return mappedBetweenBytes(text,
                            static_cast<utf8proc_option_t>(UTF8PROC_STABLE | UTF8PROC_COMPOSE));
}

}  // namespace installer::letterCase
