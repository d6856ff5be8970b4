#pragma once

#include <optional>
#include <vector>

#include "platform/Pasteboard.h"

namespace installer::test {

// Keeps its record in memory, and remembers every one that was set.
class RecordingPasteboard : public Pasteboard {
 public:
  void clear() override { _record.reset(); }
  void setRecord(const PropertyList::Dictionary& record) override {
    _record = record;
    stored.push_back(record);
  }
  std::optional<PropertyList::Dictionary> record() override { return _record; }

  std::vector<PropertyList::Dictionary> stored;

 private:
  std::optional<PropertyList::Dictionary> _record;
};

}  // namespace installer::test
