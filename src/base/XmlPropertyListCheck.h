#pragma once

#include <string_view>

#include "hotfix/base/PropertyList.h"

namespace installer::PropertyList {

// Whether reading the XML form gives the very value, but for a date's part of a second, and with a
// dictionary that looks like a reference taken for what it looks like. The value is gone through
// beside the bytes, so that no second one is built.
[[nodiscard]] bool isToldBy(std::string_view bytes, const Value& value);
[[nodiscard]] bool isToldBy(std::string_view bytes, const Dictionary& dictionary);

}  // namespace installer::PropertyList
