#include "hotfix/driver/InstanceLock.h"

#include <utility>

#include "driver/Wait.h"
#include "platform/FileManager.h"
#include "platform/Platform.h"

namespace installer {

InstanceLock::InstanceLock(const std::string& rcpHome) : InstanceLock(rcpHome, rcpHome) {}

InstanceLock::InstanceLock(const std::string& rcpHome, const std::string& otherRcpHome) {
  Wait wait("Another installation is at work on this instance, waiting for its end.",
            "The other installation is still at work");
  while (!take({rcpHome, otherRcpHome})) {
    wait.pause();
    _hasWaited = true;
  }
}

// All or nothing: whoever holds one home and waits for the other could be waited for itself.
bool InstanceLock::take(const std::vector<std::string>& rcpHomes) {
  std::vector<std::shared_ptr<const void>> holds;
  for (const std::string& rcpHome : rcpHomes) {
    LockAttempt attempt = Platform::current().files->tryLock(rcpHome);
    if (attempt.busy) return false;
    if (attempt.hold) holds.push_back(std::move(attempt.hold));
  }
  _isHeld = holds.size() == rcpHomes.size();
  _holds = std::move(holds);
  return true;
}

}  // namespace installer
