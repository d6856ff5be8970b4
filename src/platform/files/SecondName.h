#pragma once

#include <sys/stat.h>

#include <optional>
#include <string>

#include "platform/files/FileChanges.h"
#include "platform/files/Opening.h"
#include "platform/posix/Descriptor.h"

namespace installer {

// A socket, pipe or device that no descriptor can name, under a second name in a folder beside it
// that is closed to everybody else: whatever becomes of its own name, what is changed is what was
// looked at. The second name and its folder go with this object; a process that is killed leaves
// them as left-overs.
class SecondName {
 public:
  SecondName(FileChanges& changes, const Entry& entry);
  SecondName(const SecondName&) = delete;
  SecondName& operator=(const SecondName&) = delete;
  ~SecondName();

  // Without the second name among its names. nullopt when there is none, or what has got it is
  // something that descriptors can name.
  const std::optional<struct stat>& status() const { return _status; }

  [[nodiscard]] int changeOwner(uid_t owner, gid_t group);
  [[nodiscard]] int changeMode(mode_t mode);

 private:
  std::optional<struct stat> look() const;

  FileChanges& _changes;
  int _above;
  std::string _folderName;  // empty when there is no folder
  Descriptor _folder;       // invalid when it is not ours alone
  std::optional<struct stat> _status;
};

}  // namespace installer
