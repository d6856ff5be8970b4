#pragma once

#include <optional>
#include <string>

#include "platform/FileManager.h"
#include "platform/Platform.h"

namespace installer {

// Whether there is something at the path, links followed.
inline bool exists(const std::string& path) {
  return Platform::current().files->exists(path);
}

// The same; false for an absent path.
inline bool exists(const std::optional<std::string>& path) {
  return path && exists(*path);
}

}  // namespace installer
