#pragma once

#include <string>

#include "platform/FileManager.h"

namespace installer {

// Takes the folder's advisory lock, as FileManager::tryLock promises.
[[nodiscard]] LockAttempt tryLockFolder(const std::string& folder);

}  // namespace installer
