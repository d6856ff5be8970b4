#pragma once

#include "platform/Preferences.h"

namespace installer {

class UserContext;

// The user defaults of the console user, asked for as that user. A user who is unknown, or whom the
// process may not become, is asked for as the current user. The service that keeps them may not
// answer for a user who has no session: then they are read where it keeps them.
class CoreFoundationPreferences : public Preferences {
 public:
  CoreFoundationPreferences(UserContext& users, Preferences& files)
      : _users(users), _files(files) {}

  [[nodiscard]] std::optional<PropertyList::Dictionary> domain(std::string_view name) override;

 private:
  UserContext& _users;
  Preferences& _files;
};

}  // namespace installer
