#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Preferences.h"

namespace installer::test {

// Holds the domains that the test puts into it, and remembers what it was asked for.
class FakePreferences : public Preferences {
 public:
  std::map<std::string, PropertyList::Dictionary> domains;
  std::vector<std::string> asked;

  std::optional<PropertyList::Dictionary> domain(std::string_view name) override {
    asked.emplace_back(name);
    const auto found = domains.find(std::string(name));
    return found != domains.end() ? std::optional(found->second) : std::nullopt;
  }
};

}  // namespace installer::test
