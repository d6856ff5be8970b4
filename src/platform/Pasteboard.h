#pragma once

#include <optional>

#include "hotfix/base/PropertyList.h"

namespace installer {

// The private named pasteboard through which the graphical installer learns what went wrong: at
// most one property-list record. No failure is reported, by agreement with its reader.
class Pasteboard {
 public:
  Pasteboard() = default;
  Pasteboard(const Pasteboard&) = delete;
  Pasteboard& operator=(const Pasteboard&) = delete;
  virtual ~Pasteboard() = default;

  // Drops the record.
  virtual void clear() = 0;
  // Replaces the record.
  virtual void setRecord(const PropertyList::Dictionary& record) = 0;
  // The record; nullopt when there is none or it is no dictionary.
  [[nodiscard]] virtual std::optional<PropertyList::Dictionary> record() = 0;
};

}  // namespace installer
