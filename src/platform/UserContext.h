#pragma once

#include <sys/types.h>

#include <optional>
#include <string>

namespace installer {

inline constexpr uid_t kRoot = 0;

constexpr bool isRootOr(uid_t user, uid_t owner) {
  return owner == kRoot || owner == user;
}

struct User {
  std::string name;
  uid_t uid = 0;
  gid_t gid = 0;     // primary group
  std::string home;  // from the user database
};

// Who runs the process, for whom, and the environment it was given.
class UserContext {
 public:
  UserContext() = default;
  UserContext(const UserContext&) = delete;
  UserContext& operator=(const UserContext&) = delete;
  virtual ~UserContext() = default;

  // The variable's value, which may be empty; nullopt when it is unset.
  [[nodiscard]] virtual std::optional<std::string> environment(const std::string& variable) = 0;

  // The name of the process's effective user; nullopt when the user database does not know it.
  [[nodiscard]] virtual std::optional<std::string> currentUserName() = 0;
  virtual uid_t effectiveUserId() = 0;

  [[nodiscard]] virtual std::optional<User> findUser(const std::string& name) = 0;
  [[nodiscard]] virtual std::optional<gid_t> findGroup(const std::string& name) = 0;

  // Changes the effective user; false, with nothing changed, when the system refuses.
  [[nodiscard]] virtual bool setEffectiveUserId(uid_t uid) = 0;

  // The user in front of the machine: the value of USER, even when it is empty or unknown, else
  // currentUserName().
  [[nodiscard]] std::optional<std::string> consoleUserName() {
    if (auto user = environment("USER")) return user;
    return currentUserName();
  }
  // That user; nullopt when the user database does not know them.
  [[nodiscard]] std::optional<User> consoleUser() {
    const std::optional<std::string> name = consoleUserName();
    return name ? findUser(*name) : std::nullopt;
  }
  // Whether what this user left in a folder open to all may be acted upon: root, the effective user
  // and the console user only.
  bool trusts(uid_t owner) {
    const std::optional<User> user = consoleUser();
    return isOwn(owner) || (user && user->uid == owner);
  }
  // Whether this is root or the effective user, who need nobody's leave here.
  bool isOwn(uid_t owner) { return isRootOr(effectiveUserId(), owner); }
};

}  // namespace installer
