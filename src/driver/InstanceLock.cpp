#include "driver/InstanceLock.h"

#include "platform/FileManager.h"
#include "platform/Log.h"

namespace installer {

void lockInstance(const std::optional<std::string>& rcpHome) {
  if (!rcpHome) return;
  // A home that cannot be locked, above all a missing one, is worked on all the same.
  (void)Platform::current().files->lock(*rcpHome, [] {
    log(LogLevel::notice, "Another installation is at work on this instance, waiting for its end.");
  });
}

}  // namespace installer
