#pragma once

#include <string>

#include "hotfix/base/OrderedDictionary.h"

namespace installer {

// The text of a properties file with these entries, in their order: one "key=value" line each, pure
// ASCII, without a header. An entry with an empty key has no line.
std::string writeJavaProperties(const OrderedDictionary<std::string>& entries);

}  // namespace installer
