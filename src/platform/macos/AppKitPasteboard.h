#pragma once

#include "platform/Pasteboard.h"

namespace installer {

// The private pasteboard "INSTALLATION_INTERNAL_PASTEBOARD" with its one type "ERROR_MESSAGE".
class AppKitPasteboard : public Pasteboard {
 public:
  void clear() override;
  void setRecord(const PropertyList::Dictionary& record) override;
  [[nodiscard]] std::optional<PropertyList::Dictionary> record() override;
};

}  // namespace installer
