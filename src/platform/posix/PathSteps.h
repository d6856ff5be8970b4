#pragma once

#include <algorithm>
#include <string_view>

// What a walk along a path does that looks at each of its items itself.
namespace installer {

inline constexpr int kMaximumLinks = 40;  // as many as the system itself follows

// Takes the first component off the path, and the slash behind it. Empty where the path begins with
// a slash.
inline std::string_view takeComponent(std::string_view& path) {
  const std::string_view component = path.substr(0, path.find('/'));
  path.remove_prefix(std::min(component.size() + 1, path.size()));
  return component;
}

}  // namespace installer
