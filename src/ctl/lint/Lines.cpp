#include "ctl/lint/Lines.h"

#include <algorithm>

namespace installer::ctl::lint {

namespace {

std::string keyElement(std::string_view key) {
  return "<key>" + std::string(key) + "</key>";
}

}  // namespace

std::size_t lineAt(std::string_view bytes, std::size_t place) {
  const std::string_view before = bytes.substr(0, place);
  return 1 + static_cast<std::size_t>(std::count(before.begin(), before.end(), '\n'));
}

std::optional<std::size_t> lineOf(std::string_view bytes, std::string_view text) {
  const std::size_t place = bytes.find(text);
  if (place == std::string_view::npos || text.empty()) return std::nullopt;
  return lineAt(bytes, place);
}

std::vector<std::size_t> linesAt(std::string_view bytes, const std::vector<std::size_t>& places) {
  std::vector<std::size_t> lines;
  std::size_t line = 1;
  std::size_t counted = 0;
  for (const std::size_t place : places) {
    line += lineAt(bytes.substr(counted), place - counted) - 1;
    counted = place;
    lines.push_back(line);
  }
  return lines;
}

std::optional<std::size_t> LineSearch::next(std::string_view text) {
  const std::size_t found = _isLost ? std::string_view::npos : _bytes.find(text, _next);
  _isLost = found == std::string_view::npos;
  if (_isLost) return std::nullopt;
  _line += lineAt(_bytes.substr(_place), found - _place) - 1;
  _place = found;
  _next = found + 1;
  return _line;
}

std::optional<std::size_t> lineOfKey(std::string_view list, const RootKeys& keys,
                                     std::string_view key) {
  const auto known = keys.find(key);
  if (known == keys.end()) return std::nullopt;
  const std::string element = keyElement(key);
  std::size_t count = 0;
  std::size_t last = 0;
  for (std::size_t at = list.find(element); at != std::string_view::npos;
       at = list.find(element, at + element.size())) {
    last = at;
    ++count;
  }
  if (count != known->second) return std::nullopt;
  return lineAt(list, last);
}

}  // namespace installer::ctl::lint
