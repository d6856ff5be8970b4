#pragma once

#include <sys/stat.h>

#include <optional>
#include <string>
#include <utility>

#include "platform/files/Ancestry.h"
#include "platform/files/FileChanges.h"
#include "platform/posix/Descriptor.h"

namespace installer {

// Whether an item is claimed (Claim.h) for as long as it has a temporary name. Not needed where a
// lock keeps others away who could take it for a left-over.
enum class Claimed { yes, no };

// An entry under a temporary name. Unless it has got its own name by then, it goes with this
// object, whatever ends its making: no half-made item outlives the operation.
class TemporaryItem {
 public:
  // Chooses a free name in the open folder, which must stay open. Nothing is made.
  TemporaryItem(FileChanges& changes, int folder, Claimed claimed = Claimed::no)
      : _changes(changes),
        _folder(folder),
        _name(changes.freeTemporaryName(folder)),
        _isClaimed(claimed == Claimed::yes) {}
  TemporaryItem(TemporaryItem&& other) noexcept
      : _changes(other._changes),
        _folder(other._folder),
        _name(std::exchange(other._name, {})),
        _isClaimed(other._isClaimed),
        _ownFolder(other._ownFolder),
        _made(std::move(other._made)) {}
  TemporaryItem(const TemporaryItem&) = delete;
  TemporaryItem& operator=(const TemporaryItem&) = delete;
  // Removes the entry, a folder that was made with all below it; what cannot be removed stays.
  ~TemporaryItem();

  int folder() const { return _folder; }
  // Empty when there is no such entry any more.
  const std::string& name() const { return _name; }
  bool exists() const { return !_name.empty(); }

  // For the maker, with what now stands under the name, and in the end, so that what is claimed
  // stays so. Answers the item as it was seen on that occasion, if it was.
  std::optional<struct stat> isMade(const Descriptor& item);
  void isMadeAsFolder(const Descriptor& item);
  void keepOpen(Descriptor item);

  // The entry is gone or has another name.
  void forget() { _name.clear(); }

 private:
  FileChanges& _changes;
  int _folder;
  std::string _name;
  bool _isClaimed;
  std::optional<FileIdentity> _ownFolder;
  Descriptor _made;  // open when it is claimed
};

}  // namespace installer
