#pragma once

#include <sys/types.h>

#include <optional>

namespace installer {

class UserContext;

// The process acts as another user for the lifetime of this object, as itself when there is no
// other user or the system refuses. A process that cannot come back must not go on with the wrong
// rights: it says so and ends at once with status 1.
class EffectiveUser {
 public:
  EffectiveUser(UserContext& users, std::optional<uid_t> uid);
  EffectiveUser(const EffectiveUser&) = delete;
  EffectiveUser& operator=(const EffectiveUser&) = delete;
  ~EffectiveUser();

 private:
  UserContext& _users;
  const uid_t _previous;
  const bool _switched;
};

}  // namespace installer
