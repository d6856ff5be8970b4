#include "base/LetterCase.h"

#include <utf8proc.h>

#include <cstddef>

namespace installer::letterCase {

std::string lowered(std::string_view text) {
  std::string result;
  while (!text.empty()) {
    utf8proc_int32_t point = 0;
    const auto* bytes = reinterpret_cast<const utf8proc_uint8_t*>(text.data());
    const utf8proc_ssize_t length =
        utf8proc_iterate(bytes, static_cast<utf8proc_ssize_t>(text.size()), &point);
    if (length <= 0) {
      result += text.front();
      text.remove_prefix(1);
      continue;
    }
    utf8proc_uint8_t encoded[4];
    const utf8proc_ssize_t written = utf8proc_encode_char(utf8proc_tolower(point), encoded);
    result.append(reinterpret_cast<const char*>(encoded), static_cast<std::size_t>(written));
    text.remove_prefix(static_cast<std::size_t>(length));
  }
  return result;
}

bool equalIgnoringCase(std::string_view left, std::string_view right) {
  return lowered(left) == lowered(right);
}

}  // namespace installer::letterCase
