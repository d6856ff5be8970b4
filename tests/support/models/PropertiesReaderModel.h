#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "support/models/CharactersModel.h"

// Models how a properties file's text becomes entries: one step after the other, with a list of
// entries that is searched from its beginning.
namespace installer::model {

using Entries = std::vector<std::pair<std::string, std::string>>;

inline void store(Entries& entries, const std::string& key, const std::string& value) {
  for (auto& entry : entries)
    if (entry.first == key) {
      entry.second = value;
      return;
    }
  entries.emplace_back(key, value);
}

inline std::optional<std::string> valueOf(const Entries& entries, const std::string& key) {
  for (const auto& entry : entries)
    if (entry.first == key) return entry.second;
  return std::nullopt;
}

inline Entries merged(Entries entries, const Entries& over) {
  for (const auto& [key, value] : over) store(entries, key, value);
  return entries;
}

inline std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::string line;
  for (const char character : text) {
    if (character == '\n') {
      lines.push_back(line);
      line = "";
    } else {
      line += character;
    }
  }
  if (line != "") lines.push_back(line);
  return lines;
}

inline std::string withoutBlanksAround(const std::string& line) {
  const std::string blanks = "\t\n\v\f\r \x85\xA0";
  const std::size_t first = line.find_first_not_of(blanks);
  if (first == std::string::npos) return "";
  return line.substr(first, line.find_last_not_of(blanks) - first + 1);
}

inline std::string widened(const std::string& latin1) {
  std::string text;
  for (const char character : latin1) text += encoded(static_cast<unsigned char>(character));
  return text;
}

// What one line leaves to the next.
struct Reading {
  bool continuation = false;
  bool inValue = false;
  bool optionLine = false;
};

// The key and the value that a line holds.
inline std::pair<std::string, std::string> readLine(const std::string& line, Reading& reading) {
  std::string key = "";
  std::string value = "";
  bool beforeSeparator = true;
  for (std::size_t i = 0; i < line.length(); ++i) {
    const std::string here = line.substr(i, 1);
    const std::string next = line.substr(i + 1, 1);
    const std::string previous = i == 0 ? "" : line.substr(i - 1, 1);
    const bool separator = here == "=" || here == ":" || here == " " || here == "\t";

    if (here == "\\" && next == "" && previous == " ") {
      reading.continuation = true;
    } else if (here == "\\" && (next == ":" || next == "\\" || next == "#" || next == " " ||
                                next == "=" || next == "!")) {
      // dropped
    } else if (here == "\n") {
      // dropped
    } else if (separator && beforeSeparator) {
      reading.inValue = true;
      if (reading.optionLine) value += here;
    } else if (reading.inValue) {
      value += here;
      reading.continuation = false;
      beforeSeparator = false;
    } else {
      key += here;
    }
  }
  return {key, value};
}

inline Entries readProperties(const std::string& text) {
  Entries entries;
  Reading reading;
  for (const std::string& whole : linesOf(text)) {
    const std::string line = withoutBlanksAround(whole);
    reading.inValue = reading.inValue && reading.continuation;
    if (line.substr(0, 1) == "#") continue;
    if (line.length() >= 2 && !reading.continuation) reading.optionLine = line.substr(0, 2) == "-X";
    const auto [key, value] = readLine(line, reading);
    if (!reading.continuation) store(entries, widened(key), widened(value));
  }
  return entries;
}

}  // namespace installer::model
