#include "instance/ProvisioningRun.h"

#include "hotfix/formats/JavaProperties.h"
#include "instance/InstanceLayout.h"
#include "platform/Log.h"
#include "util/ChildStart.h"

namespace installer {

void runProvisioning(const std::optional<std::string>& launcher,
                     const std::vector<std::string>& arguments) {
  if (!launcher) {
    log(LogLevel::error, "Not able to start rcplauncher: the rcp home is unknown.");
    return;
  }
  if (const std::optional<std::string> signal = runChild({*launcher, arguments}))
    log(LogLevel::error, "{} was ended by {}.", *launcher, *signal);
}

bool provisioningSucceeded(const InstanceService& service, const std::string& rcpHome,
                           const std::string& rcpData) {
  if (service.getProvisioningResult() != -1) return true;
  const std::optional<std::string> answer =
      JavaProperties(InstanceLayout::provisioningResult(rcpHome)).getPropertyForKey("rc");
  if (answer)
    log(LogLevel::error,
        "The provisioning answered {}; the logs of the launcher are in {} and in {}.", *answer,
        rcpHome, InstanceLayout::workspaceLog(rcpData));
  return false;
}

}  // namespace installer
