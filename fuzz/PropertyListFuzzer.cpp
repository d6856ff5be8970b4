// Any bytes are read or refused; what was read and can be told in XML is told the same once more.

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
  if (!bytes) return 0;
  // The texts are compared: a number that is none (NaN) is not equal to itself.
  const auto again = PropertyList::parse(*bytes);
  if (!again || PropertyList::serialize(*again) != bytes) std::abort();
  return 0;
}
