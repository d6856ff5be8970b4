#include <utility>

#include "base/Characters.h"
#include "hotfix/util/InstallUtil.h"
#include "platform/Pasteboard.h"
#include "platform/Platform.h"

namespace installer {

void InstallUtil::initInternalPasteboard(bool initialize) {
  Platform::current().pasteboard->clear();
  if (initialize) sendErrorMessage(ErrorCode::none, {});
}

void InstallUtil::sendErrorMessage(const std::optional<PropertyList::Dictionary>& message) {
  if (message) Platform::current().pasteboard->setRecord(*message);
}

void InstallUtil::sendErrorMessage(ErrorCode code, const std::vector<std::string>& details) {
  // Paths may hold any byte; a record that cannot be written would leave the old code standing.
  PropertyList::Array texts;
  for (const std::string& detail : details) texts.emplace_back(asXmlCharacters(detail));
  sendErrorMessage(PropertyList::Dictionary{{"ERROR_CODE", static_cast<int>(code)},
                                            {"ERROR_DETAILS", std::move(texts)}});
}

std::optional<PropertyList::Dictionary> InstallUtil::getErrorMessage() {
  return Platform::current().pasteboard->record();
}

}  // namespace installer
