#pragma once

#include "platform/Preferences.h"

namespace installer {

class FileManager;
class UserContext;

// Preferences kept as property lists in the console user's home folder,
// "Library/Preferences/<domain>.plist". The home comes from the user database, from HOME when it
// does not know the user. A user who is unknown, or whom the process may not become, is read as
// the current user.
class UserPreferences : public Preferences {
 public:
  UserPreferences(FileManager& files, UserContext& users) : _files(files), _users(users) {}

  [[nodiscard]] std::optional<PropertyList::Dictionary> domain(std::string_view name) override;

 private:
  FileManager& _files;
  UserContext& _users;
};

}  // namespace installer
