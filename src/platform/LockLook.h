#pragma once

#include <string>

#include "hotfix/platform/FileError.h"

namespace installer {

// Whether anybody, this process included, has the folder's lock (FileManager::tryLock) right now.
// Nobody is waited for, any number may look at a time, and whoever takes the lock meanwhile gets
// it. When that cannot be told the answer is false, with `error` set as tryLock() sets it.
[[nodiscard]] bool isFolderLocked(const std::string& folder, FileError* error = nullptr);

}  // namespace installer
