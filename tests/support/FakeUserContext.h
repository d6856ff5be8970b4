#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

#include "platform/UserContext.h"

namespace installer::test {

// A user database, an environment and an effective user of the test's own making.
class FakeUserContext : public UserContext {
 public:
  std::map<std::string, std::string> variables;
  std::vector<User> userList;
  std::map<std::string, gid_t> groups;
  uid_t effectiveUser = 0;
  std::set<uid_t> refusedUsers;  // nobody may become these
  std::vector<uid_t> switches;   // every change asked for, granted or not

  // Takes the place of a user of the same name.
  void add(const User& user);

  std::optional<std::string> environment(const std::string& variable) override;
  std::optional<std::string> currentUserName() override;
  uid_t effectiveUserId() override { return effectiveUser; }
  std::optional<User> findUser(const std::string& name) override;
  std::optional<gid_t> findGroup(const std::string& name) override;
  bool setEffectiveUserId(uid_t uid) override;
};

}  // namespace installer::test
