#pragma once

#include <optional>

#include "Fuzzed.h"
#include "hotfix/base/PropertyList.h"

namespace installer::fuzz {

// What was read and can be told in XML is told the same once more.
inline void readAgain(const PropertyList::Value& value) {
  const std::optional<std::string> bytes = PropertyList::serialize(value);
  if (!bytes) return;
  const std::optional<PropertyList::Value> again = PropertyList::parse(*bytes);
  require(again.has_value(), "a list that was written can be read");
  // The texts are compared: a number that is none (NaN) is not equal to itself, and the part of a
  // second is lost when a date is written.
  require(PropertyList::serialize(*again) == bytes, "a list that was written is written the same");
}

}  // namespace installer::fuzz
