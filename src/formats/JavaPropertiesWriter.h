#pragma once

#include <string>

#include "base/TextDictionary.h"

namespace installer {

// The text of a properties file with these entries, in their order: one "key=value" line each, pure
// ASCII, without a header. An entry with an empty key has no line.
std::string writeJavaProperties(const TextDictionary& entries);

}  // namespace installer
