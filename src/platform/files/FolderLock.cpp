#include "platform/files/FolderLock.h"

#include <sys/file.h>

#include <cerrno>
#include <chrono>
#include <map>
#include <thread>
#include <utility>

#include "platform/files/Ancestry.h"
#include "platform/posix/Uninterrupted.h"

namespace installer {

namespace {

// A look has its share for a moment; who keeps one for long counts as a holder.
constexpr int kMostLooks = 500;
constexpr std::chrono::milliseconds kLook{1};

using LockedFolders = std::map<FileIdentity, std::weak_ptr<const Descriptor>>;

// What this process holds. A descriptor that is closed gives the lock back.
LockedFolders& lockedFolders() {
  static LockedFolders folders;
  std::erase_if(folders, [](const auto& entry) { return entry.second.expired(); });
  return folders;
}

bool lock(const Descriptor& folder, int how) {
  return uninterrupted([&] { return ::flock(folder.get(), how | LOCK_NB); }) == 0;
}

// Those who only look at the lock are no reason to call it busy. errno is set when it is.
bool lockBesideLooks(const Descriptor& folder) {
  for (int looks = 0; !lock(folder, LOCK_EX); ++looks) {
    if (errno != EWOULDBLOCK || !canShareLock(folder)) return false;
    errno = EWOULDBLOCK;
    if (looks == kMostLooks) return false;
    std::this_thread::sleep_for(kLook);
  }
  return true;
}

}  // namespace

bool canShareLock(const Descriptor& folder) {
  if (!lock(folder, LOCK_SH)) return false;
  (void)lock(folder, LOCK_UN);  // what fails here ends with the descriptor
  return true;
}

LockAttempt tryLockFolder(Descriptor folder) {
  if (!folder.valid()) return {};
  const auto identity = identityOf(folder.get());
  if (!identity) return {};
  LockedFolders& held = lockedFolders();
  if (const auto found = held.find(*identity); found != held.end())
    return {.busy = false, .hold = found->second.lock()};
  if (!lockBesideLooks(folder)) return {.busy = errno == EWOULDBLOCK, .hold = nullptr};
  const auto hold = std::make_shared<const Descriptor>(std::move(folder));
  held.emplace(*identity, hold);
  return {.busy = false, .hold = hold};
}

}  // namespace installer
