#include "ctl/Shown.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>

#include "base/Characters.h"
#include "base/TraceLine.h"

namespace installer::ctl {

namespace {

// Below it, text beside a term would be broken after each word.
constexpr std::size_t kNarrow = 50;
// How far a meaning stands in when it is below its term.
constexpr std::size_t kBelow = 4;

// Marks and embeddings that turn the direction, and the separators of lines and paragraphs.
bool turnsOrEndsLines(char32_t character) {
  return character == 0x061C || (character >= 0x200E && character <= 0x200F) ||
         (character >= 0x2028 && character <= 0x202E) ||
         (character >= 0x2066 && character <= 0x2069);
}

// Puts words into lines.
class Lines {
 public:
  Lines(const Layout& layout, std::string_view first)
      : _layout(layout), _text(first), _used(columnsOf(first)) {}

  // With as many blanks in front of it, where it is not the line's first.
  void addWord(std::string_view word, std::size_t blanks) {
    const std::size_t wanted = columnsOf(word) + blanks;
    if (_layout.width && _hasWord && _used + wanted > *_layout.width) breakLine();
    if (_hasWord) addBlanks(blanks);
    _text += word;
    _used += columnsOf(word);
    _hasWord = true;
  }
  void breakLine() {
    _text += '\n';
    _text.append(_layout.indent, ' ');
    _used = _layout.indent;
    _hasWord = false;
  }
  std::string ended() {
    while (_text.ends_with(' ')) _text.pop_back();
    return std::move(_text) + "\n";
  }

 private:
  void addBlanks(std::size_t number) {
    _text.append(number, ' ');
    _used += number;
  }

  const Layout _layout;
  std::string _text;
  std::size_t _used;
  bool _hasWord = false;
};

}  // namespace

std::string shown(std::string_view text) {
  LineText escaped;
  // The line feed is dropped only at the end of a log line.
  appendEscaped(text.ends_with('\n') ? std::string(text) + "\n" : text, escaped);
  const std::string_view line = viewOf(escaped);
  std::string result;
  for (std::size_t at = 0; at < line.size();) {
    const DecodedCharacter decoded = decodeCharacter(line, at);
    if (turnsOrEndsLines(decoded.character))
      fmt::format_to(std::back_inserter(result), "\\u{:04x}",
                     static_cast<unsigned>(decoded.character));
    else
      result += line.substr(at, decoded.length);
    at += decoded.length;
  }
  return result;
}

std::string shown(const std::optional<std::string>& text, std::string_view absent) {
  return text ? shown(*text) : std::string(absent);
}

std::size_t columnsOf(std::string_view text) {
  std::size_t columns = 0;
  for (std::size_t at = 0; at < text.size(); ++at) {
    const bool isMark = text[at] == '\x1b';
    if (isMark) at = std::min(text.find('m', at), text.size());
    const bool isBegin = !isMark && (static_cast<unsigned char>(text[at]) & 0xC0U) != 0x80U;
    if (isBegin) ++columns;
  }
  return columns;
}

std::string broken(std::string_view text, const Layout& layout, std::string_view first) {
  Lines lines(layout, first);
  std::size_t blanks = 0;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t end = std::min(text.find_first_of(" \n", at), text.size());
    if (end > at) {
      lines.addWord(text.substr(at, end - at), blanks);
      blanks = 0;
    }
    if (end < text.size() && text[end] == '\n')
      lines.breakLine();
    else
      ++blanks;
    at = end + 1;
  }
  return lines.ended();
}

std::string entry(std::string_view term, std::string_view meaning, const Layout& layout) {
  const bool isNarrow = layout.width && *layout.width < kNarrow;
  if (isNarrow || columnsOf(term) + 2 > layout.indent) {
    const std::string_view lead =
        term.substr(0, std::min(term.find_first_not_of(' '), term.size()));
    const Layout below{layout.width, kBelow};
    return broken(term.substr(lead.size()), below, lead) +
           broken(meaning, below, std::string(kBelow, ' '));
  }
  const std::string gap(layout.indent - columnsOf(term), ' ');
  return broken(meaning, layout, std::string(term) + gap);
}

}  // namespace installer::ctl
