#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace installer::ctl::lint {

// An entry of a properties file as the platform reads it, in 16-bit units.
struct JavaEntry {
  std::u16string key;
  std::u16string value;
  friend bool operator==(const JavaEntry&, const JavaEntry&) = default;
};

// The entry of one line of Latin-1 that is no comment and not continued; nullopt where "\u" stands
// without four hexadecimal digits, for which the platform refuses the whole file.
[[nodiscard]] std::optional<JavaEntry> javaEntryIn(std::string_view line);

}  // namespace installer::ctl::lint
