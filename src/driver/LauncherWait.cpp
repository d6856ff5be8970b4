#include "driver/LauncherWait.h"

#include <algorithm>

#include "driver/Wait.h"
#include "instance/InstanceLayout.h"
#include "instance/ProvisioningCommand.h"
#include "platform/Platform.h"
#include "platform/ProcessTable.h"

namespace installer {

bool isLauncherAtWork(const std::string& rcpHome) {
  const std::string launcher = InstanceLayout::launcher(rcpHome);
  ProcessTable& processes = *Platform::current().processes;
  const auto lines = processes.commandLines();
  return std::any_of(lines.begin(), lines.end(), [&](const std::vector<std::string>& line) {
    const auto running = ProvisioningCommand::launcherIn(line);
    return running && processes.asReported(*running) == processes.asReported(launcher);
  });
}

void waitForLauncherLeftBehind(const std::string& rcpHome) {
  Wait wait(
      "A launcher that an earlier installation left behind is at work on this instance, "
      "waiting for its end.",
      "The launcher is still at work");
  while (isLauncherAtWork(rcpHome)) wait.pause();
}

}  // namespace installer
