#pragma once

#include <string>

#include "platform/UserContext.h"

namespace installer::ctl {

// The users with another one in front of the machine where that is root or nobody: the one whom an
// instance was handed to. Who works by hand, or for a machine, has root in USER, and the instance
// is not to become root's.
class InstanceUser : public UserContext {
 public:
  // `users` must outlive it.
  InstanceUser(UserContext& users, const std::string& rcpHome);

  [[nodiscard]] std::optional<std::string> environment(const std::string& variable) override;
  [[nodiscard]] std::optional<std::string> currentUserName() override {
    return _users.currentUserName();
  }
  uid_t effectiveUserId() override { return _users.effectiveUserId(); }
  [[nodiscard]] std::optional<User> findUser(const std::string& name) override {
    return _users.findUser(name);
  }
  [[nodiscard]] std::optional<gid_t> findGroup(const std::string& name) override {
    return _users.findGroup(name);
  }
  [[nodiscard]] bool setEffectiveUserId(uid_t uid) override {
    return _users.setEffectiveUserId(uid);
  }

 private:
  UserContext& _users;
  std::optional<std::string> _user;  // nullopt when the one in front of the machine will do
};

}  // namespace installer::ctl
