#pragma once

#include <string>

namespace installer {

// The system that the program runs on, in its own words.
struct SystemName {
  std::string name;     // "Linux", "Darwin"
  std::string release;  // of its kernel
  std::string version;  // of that kernel's build
  std::string machine;  // "x86_64", "arm64"
};

// Every text is empty when the system does not tell.
[[nodiscard]] SystemName systemName();

}  // namespace installer
