#pragma once

#include <optional>
#include <string_view>

#include "hotfix/base/PropertyList.h"

namespace installer::PropertyList {

// The first bytes of every binary list; a digit of the format's version follows.
inline constexpr std::string_view kBinaryMagic = "bplist0";

// Reads the binary form. Objects may be shared, so that a small file can stand for a large list:
// the bounds count every visit of an object, of which there may be as many as the file has bytes
// and 10,000 more, and text and data that are taken over, eight times the file and 1 MiB more and
// at most 64 MiB. What binary lists hold and XML cannot tell is read as the nearest that it can: a
// character that no document may hold, be it half of a surrogate pair, as U+FFFD, a date beyond the
// years 1 to 9999 as the first or last second in them. Somebody else's value would otherwise keep
// the whole list from being read or written. Types that no property list holds (null, sets, links)
// make the list unreadable.
[[nodiscard]] std::optional<Value> readBinary(std::string_view bytes);

}  // namespace installer::PropertyList
