#include "ctl/lint/Texts.h"

#include <algorithm>

namespace installer::ctl::lint {

namespace {

bool isLetter(char byte) {
  return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z');
}

// The placeholder that begins at the sign "$": up to its brace, or as far as letters and dots go.
std::string_view placeholderAt(std::string_view text, std::size_t sign) {
  const std::string_view rest = text.substr(sign);
  if (rest.size() < 2) return {};
  if (rest[1] == '{' || rest[1] == '(')
    return rest.substr(0, std::min(rest.find_first_of("})"), rest.size() - 1) + 1);
  if (!isLetter(rest[1])) return {};
  const auto* const end = std::find_if(rest.begin() + 1, rest.end(),
                                       [](char byte) { return !isLetter(byte) && byte != '.'; });
  return rest.substr(0, static_cast<std::size_t>(end - rest.begin()));
}

}  // namespace

std::string_view withoutBlanks(std::string_view text) {
  const std::size_t first = text.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

std::string inSmallLetters(std::string_view text) {
  std::string small(text);
  for (char& letter : small)
    if (letter >= 'A' && letter <= 'Z') letter = static_cast<char>(letter - 'A' + 'a');
  return small;
}

std::string_view unknownPlaceholder(std::string_view text, std::string_view known) {
  for (std::size_t sign = text.find('$'); sign != std::string_view::npos;
       sign = text.find('$', sign + 1)) {
    const std::string_view found = placeholderAt(text, sign);
    if (!found.empty() && found != known) return found;
  }
  // The sign itself may be what is missing.
  const std::string_view braces = known.substr(1);
  for (std::size_t at = text.find(braces); at != std::string_view::npos;
       at = text.find(braces, at + 1))
    if (at == 0 || text[at - 1] != '$') return text.substr(at, braces.size());
  return {};
}

bool leavesItsRoot(std::string_view way) {
  int depth = 0;
  for (std::size_t at = 0; at < way.size();) {
    const std::size_t end = std::min(way.find('/', at), way.size());
    const std::string_view step = way.substr(at, end - at);
    if (step == "..")
      --depth;
    else if (!step.empty() && step != ".")
      ++depth;
    if (depth < 0) return true;
    at = end + 1;
  }
  return false;
}

}  // namespace installer::ctl::lint
