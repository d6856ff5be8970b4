#include <algorithm>
#include <climits>

#include "formats/JavaProperties.h"
#include "instance/InstanceLayout.h"
#include "instance/InstanceService.h"
#include "instance/ProvisioningCommand.h"
#include "instance/ProvisioningRun.h"
#include "platform/FileManager.h"
#include "platform/Path.h"
#include "platform/Platform.h"
#include "util/InstallUtil.h"

namespace installer {

namespace {

bool isDigit(char character) {
  return character >= '0' && character <= '9';
}

// The platform's reading of a text as an integer: blanks, one sign, digits; the rest is ignored, no
// digits count as 0, and what is too large counts as the largest.
long leadingInteger(std::string_view text) {
  text.remove_prefix(std::min(text.find_first_not_of(" \t"), text.size()));
  const bool negative = text.starts_with('-');
  if (negative || text.starts_with('+')) text.remove_prefix(1);
  long value = 0;
  for (const char character : text) {
    if (!isDigit(character)) break;
    value = std::min<long>(value * 10 + (character - '0'), INT_MAX);
  }
  return negative ? -value : value;
}

// The result file of the instance; nullopt when there is neither instance nor file.
std::optional<std::string> existingResult(const std::optional<std::string>& rcpHome) {
  FileManager& files = *Platform::current().files;
  if (!rcpHome || !files.exists(path::expandingTilde(*rcpHome))) return std::nullopt;
  const std::string file = InstanceLayout::provisioningResult(*rcpHome);
  if (!files.exists(file)) return std::nullopt;
  return file;
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
  const std::optional<std::string> file = existingResult(_pathToRcphome);
  if (!file) return -1;
  const std::optional<std::string> code = JavaProperties(*file).getPropertyForKey("rc");
  if (!code) return -1;
  const long number = leadingInteger(*code);
  // 2 tells that there was nothing to do, which is as good.
  return number == 0 || number == 2 ? 0 : -1;
}

void InstanceService::removeProvisionRCFile() {
  if (const std::optional<std::string> file = existingResult(_pathToRcphome))
    (void)Platform::current().files->remove(*file);
}

}  // namespace installer
