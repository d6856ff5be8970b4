#pragma once

#include <string_view>

namespace installer::xml {

inline constexpr std::string_view kBlanks = " \t\r\n";

inline bool isBlank(std::string_view text) {
  return text.find_first_not_of(kBlanks) == std::string_view::npos;
}

}  // namespace installer::xml
