#include "driver/InstanceLock.h"

#include "driver/RunState.h"
#include "platform/FileManager.h"
#include "platform/Log.h"

namespace installer {

void lockInstance(const std::optional<std::string>& rcpHome) {
  FileManager& files = *Platform::current().files;
  if (runState()._locked || !rcpHome || !files.isDirectory(*rcpHome)) return;
  runState()._locked = files.lock(*rcpHome, [] {
    log(LogLevel::notice, "Another installation is at work on this instance, waiting for its end.");
  });
}

}  // namespace installer
