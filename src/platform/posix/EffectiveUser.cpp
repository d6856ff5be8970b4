#include "platform/posix/EffectiveUser.h"

#include <unistd.h>

#include "platform/Platform.h"
#include "platform/SystemLog.h"
#include "platform/UserContext.h"

namespace installer {

EffectiveUser::EffectiveUser(UserContext& users, std::optional<uid_t> uid)
    : _users(users),
      _previous(users.effectiveUserId()),
      _switched(uid && users.setEffectiveUserId(*uid)) {}

// The line is a fixed one: making another could fail.
EffectiveUser::~EffectiveUser() {
  if (!_switched || _users.setEffectiveUserId(_previous)) return;
  Platform::current().log->write(LogLevel::error,
                                 "The process could not become its own user again. It ends here.");
  _exit(1);
}

}  // namespace installer
