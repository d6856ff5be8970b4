#include "ctl/remove/InstanceUser.h"

#include "instance/InstanceLayout.h"
#include "platform/EntryFacts.h"
#include "platform/UserName.h"

namespace installer::ctl {

InstanceUser::InstanceUser(UserContext& users, const std::string& rcpHome) : _users(users) {
  const std::optional<User> console = users.consoleUser();
  if (console && console->uid != kRoot) return;
  const auto facts = entryAt(InstanceLayout::deploy(rcpHome));
  if (facts && facts->owner != kRoot) _user = nameOfUser(facts->owner);
}

std::optional<std::string> InstanceUser::environment(const std::string& variable) {
  return variable == "USER" && _user ? _user : _users.environment(variable);
}

}  // namespace installer::ctl
