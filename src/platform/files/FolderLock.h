#pragma once

#include <string>

#include "platform/FileManager.h"

namespace installer {

// Takes the folder's advisory lock, as FileManager::tryLock promises. What the process holds is
// remembered for the whole of it, without a guard: locks are taken and given back by one thread.
[[nodiscard]] LockAttempt tryLockFolder(const std::string& folder);

}  // namespace installer
