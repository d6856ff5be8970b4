#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "support/models/CharactersModel.h"

// Models of the operations on texts.
namespace installer::model {

// Every occurrence replaced, the last one first: the text is cut at its last character until the
// target stands at the end of what is left.
inline std::string replacedBackwards(std::string source, const std::string& target,
                                     const std::string& replacement) {
  if (target == "") return source;
  std::string done;
  while (source != "") {
    if (source.ends_with(target)) {
      source.resize(source.size() - target.size());
      done = replacement + done;
    } else {
      done = source.back() + done;
      source.pop_back();
    }
  }
  return done;
}

// Each "\u" with four places behind it becomes the unit that the digits among the places spell.
inline std::string unicodeDecoded(const std::string& text) {
  const Units units = unitsOf(text);
  Units decoded;
  std::size_t i = 0;
  while (i < units.size()) {
    const std::size_t charactersAfter = units.size() - i - 1;
    if (units[i] != '\\' || charactersAfter < 5 || units[i + 1] != 'u') {
      decoded.push_back(units[i]);
      i += 1;
      continue;
    }
    unsigned value = 0;
    for (std::size_t place = i + 2; place <= i + 5; ++place) {
      const std::string digits = "0123456789abcdef0123456789ABCDEF";
      if (units[place] > 0x7F) continue;
      const std::size_t found = digits.find(static_cast<char>(units[place]));
      if (found == std::string::npos) continue;
      value = value * 16 + static_cast<unsigned>(found % 16);
    }
    decoded.push_back(value);
    i += 6;
  }
  return textOf(decoded);
}

// The pattern walked once; each "%@" takes the next string.
inline std::optional<std::string> bound(const std::optional<std::string>& pattern,
                                        std::vector<std::string> strings) {
  if (!pattern) return std::nullopt;
  std::string text;
  std::size_t i = 0;
  while (i < pattern->size()) {
    if (pattern->substr(i, 2) != "%@") {
      text += (*pattern)[i];
      i += 1;
      continue;
    }
    if (!strings.empty()) {
      text += strings.front();
      strings.erase(strings.begin());
    }
    i += 2;
  }
  return text;
}

// For a path without "~", whose volumes lie below "/Volumes".
inline std::optional<std::string> volumeOf(const std::optional<std::string>& path) {
  if (!path) return std::nullopt;
  if (!path->starts_with("/")) return "/";
  std::vector<std::string> names = {""};
  for (const char character : *path) {
    if (character != '/')
      names.back() += character;
    else if (names.back() != "")
      names.push_back("");
  }
  if (names.back() == "") names.pop_back();
  if (names.size() >= 2 && names[0] == "Volumes") return "/Volumes/" + names[1];
  return "/";
}

}  // namespace installer::model
