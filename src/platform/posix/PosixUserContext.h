#pragma once

#include "platform/UserContext.h"

namespace installer {

class PosixUserContext : public UserContext {
 public:
  std::optional<std::string> environment(const std::string& variable) override;
  std::optional<std::string> currentUserName() override;
  uid_t effectiveUserId() override;
  std::optional<User> findUser(const std::string& name) override;
  std::optional<gid_t> findGroup(const std::string& name) override;
  bool setEffectiveUserId(uid_t uid) override;
};

}  // namespace installer
