#include "formats/JavaPropertiesWriter.h"

#include "util/PropertyEscapes.h"

namespace installer {

std::string writeJavaProperties(const OrderedDictionary<std::string>& entries) {
  std::string text;
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
