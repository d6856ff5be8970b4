#pragma once

#include <optional>
#include <string>

// Models which paths the platform's tooling cannot take.
namespace installer::model {

inline bool containsUnsupportedCharacters(const std::optional<std::string>& path) {
  if (!path) return false;
  for (const char character : *path) {
    switch (character) {
      case '!':
      case '"':
      case '\'':
      case ';':
      case '\\':
      case '#':
      case '%':
      case '|':
      case '=':
      case '?':
      case ':':
        return true;
      default:
        break;
    }
  }
  return false;
}

}  // namespace installer::model
