#include "instance/ProvisioningRun.h"

#include "hotfix/formats/JavaProperties.h"
#include "instance/InstanceLayout.h"
#include "platform/Exists.h"
#include "platform/Interruption.h"
#include "platform/Log.h"
#include "platform/Reported.h"
#include "util/ChildStart.h"

namespace installer {

namespace {

// Why there was no success, as far as the result file tells.
void tellFailure(const std::string& rcpHome, const std::string& rcpData) {
  const std::string file = InstanceLayout::provisioningResult(rcpHome);
  const std::string logs = InstanceLayout::workspaceLog(rcpData);
  const JavaProperties result(file);
  if (const std::optional<std::string> answer = result.getPropertyForKey("rc"))
    log(LogLevel::error,
        "The provisioning answered {}; the logs of the launcher are in {} and in {}.", *answer,
        rcpHome, logs);
  else if (result.readError())
    reported::tell(*result.readError());
  else if (exists(file))
    log(LogLevel::error, "\"{}\" holds no rc; the logs of the launcher are in {} and in {}.", file,
        rcpHome, logs);
}

}  // namespace

void runProvisioning(const std::optional<std::string>& launcher,
                     const std::vector<std::string>& arguments) {
  if (!launcher) {
    log(LogLevel::error, "Not able to start rcplauncher: the rcp home is unknown.");
    return;
  }
  if (const std::optional<std::string> signal = runChild({*launcher, arguments}))
    log(LogLevel::error, "{} was ended by {}.", *launcher, *signal);
  checkInterruption();
}

bool provisioningSucceeded(const InstanceService& service, const std::string& rcpHome,
                           const std::string& rcpData) {
  if (service.getProvisioningResult() != -1) return true;
  tellFailure(rcpHome, rcpData);
  return false;
}

}  // namespace installer
