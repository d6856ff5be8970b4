#pragma once

#include "platform/FileManager.h"
#include "platform/posix/Descriptor.h"

namespace installer {

// Takes the open folder's advisory lock, as FileManager::tryLock promises; without a hold and not
// busy errno is set. What the process holds is remembered for the whole of it, without a guard:
// locks are taken and given back by one thread.
[[nodiscard]] LockAttempt tryLockFolder(Descriptor folder);

// Whether nobody has the open folder's lock for himself: whoever only looks shares it with others
// who look, and gives it back at once. errno is set when it is not so, EWOULDBLOCK when somebody
// has it.
[[nodiscard]] bool canShareLock(const Descriptor& folder);

}  // namespace installer
