#pragma once

#include "platform/Pasteboard.h"

namespace installer {

// The private pasteboard "INSTALLATION_INTERNAL_PASTEBOARD" with its one type "ERROR_MESSAGE". The
// server that keeps it belongs to a person's session: root may find none, or one that refuses. So
// the record is kept in a file too, and the first refusal leaves a warning line.
class AppKitPasteboard : public Pasteboard {
 public:
  explicit AppKitPasteboard(Pasteboard& file) : _file(file) {}

  void clear() override;
  void setRecord(const PropertyList::Dictionary& record) override;
  [[nodiscard]] std::optional<PropertyList::Dictionary> record() override;

 private:
  void heed(bool wasTaken);

  Pasteboard& _file;
  bool _isRefusalTold = false;
};

}  // namespace installer
