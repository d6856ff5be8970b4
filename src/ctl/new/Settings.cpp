#include "ctl/new/Settings.h"

#include "base/Characters.h"
#include "util/PropertyEscapes.h"

namespace installer::ctl::package {

namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

bool endsWithEscape(std::string_view text) {
  const std::size_t begin = text.find_last_not_of('\\') + 1;  // 0 when there is nothing else
  return (text.size() - begin) % 2 == 1;
}

// A backslash before the letter means nothing, but would take ours for its own.
void appendEscapes(char32_t character, std::string& to) {
  std::u16string units;
  appendUnits(character, units);
  if (endsWithEscape(to)) to.pop_back();
  for (const char16_t unit : units) {
    to += "\\u";
    appendHexDigits(unit, to);
  }
}

}  // namespace

std::optional<std::string> plainSettings(std::string_view text, std::size_t& line) {
  if (text.starts_with(kByteOrderMark)) text.remove_prefix(kByteOrderMark.size());
  std::string plain;
  line = 1;
  for (std::size_t at = 0; at < text.size();) {
    const auto decoded = decodeUtf8(text, at);
    if (!decoded) return std::nullopt;
    at += decoded->length;
    const bool isEndOfTwo = decoded->character == '\r' && text.substr(at, 1) == "\n";
    if (isEndOfTwo) continue;
    const bool endsLine = decoded->character == '\n' || decoded->character == '\r';
    if (endsLine) ++line;
    if (decoded->length > 1)
      appendEscapes(decoded->character, plain);
    else
      plain += endsLine ? '\n' : static_cast<char>(decoded->character);
  }
  return plain;
}

}  // namespace installer::ctl::package
