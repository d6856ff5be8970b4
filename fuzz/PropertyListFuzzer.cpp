// Any bytes are read or refused; what was read and can be told in XML is read back the same.

#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "hotfix/base/PropertyList.h"

using namespace installer;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto value =
      PropertyList::parse(std::string_view(reinterpret_cast<const char*>(data), size));
  if (!value) return 0;
  const auto bytes = PropertyList::serialize(*value);
  if (bytes && PropertyList::parse(*bytes) != value) std::abort();
  return 0;
}
