#include "base/MarkupScan.h"

#include <array>
#include <utility>

namespace installer::xml {

namespace {

// How comments, sections and instructions begin and end: nothing in them is markup.
constexpr std::array<std::pair<std::string_view, std::string_view>, 3> kOpaque{
    {{"<!--", "-->"}, {"<![CDATA[", "]]>"}, {"<?", "?>"}}};

// Where `text` goes on behind what has been found at `at`: at its end when nothing has.
std::size_t behind(std::string_view text, std::size_t at, std::size_t size) {
  return at == std::string_view::npos ? text.size() : at + size;
}

// Where the comment, section or instruction that begins at `at` ends; `at` itself for anything
// else.
std::size_t endOfOpaque(std::string_view text, std::size_t at) {
  for (const auto& [opening, closing] : kOpaque)
    if (text.substr(at).starts_with(opening))
      return behind(text, text.find(closing, at + opening.size()), closing.size());
  return at;
}

struct Markup {
  std::size_t end = 0;   // place behind it
  std::size_t size = 0;  // bytes outside quotation marks
};

// The tag or declaration that begins at `at`. That of a document type ends where its own
// declarations begin.
Markup markupAt(std::string_view text, std::size_t at) {
  Markup markup{at, 0};
  while (markup.end < text.size()) {
    const std::size_t found = text.find_first_of(">[\"'", markup.end);
    const std::size_t next = behind(text, found, 1);
    markup.size += next - markup.end;
    markup.end = next;
    if (found == std::string_view::npos || text[found] == '>' || text[found] == '[') break;
    markup.end = behind(text, text.find(text[found], next), 1);
  }
  return markup;
}

}  // namespace

bool hasShortMarkup(std::string_view text) {
  std::size_t at = 0;
  while ((at = text.find('<', at)) != std::string_view::npos) {
    if (const std::size_t end = endOfOpaque(text, at); end != at) {
      at = end;
      continue;
    }
    const Markup markup = markupAt(text, at);
    if (markup.size > kMaximumMarkup) return false;
    at = markup.end;
  }
  return true;
}

}  // namespace installer::xml
