#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "support/models/PathModel.h"

// Models what a path tells about the application around it.
namespace installer::model {

// Every place is tried, the last one first.
inline std::optional<std::string> bundlePath(const std::string& path) {
  const std::string wanted = ".app/Contents/MacOS";
  for (std::size_t left = path.size() + 1; left > 0; --left) {
    const std::size_t place = left - 1;
    if (path.substr(place, wanted.size()) == wanted) return path.substr(0, place) + ".app";
  }
  return std::nullopt;
}

inline std::string targetName(const std::string& path) {
  Path parts = takenApart(path);
  while (!parts.names.empty()) {
    const std::string name = parts.names.back();
    if (name.size() >= 3 && name.substr(name.size() - 3) == "app") {
      std::string piece;
      for (const char character : name) {
        if (character == '.') break;
        piece += character;
      }
      return piece;
    }
    parts.names.pop_back();
  }
  return parts.absolute ? "/" : "";
}

}  // namespace installer::model
