#pragma once

#include <sys/stat.h>

#include <set>

#include "platform/files/Ancestry.h"
#include "platform/files/FileChanges.h"
#include "platform/files/Opening.h"
#include "platform/files/Ownership.h"
#include "platform/posix/Descriptor.h"

namespace installer {

// Gives owner, group and mode to everything below one folder. An entry that has them already costs
// one look at it, as long as the one before it had them too. An entry is changed through a
// descriptor that names it, so that nobody can put a link in its place between the look and the
// change; a socket, pipe or device through a second name where the system has no descriptors for
// them.
class AttributeWalk {
 public:
  // Links that are in `spared` keep their owner; the set must live as long as the walk.
  AttributeWalk(FileChanges& changes, const Ownership& ownership, mode_t mode,
                const std::set<FileIdentity>& spared);

  // True when everything below the folder has the attributes in the end; a part of the ownership
  // that is not known cannot be had.
  [[nodiscard]] bool changeBelow(Descriptor folder);

 private:
  void walk(Descriptor folder, bool isLikelyRight, int depth);
  bool visit(const Entry& entry, bool isLikelyRight, int depth);
  void enter(const Entry& entry, bool wasRight, int depth);
  void openAndChange(const Entry& entry);
  void changeByAnotherName(const Entry& entry);
  // Through an OpenItem or a SecondName.
  template <class Item>
  void change(Item&& item, const struct stat& status);

  static Descriptor openItem(const Entry& entry);

  bool isRight(const struct stat& status) const;
  bool hasOwnership(const struct stat& status) const;
  bool hasMode(const struct stat& status) const;
  bool isSomebodyElses(const struct stat& status) const;

  void check(bool succeeded) { _succeeded = _succeeded && succeeded; }

  FileChanges& _changes;
  Ownership _ownership;
  mode_t _mode;
  const std::set<FileIdentity>& _spared;
  bool _succeeded = true;
};

}  // namespace installer
