#pragma once

#include <map>

#include "platform/UserContext.h"

namespace installer {

// Users and groups that were found keep their numbers as long as this lives: the database is not
// read again for each of the many questions of a run.
class PosixUserContext : public UserContext {
 public:
  [[nodiscard]] std::optional<std::string> environment(const std::string& variable) override;
  [[nodiscard]] std::optional<std::string> currentUserName() override;
  uid_t effectiveUserId() override;
  [[nodiscard]] std::optional<User> findUser(const std::string& name) override;
  [[nodiscard]] std::optional<gid_t> findGroup(const std::string& name) override;
  [[nodiscard]] bool setEffectiveUserId(uid_t uid) override;

 private:
  std::map<std::string, User> _users;
  std::map<std::string, gid_t> _groups;
};

}  // namespace installer
