#include "formats/JavaPropertiesWriter.h"

#include "util/PropertyEscapes.h"

namespace installer {

// Quarters of its length that a text with the usual escapes has.
constexpr std::size_t kLengthening = 5;

std::string writeJavaProperties(const TextDictionary& entries) {
  std::string text;
  text.reserve(entries.textSize() * kLengthening / 4 + entries.size() * 2);
  for (const auto& [key, value] : entries) {
    if (key.empty()) continue;
    appendEscapedKey(key, text);
    text += '=';
    appendEscapedValue(value, text);
    text += '\n';
  }
  return text;
}

}  // namespace installer
