#include "driver/LauncherWait.h"

#include <algorithm>

#include "driver/Wait.h"
#include "instance/InstanceLayout.h"
#include "instance/ProvisioningCommand.h"
#include "platform/Platform.h"
#include "platform/UserContext.h"

namespace installer {

bool isLauncherAtWork(const std::string& rcpHome, ProcessTable& processes, uid_t user) {
  const std::string launcher = InstanceLayout::launcher(rcpHome);
  const auto lines = processes.commandLines(user);
  return std::any_of(lines.begin(), lines.end(), [&](const std::vector<std::string>& line) {
    const auto running = ProvisioningCommand::launcherIn(line);
    return running && processes.asReported(*running) == processes.asReported(launcher);
  });
}

bool isLauncherAtWork(const std::string& rcpHome) {
  const Platform& platform = Platform::current();
  return isLauncherAtWork(rcpHome, *platform.processes, platform.users->effectiveUserId());
}

void waitForLauncherLeftBehind(const std::string& rcpHome) {
  Wait wait(
      "A launcher that an earlier installation left behind is at work on this instance, "
      "waiting for its end.",
      "The launcher is still at work");
  while (isLauncherAtWork(rcpHome)) wait.pause();
}

}  // namespace installer
