#pragma once

#include "platform/UserContext.h"

namespace installer {

class PosixUserContext : public UserContext {
 public:
  [[nodiscard]] std::optional<std::string> environment(const std::string& variable) override;
  [[nodiscard]] std::optional<std::string> currentUserName() override;
  uid_t effectiveUserId() override;
  [[nodiscard]] std::optional<User> findUser(const std::string& name) override;
  [[nodiscard]] std::optional<gid_t> findGroup(const std::string& name) override;
  [[nodiscard]] bool setEffectiveUserId(uid_t uid) override;
};

}  // namespace installer
