#pragma once

#include <string>
#include <string_view>

// Letters without regard to case, by Unicode's simple mappings: no locale, no data file. Bytes that
// are not UTF-8 stay as they are.
namespace installer::letterCase {

std::string lowered(std::string_view text);

bool equalIgnoringCase(std::string_view left, std::string_view right);

}  // namespace installer::letterCase
