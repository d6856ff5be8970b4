#include <algorithm>
#include <charconv>

#include "hotfix/formats/JavaProperties.h"
#include "hotfix/instance/InstanceService.h"
#include "hotfix/platform/HomeFolders.h"
#include "hotfix/util/InstallUtil.h"
#include "instance/InstanceLayout.h"
#include "instance/ProvisioningCommand.h"
#include "instance/ProvisioningRun.h"
#include "platform/Exists.h"
#include "platform/Reported.h"

namespace installer {

namespace {

// Whether the launcher's return code tells success: 0, or 2 when there was nothing to do, which is
// as good. The platform reads a text as an integer: blanks, one sign, digits; the rest is ignored
// and no digits count as 0.
bool tellsSuccess(std::string_view code) {
  code.remove_prefix(std::min(code.find_first_not_of(" \t"), code.size()));
  const bool negative = code.starts_with('-');
  if (negative || code.starts_with('+')) code.remove_prefix(1);
  unsigned number = 0;
  const std::errc error = std::from_chars(code.data(), code.data() + code.size(), number).ec;
  if (error == std::errc::result_out_of_range) return false;
  return number == 0 || (number == 2 && !negative);
}

// The place of the instance's result file; nullopt when there is no instance.
std::optional<std::string> resultFile(const std::optional<std::string>& rcpHome) {
  if (!rcpHome || !exists(path::expandingTilde(*rcpHome))) return std::nullopt;
  return InstanceLayout::provisioningResult(*rcpHome);
}

}  // namespace

void InstanceService::startProvisioning(const std::optional<std::string>& pathToLauncher,
                                        std::string_view operation) const {
  runProvisioning(pathToLauncher, ProvisioningCommand::arguments(
                                      operation, InstallUtil::getCurrentLocale(), _pathToRcpData));
}

void InstanceService::startProvisioningWithUpdate(
    const std::optional<std::string>& pathToLauncher) {
  startProvisioning(pathToLauncher, ProvisioningCommand::kUpdate);
}

void InstanceService::startProvisioningWithCleanUp(
    const std::optional<std::string>& pathToLauncher) {
  startProvisioning(pathToLauncher, ProvisioningCommand::kCleanUp);
}

int InstanceService::getProvisioningResult() const {
  const std::optional<std::string> file = resultFile(_pathToRcphome);
  if (!file || !exists(*file)) return -1;  // reading would look beside the expanded home
  const std::optional<std::string> code = JavaProperties(*file).getPropertyForKey("rc");
  return code && tellsSuccess(*code) ? 0 : -1;
}

void InstanceService::removeProvisionRCFile() {
  const std::optional<std::string> file = resultFile(_pathToRcphome);
  if (file && reported::exists(*file))
    (void)reported::remove(*file);  // a file that stays is read again, as before this run
}

}  // namespace installer
