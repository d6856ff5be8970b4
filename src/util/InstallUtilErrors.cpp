#include "platform/Pasteboard.h"
#include "platform/Platform.h"
#include "util/InstallUtil.h"

namespace installer {

void InstallUtil::initInternalPasteboard(bool initialize) {
  Platform::current().pasteboard->clear();
  if (initialize) sendErrorMessage(0, {});
}

void InstallUtil::sendErrorMessage(const std::optional<PropertyList::Dictionary>& message) {
  if (message) Platform::current().pasteboard->setRecord(*message);
}

void InstallUtil::sendErrorMessage(int code, const std::vector<std::string>& details) {
  sendErrorMessage(PropertyList::Dictionary{
      {"ERROR_CODE", code},
      {"ERROR_DETAILS", PropertyList::Array(details.begin(), details.end())}});
}

std::optional<PropertyList::Dictionary> InstallUtil::getErrorMessage() {
  return Platform::current().pasteboard->record();
}

}  // namespace installer
