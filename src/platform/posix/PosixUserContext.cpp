#include "platform/posix/PosixUserContext.h"

#include <grp.h>
#include <pwd.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <vector>

#include "platform/UserName.h"
#include "platform/posix/Memory.h"

namespace installer {
namespace {

// Answers `read(entry)` for the entry that a reentrant look-up finds. The space for its texts grows
// until they fit: a group's member list has no upper bound.
template <class Entry, class Lookup, class Read>
auto findEntry(Lookup lookup, Read read) -> std::optional<decltype(read(Entry{}))> {
  std::vector<char> space(64);
  for (;;) {
    Entry entry{};
    Entry* found = nullptr;
    const int error = lookup(&entry, space.data(), space.size(), &found);
    if (error == ERANGE) {
      space.resize(space.size() * 4);
    } else if (error != EINTR) {
      checkMemory(error);
      if (found == nullptr) return std::nullopt;
      return read(*found);
    }
  }
}

// What `find()` answers, from the second time on without asking it, unless it found nothing.
template <class Known, class Find>
auto findOnce(Known& known, const std::string& name, Find find) -> decltype(find()) {
  if (const auto place = known.find(name); place != known.end()) return place->second;
  const auto found = find();
  if (found) known.emplace(name, *found);
  return found;
}

}  // namespace

std::optional<std::string> nameOfUser(uid_t user) {
  return findEntry<passwd>([&](auto... space) { return getpwuid_r(user, space...); },
                           [](const passwd& entry) { return std::string(entry.pw_name); });
}

std::optional<std::string> PosixUserContext::environment(const std::string& variable) {
  const char* value = std::getenv(variable.c_str());
  if (value == nullptr) return std::nullopt;
  return value;
}

std::optional<std::string> PosixUserContext::currentUserName() {
  return nameOfUser(geteuid());
}

uid_t PosixUserContext::effectiveUserId() {
  return geteuid();
}

std::optional<User> PosixUserContext::findUser(const std::string& name) {
  return findOnce(_users, name, [&] {
    return findEntry<passwd>([&](auto... space) { return getpwnam_r(name.c_str(), space...); },
                             [](const passwd& entry) {
                               return User{entry.pw_name, entry.pw_uid, entry.pw_gid, entry.pw_dir};
                             });
  });
}

std::optional<gid_t> PosixUserContext::findGroup(const std::string& name) {
  return findOnce(_groups, name, [&] {
    return findEntry<group>([&](auto... space) { return getgrnam_r(name.c_str(), space...); },
                            [](const group& entry) { return entry.gr_gid; });
  });
}

bool PosixUserContext::setEffectiveUserId(uid_t uid) {
  return seteuid(uid) == 0;
}

}  // namespace installer
