#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "hotfix/base/PropertyList.h"

namespace installer {

// The console user's preferences. Reading switches the effective user for the raw read and back; a
// way back that fails ends the process with status 1.
class Preferences {
 public:
  static constexpr std::string_view kGlobalDomain = ".GlobalPreferences";

  Preferences() = default;
  Preferences(const Preferences&) = delete;
  Preferences& operator=(const Preferences&) = delete;
  virtual ~Preferences() = default;

  // All values of a domain; nullopt when the user has none.
  [[nodiscard]] virtual std::optional<PropertyList::Dictionary> domain(std::string_view name) = 0;
};

}  // namespace installer
