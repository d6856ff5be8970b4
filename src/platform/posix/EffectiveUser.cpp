#include "platform/posix/EffectiveUser.h"

#include <unistd.h>

#include "platform/UserContext.h"

namespace installer {

EffectiveUser::EffectiveUser(UserContext& users, std::optional<uid_t> uid)
    : _users(users),
      _previous(users.effectiveUserId()),
      _switched(uid && users.setEffectiveUserId(*uid)) {}

EffectiveUser::~EffectiveUser() {
  if (_switched && !_users.setEffectiveUserId(_previous)) _exit(1);
}

}  // namespace installer
