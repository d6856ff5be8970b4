#pragma once

#include "platform/Preferences.h"

namespace installer {

class UserContext;

// The user defaults of the console user, asked for as that user. A user who is unknown, or whom the
// process may not become, is asked for as the current user.
class CoreFoundationPreferences : public Preferences {
 public:
  explicit CoreFoundationPreferences(UserContext& users) : _users(users) {}

  [[nodiscard]] std::optional<PropertyList::Dictionary> domain(std::string_view name) override;

 private:
  UserContext& _users;
};

}  // namespace installer
