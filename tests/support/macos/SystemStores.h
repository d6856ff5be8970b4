#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/FileManager.h"
#include "platform/Preferences.h"
#include "platform/UserContext.h"
#include "support/RecordingPasteboard.h"

namespace installer::test {

// The user defaults of a sandbox's users: the property lists in their homes. The system's own
// service tells those of real users only.
class HomePreferences : public Preferences {
 public:
  HomePreferences(FileManager& files, UserContext& users) : _files(files), _users(users) {}

  std::optional<PropertyList::Dictionary> domain(std::string_view name) override {
    const std::optional<User> user = _users.consoleUser();
    if (!user) return std::nullopt;
    const std::string file = user->home + "/Library/Preferences/" + std::string(name) + ".plist";
    const std::optional<std::string> bytes = _files.read(file);
    return bytes ? PropertyList::parseDictionary(*bytes) : std::nullopt;
  }

 private:
  FileManager& _files;
  UserContext& _users;
};

// What stands in for the machine's pasteboard and preferences in a sandbox: there is one pasteboard
// of the name on a machine, and tests run side by side.
struct SystemStores {
  SystemStores(FileManager& files, UserContext& users, const std::string&)
      : preferences(files, users) {}

  RecordingPasteboard pasteboard;
  HomePreferences preferences;
};

}  // namespace installer::test
