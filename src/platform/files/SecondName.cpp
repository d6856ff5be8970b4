#include "platform/files/SecondName.h"

#include <unistd.h>

#include <exception>

namespace installer {

namespace {

constexpr mode_t kPrivateMode = 0700;
constexpr mode_t kModeOfOthers = 077;
constexpr const char* kName = "item";

// Who may write into the folder above can have put another folder in the place of the new one.
bool isOursAlone(const Descriptor& folder) {
  const auto status = statusOf(folder);
  return status && status->st_uid == ::geteuid() && (status->st_mode & kModeOfOthers) == 0;
}

}  // namespace

SecondName::SecondName(FileChanges& changes, const Entry& entry)
    : _changes(changes), _above(entry.folder) {
  std::string name = _changes.freeTemporaryName(_above);
  if (_changes.makeFolder(_above, name, kPrivateMode) != 0) return;
  _folderName = std::move(name);
  Descriptor folder = openFolder(_above, _folderName);
  if (!isOursAlone(folder)) return;
  _folder = std::move(folder);
  if (_changes.makeSecondName(_above, entry.name, _folder.get(), kName) == 0) _status = look();
}

SecondName::~SecondName() {
  try {
    // What cannot be removed stays, as it would if the process were killed.
    if (_folder.valid()) (void)_changes.unlink(_folder.get(), kName);
    if (!_folderName.empty()) (void)_changes.removeEmptyFolder(_above, _folderName);
  } catch (const std::exception&) {  // no memory
  }
}

std::optional<struct stat> SecondName::look() const {
  auto status = statusOf(_folder.get(), kName);
  if (!status || kindOf(*status) != EntryKind::other) return std::nullopt;
  --status->st_nlink;
  return status;
}

int SecondName::changeOwner(uid_t owner, gid_t group) {
  return _changes.changeOwnerOfEntry(_folder.get(), kName, owner, group);
}

int SecondName::changeMode(mode_t mode) {
  return _changes.changeModeOfEntry(_folder.get(), kName, mode);
}

}  // namespace installer
