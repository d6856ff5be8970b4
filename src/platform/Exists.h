#pragma once

#include <optional>
#include <string>

#include "platform/FileManager.h"
#include "platform/Platform.h"

namespace installer {

// Whether there is something at the path, links followed; false for an absent path.
inline bool exists(const std::optional<std::string>& path) {
  return path && Platform::current().files->exists(*path);
}

}  // namespace installer
