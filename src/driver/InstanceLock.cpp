#include "hotfix/driver/InstanceLock.h"

#include <utility>
#include <vector>

#include "driver/Wait.h"
#include "platform/FileManager.h"
#include "platform/Log.h"
#include "platform/Reported.h"

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
bool InstanceLock::take(const std::set<std::string>& rcpHomes) {
  std::vector<std::shared_ptr<const void>> holds;
  std::vector<FileError> errors;
  for (const std::string& rcpHome : rcpHomes) {
    FileError error;
    LockAttempt attempt = Platform::current().files->tryLock(rcpHome, &error);
    if (attempt.busy) return false;
    if (attempt.hold)
      holds.push_back(std::move(attempt.hold));
    else
      errors.push_back(std::move(error));
  }
  _isHeld = errors.empty();
  _holds = std::move(holds);
  for (FileError& error : errors) judge(std::move(error));
  return true;
}

// What is missing needs no lock, and where there are none the instance is to be had only so. Of two
// homes the worse counts: one that is closed can be told by the checks.
void InstanceLock::judge(FileError error) {
  if (error.code == FileError::kMissing) return;
  if (error.code == FileError::kNoLocks)
    return logOnce(LogLevel::warning, "{}. Nothing keeps other installations from this instance.",
                   error.description);
  reported::tell(error);
  if (!_refusal || _refusal->code == FileError::kClosed) _refusal = std::move(error);
}

}  // namespace installer
