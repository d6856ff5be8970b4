#pragma once

#include <string_view>

/// The library, and the values that its operations take and answer.
namespace installer {

/// The version of these headers, and of the library that they were installed with. A program that
/// was built with one version runs with every later one of the same major number.
inline constexpr std::string_view kVersion = "1.0.0";

inline constexpr int kVersionMajor = 1;  ///< changes when programs must be changed or built anew
inline constexpr int kVersionMinor = 0;  ///< changes when something new is there
inline constexpr int kVersionPatch = 0;  ///< changes when something was mended

}  // namespace installer
