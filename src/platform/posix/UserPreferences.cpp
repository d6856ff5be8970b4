#include "platform/posix/UserPreferences.h"

#include "platform/FileManager.h"
#include "platform/UserContext.h"
#include "platform/posix/EffectiveUser.h"

namespace installer {
namespace {

std::optional<std::string> homeOf(const std::optional<User>& user, UserContext& users) {
  return user ? user->home : users.environment("HOME");
}

std::optional<std::string> readAs(const std::optional<User>& user, const std::string& file,
                                  FileManager& files, UserContext& users) {
  const EffectiveUser scope(users, user ? std::optional(user->uid) : std::nullopt);
  return files.read(file);
}

}  // namespace

std::optional<PropertyList::Dictionary> UserPreferences::domain(std::string_view name) {
  const std::optional<User> user = _users.consoleUser();
  const std::optional<std::string> home = homeOf(user, _users);
  if (!home || home->empty()) return std::nullopt;

  const std::string file = *home + "/Library/Preferences/" + std::string(name) + ".plist";
  const std::optional<std::string> bytes = readAs(user, file, _files, _users);
  return bytes ? PropertyList::parseDictionary(*bytes) : std::nullopt;
}

}  // namespace installer
