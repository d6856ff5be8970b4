#include "instance/ProvisioningRun.h"

#include "platform/Log.h"
#include "util/ChildStart.h"

namespace installer {

void runProvisioning(const std::optional<std::string>& launcher,
                     const std::vector<std::string>& arguments) {
  if (!launcher) {
    log(LogLevel::error, "Not able to start rcplauncher: the rcp home is unknown.");
    return;
  }
  runChild({*launcher, arguments});
}

}  // namespace installer
