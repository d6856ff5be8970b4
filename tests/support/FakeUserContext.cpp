#include "support/FakeUserContext.h"

#include <algorithm>

namespace installer::test {

void FakeUserContext::add(const User& user) {
  std::erase_if(userList, [&](const User& known) { return known.name == user.name; });
  userList.push_back(user);
}

std::optional<std::string> FakeUserContext::environment(const std::string& variable) {
  const auto found = variables.find(variable);
  return found != variables.end() ? std::optional(found->second) : std::nullopt;
}

std::optional<std::string> FakeUserContext::currentUserName() {
  const auto found = std::find_if(userList.begin(), userList.end(),
                                  [&](const User& user) { return user.uid == effectiveUser; });
  return found != userList.end() ? std::optional(found->name) : std::nullopt;
}

std::optional<User> FakeUserContext::findUser(const std::string& name) {
  const auto found = std::find_if(userList.begin(), userList.end(),
                                  [&](const User& user) { return user.name == name; });
  return found != userList.end() ? std::optional(*found) : std::nullopt;
}

std::optional<gid_t> FakeUserContext::findGroup(const std::string& name) {
  const auto found = groups.find(name);
  return found != groups.end() ? std::optional(found->second) : std::nullopt;
}

bool FakeUserContext::setEffectiveUserId(uid_t uid) {
  switches.push_back(uid);
  if (refusedUsers.contains(uid)) return false;
  effectiveUser = uid;
  return true;
}

}  // namespace installer::test
