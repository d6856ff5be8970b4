#pragma once

#include <sys/types.h>

#include <cstddef>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "platform/files/FileChanges.h"
#include "platform/files/TemporaryItem.h"
#include "platform/posix/Descriptor.h"

namespace installer {

using OpenFolder = std::shared_ptr<const Descriptor>;

// What happens to an entry that has the name already when a copy gets it.
enum class TakenName {
  replace,  // it is removed, folders included
  keep,     // it stays and the copy is dropped
};

// Copies that wait under temporary names: one flush of the file system for a whole batch, then the
// renames, and one flush more when all is done. Holds a bounded number of names and of open
// folders. Copies that still wait in the end are removed.
class PendingNames {
 public:
  explicit PendingNames(FileChanges& changes);

  void add(const OpenFolder& folder, TemporaryItem temporary, std::string name, TakenName taken);

  // Gives every waiting copy its name. Failures are passed over; a copy that cannot be named is
  // removed, and with TakenName::replace so is what it should have replaced.
  void settle();

  // The last of all: settles, and flushes the file systems on which copies got their names.
  void finish();

 private:
  struct Waiting {
    OpenFolder folder;
    TemporaryItem temporary;  // in that folder
    std::string name;
    TakenName taken;
  };

  void flushBatch();
  void flush(const std::map<dev_t, OpenFolder>& fileSystems);
  void giveName(Waiting& copy);
  [[nodiscard]] int replace(const Waiting& copy);

  FileChanges& _changes;
  std::size_t _maximumFolders;
  std::vector<Waiting> _waiting;
  std::set<OpenFolder> _folders;         // those of _waiting
  std::map<dev_t, OpenFolder> _settled;  // one folder on each file system that took part
};

}  // namespace installer
