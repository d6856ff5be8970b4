#pragma once

#include <optional>
#include <string>

#include "platform/FileManager.h"

namespace installer {

// The attributes of what is handed to a user: the group of administrators beside the owner. An
// absent owner is one that the user database cannot know.
FileAttributes handedTo(const std::optional<std::string>& owner, mode_t mode);

inline constexpr mode_t kSharedMode = 0775;

}  // namespace installer
