#include "hotfix/driver/InstanceLock.h"

#include <chrono>
#include <utility>

#include "platform/Clock.h"
#include "platform/FileManager.h"
#include "platform/Log.h"

namespace installer {

namespace {

// Between two attempts: short beside a run, long beside an attempt.
constexpr std::chrono::milliseconds kPause{100};
constexpr std::chrono::milliseconds kLongWait{10'000};

void tellOfWaiting(std::chrono::milliseconds waited) {
  if (waited == waited.zero())
    log(LogLevel::notice, "Another installation is at work on this instance, waiting for its end.");
  if (waited == kLongWait)
    log(LogLevel::notice, "The other installation is still at work after {} seconds, waiting on.",
        std::chrono::duration_cast<std::chrono::seconds>(kLongWait).count());
}

}  // namespace

InstanceLock::InstanceLock(const std::string& rcpHome) : InstanceLock(rcpHome, rcpHome) {}

InstanceLock::InstanceLock(const std::string& rcpHome, const std::string& otherRcpHome) {
  std::chrono::milliseconds waited{0};
  while (!take({rcpHome, otherRcpHome})) {
    tellOfWaiting(waited);
    _hasWaited = true;
    Platform::current().clock->pause(kPause);
    waited += kPause;
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
