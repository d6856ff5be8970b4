#include "platform/overlay/PlannedPlatform.h"

#include <sys/stat.h>

namespace installer::overlay {

std::optional<std::string> PlannedUsers::currentUserName() {
  if (_real.effectiveUserId() == _user) return _real.currentUserName();
  const std::optional<User> root = _real.findUser("root");
  return root && root->uid == _user ? std::optional(root->name) : std::nullopt;
}

std::optional<PropertyList::Dictionary> PlannedPreferences::domain(std::string_view name) {
  UserContext& users = *_real.users;
  const std::optional<User> user = users.consoleUser();
  if (user && !isRootOr(user->uid, users.effectiveUserId()))
    _tree.noteUnknown("the preferences of " + user->name);
  return _real.preferences->domain(name);
}

PlannedPlatform::PlannedPlatform(const Platform& real, const Maker& maker)
    : Platform(real),
      overlay(_users, maker),
      noted(overlay),
      _users(*real.users, maker.user),
      _processes(*real.processes),
      _preferences(real, overlay.tree()),
      _pasteboard(overlay, real.paths.pasteboard) {
  toldOnce = 0;
  saidOnce.clear();
  files = &overlay;
  children = &noted;
  log = &lines;
  users = &_users;
  processes = &_processes;
  preferences = &_preferences;
  pasteboard = &_pasteboard;
}

Maker rootAsMaker() {
  const mode_t mask = ::umask(0);
  (void)::umask(mask);  // it answers the one before
  return {.user = kRoot, .group = 0, .mask = mask};
}

}  // namespace installer::overlay
