#pragma once

#include <sys/stat.h>

#include <string>
#include <utility>

#include "platform/FileManager.h"
#include "platform/UserContext.h"
#include "platform/files/FileChanges.h"
#include "platform/posix/Descriptor.h"

namespace installer {

// Removes left-overs as FileManager::removeLeftOvers promises. Of the entries with other names only
// folders cost a look.
class LeftOverRemoval {
 public:
  LeftOverRemoval(FileChanges& changes, UserContext& users, LeftOvers which)
      : _changes(changes), _users(users), _which(which) {}

  void run(Descriptor folder) { walk(std::move(folder), 0); }

 private:
  void walk(Descriptor folder, int depth);
  void removeIfLeftOver(int folder, const std::string& name);
  bool isNamedByUs(int folder);
  // Invalid when there is no telling that nobody makes the entry.
  static Descriptor claimedEntry(int folder, const std::string& name, const struct stat& status);

  FileChanges& _changes;
  UserContext& _users;
  LeftOvers _which;
};

}  // namespace installer
