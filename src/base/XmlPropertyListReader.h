#pragma once

#include <optional>
#include <string_view>

#include "hotfix/base/PropertyList.h"

namespace installer::PropertyList {

// Reads the XML form. The list may stand in a "plist" element or alone. A key that comes twice has
// its last value at its first place. A document that declares anything (entities, elements,
// attributes, notations) or uses entities of its own is unreadable, and nothing outside it is ever
// loaded.
[[nodiscard]] std::optional<Value> readXml(std::string_view bytes);

}  // namespace installer::PropertyList
