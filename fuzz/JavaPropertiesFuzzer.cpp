// Any text is read, in bounded time.

#include <cstdint>
#include <string_view>

#include "formats/JavaPropertiesReader.h"
#include "hotfix/base/OrderedDictionary.h"

using namespace installer;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  OrderedDictionary<std::string> entries;
  readJavaProperties(std::string_view(reinterpret_cast<const char*>(data), size), entries);
  return 0;
}
