#include "base/XmlEscapes.h"

namespace installer::xml {

namespace {

// What is written for a character of a text; empty for most.
std::string_view escaped(char character) {
  switch (character) {
    case '&':
      return "&amp;";
    case '<':
      return "&lt;";
    case '>':
      return "&gt;";
    case '\r':
      return "&#13;";
    default:
      return {};
  }
}

// The same for an attribute's value.
std::string_view escapedInValue(char character) {
  switch (character) {
    case '"':
      return "&quot;";
    case '\t':
      return "&#9;";
    case '\n':
      return "&#10;";
    default:
      return escaped(character);
  }
}

template <class Escape>
void append(std::string_view text, Escape escape, std::string& to) {
  std::size_t begin = 0;  // of what is written as it is
  for (std::size_t at = 0; at < text.size(); ++at) {
    const std::string_view reference = escape(text[at]);
    if (reference.empty()) continue;
    to.append(text.substr(begin, at - begin)).append(reference);
    begin = at + 1;
  }
  to.append(text.substr(begin));
}

}  // namespace

void appendEscaped(std::string_view text, std::string& to) {
  append(text, escaped, to);
}

void appendEscapedValue(std::string_view value, std::string& to) {
  append(value, escapedInValue, to);
}

}  // namespace installer::xml
