#include "ctl/lint/JavaLine.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <cstdint>

namespace installer::ctl::lint {

namespace {

constexpr std::string_view kBlanks = " \t\f";
constexpr std::string_view kKeyEnds = " \t\f=:";
constexpr std::size_t kDigits = 4;

std::size_t skipped(std::string_view line, std::size_t at) {
  return std::min(line.find_first_not_of(kBlanks, at), line.size());
}

// Where the key ends: a separator behind a backslash belongs to it.
std::size_t endOfKey(std::string_view line, std::size_t at) {
  while (at < line.size() && kKeyEnds.find(line[at]) == std::string_view::npos)
    at += line[at] == '\\' ? 2 : 1;
  return std::min(at, line.size());
}

// The blanks behind a key, with one sign among them.
std::size_t endOfSeparator(std::string_view line, std::size_t at) {
  at = skipped(line, at);
  const bool isSign = at < line.size() && (line[at] == '=' || line[at] == ':');
  return isSign ? skipped(line, at + 1) : at;
}

char16_t unitOf(char latin1) {
  return static_cast<unsigned char>(latin1);
}

// What a backslash and the letter mean together.
char16_t escaped(char letter) {
  switch (letter) {
    case 't':
      return u'\t';
    case 'n':
      return u'\n';
    case 'r':
      return u'\r';
    case 'f':
      return u'\f';
    default:
      return unitOf(letter);
  }
}

// The number of the digits that the text begins with.
std::optional<char16_t> unitInHexDigits(std::string_view text) {
  std::uint16_t number = 0;
  const char* const end = text.data() + std::min(text.size(), kDigits);
  const auto [rest, error] = std::from_chars(text.data(), end, number, 16);
  if (error != std::errc() || rest != text.data() + kDigits) return std::nullopt;
  return static_cast<char16_t>(number);
}

std::optional<std::u16string> decoded(std::string_view text) {
  std::u16string units;
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (text[at] != '\\') {
      units += unitOf(text[at]);
      continue;
    }
    if (++at == text.size()) break;  // nothing is there to escape
    if (text[at] != 'u') {
      units += escaped(text[at]);
      continue;
    }
    const auto unit = unitInHexDigits(text.substr(at + 1));
    if (!unit) return std::nullopt;
    units += *unit;
    at += kDigits;
  }
  return units;
}

}  // namespace

std::optional<JavaEntry> javaEntryIn(std::string_view line) {
  const std::size_t begin = skipped(line, 0);
  const std::size_t end = endOfKey(line, begin);
  auto key = decoded(line.substr(begin, end - begin));
  auto value = decoded(line.substr(endOfSeparator(line, end)));
  if (!key || !value) return std::nullopt;
  return JavaEntry{*std::move(key), *std::move(value)};
}

}  // namespace installer::ctl::lint
