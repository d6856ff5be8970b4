#include "cli/PropertiesModel.h"

#include <cstdio>

namespace installer::cli {
namespace {

// White space and line ends among the Latin-1 characters.
bool isTrimmed(char c) {
  const auto code = static_cast<unsigned char>(c);
  return (code >= 0x09 && code <= 0x0D) || code == 0x20 || code == 0x85 || code == 0xA0;
}

std::string trimmed(const std::string& line) {
  std::size_t first = 0, last = line.size();
  while (first < last && isTrimmed(line[first])) ++first;
  while (last > first && isTrimmed(line[last - 1])) --last;
  return line.substr(first, last - first);
}

std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::string line;
  for (const char c : text) {
    if (c != '\n') {
      line += c;
      continue;
    }
    lines.push_back(line);
    line.clear();
  }
  if (!line.empty()) lines.push_back(line);
  return lines;
}

bool isSeparator(char c) {
  return c == '=' || c == ':' || c == ' ' || c == '\t';
}
bool isEscapable(char c) {
  return std::string(":\\# =!").find(c) != std::string::npos;
}

}  // namespace

PropertiesModel::PropertiesModel(const std::string& text) {
  bool continuation = false, inValue = false, optionLine = false;
  for (const std::string& raw : linesOf(text)) {
    const std::string line = trimmed(raw);
    if (!line.empty() && line[0] == '#') continue;
    std::string key, value;
    if (!continuation) inValue = false;
    if (line.size() >= 2 && !continuation) optionLine = line.compare(0, 2, "-X") == 0;
    bool beforeSeparator = true;
    for (std::size_t i = 0; i < line.size(); ++i) {
      const char c = line[i];
      const bool last = i + 1 == line.size();
      if (c == '\\' && last && i > 0 && line[i - 1] == ' ') {
        continuation = true;
      } else if (c == '\\' && !last && isEscapable(line[i + 1])) {
        continue;
      } else if (isSeparator(c) && beforeSeparator) {
        inValue = true;
        if (optionLine) value += c;
      } else if (inValue) {
        value += c;
        continuation = false;
        beforeSeparator = false;
      } else {
        key += c;
      }
    }
    if (!continuation) set(key, value);
  }
}

void PropertiesModel::set(const std::string& key, const std::string& value) {
  for (auto& [name, stored] : _entries) {
    if (name != key) continue;
    stored = value;
    return;
  }
  _entries.emplace_back(key, value);
}

std::optional<std::string> PropertiesModel::get(const std::string& key) const {
  for (const auto& [name, stored] : _entries)
    if (name == key) return stored;
  return std::nullopt;
}

void PropertiesModel::merge(const PropertiesModel& other) {
  for (const auto& [key, value] : other._entries) set(key, value);
}

namespace {

std::string unicodeEscape(char c) {
  char text[8];
  std::snprintf(text, sizeof text, "\\u%04x", static_cast<unsigned>(static_cast<unsigned char>(c)));
  return text;
}

bool isPlain(char c) {
  return c >= 0x20 && c <= 0x7E;
}

std::string escapedKey(const std::string& latin1) {
  std::string result;
  for (const char c : latin1) {
    if (std::string(" #!=:\\").find(c) != std::string::npos) {
      result += std::string("\\") + c;
    } else {
      result += isPlain(c) ? std::string(1, c) : unicodeEscape(c);
    }
  }
  return result;
}

std::string escapedValue(const std::string& latin1) {
  std::string result;
  for (std::size_t i = 0; i < latin1.size(); ++i) {
    const char c = latin1[i];
    if (c == '\\') {
      const bool beforeU = i + 1 < latin1.size() && latin1[i + 1] == 'u';
      result += beforeU ? "\\" : "\\\\";
    } else if (std::string("#!=:").find(c) != std::string::npos) {
      result += std::string("\\") + c;
    } else {
      result += isPlain(c) ? std::string(1, c) : unicodeEscape(c);
    }
  }
  return result;
}

}  // namespace

std::string PropertiesModel::saved() const {
  std::string text;
  for (const auto& [key, value] : _entries)
    if (!key.empty()) text += escapedKey(key) + "=" + escapedValue(value) + "\n";
  return text;
}

}  // namespace installer::cli
