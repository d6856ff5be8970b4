#pragma once

#include <optional>
#include <string>

#include "hotfix/base/PropertyList.h"

namespace installer::PropertyList {

// The XML form as it stands, whether or not a reader accepts its characters. nullopt for what has
// no form at all: a date without a four-digit year, and containers nested beyond kMaximumDepth.
[[nodiscard]] std::optional<std::string> writeXml(const Value& value);
[[nodiscard]] std::optional<std::string> writeXml(const Dictionary& dictionary);

}  // namespace installer::PropertyList
