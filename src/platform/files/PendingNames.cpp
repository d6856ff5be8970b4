#include "platform/files/PendingNames.h"

#include <sys/resource.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <utility>

#include "platform/files/Opening.h"
#include "platform/files/TreeRemoval.h"

namespace installer {

namespace {

constexpr std::size_t kMaximumNames = 4096;
constexpr rlim_t kMaximumFolders = 400;
constexpr rlim_t kMinimumFolders = 8;

// A part of the descriptors that the process may have; the walk itself needs some on every level.
std::size_t maximumFolders() {
  rlimit limit{};
  if (::getrlimit(RLIMIT_NOFILE, &limit) != 0) return kMinimumFolders;
  return std::clamp<rlim_t>(limit.rlim_cur / 3, kMinimumFolders, kMaximumFolders);
}

bool isFolderInTheWay(int error) {
  return error == EISDIR || error == ENOTDIR || error == ENOTEMPTY || error == EEXIST;
}

}  // namespace

PendingNames::PendingNames(FileChanges& changes)
    : _changes(changes), _maximumFolders(maximumFolders()) {}

void PendingNames::add(const OpenFolder& folder, TemporaryItem temporary, std::string name,
                       TakenName taken) {
  _folders.insert(folder);
  _waiting.push_back({folder, std::move(temporary), std::move(name), taken});
  if (_waiting.size() >= kMaximumNames || _folders.size() >= _maximumFolders) settle();
}

void PendingNames::settle() {
  flushBatch();
  for (Waiting& copy : _waiting) giveName(copy);
  _waiting.clear();
  _folders.clear();
}

void PendingNames::finish() {
  settle();
  flush(_settled);
}

// A destination can reach over several file systems.
void PendingNames::flushBatch() {
  std::map<dev_t, OpenFolder> fileSystems;
  for (const OpenFolder& folder : _folders) {
    if (const auto status = statusOf(*folder)) fileSystems.try_emplace(status->st_dev, folder);
  }
  flush(fileSystems);
  _settled.merge(fileSystems);
}

void PendingNames::flush(const std::map<dev_t, OpenFolder>& fileSystems) {
  for (const auto& [device, folder] : fileSystems) {
    (void)_changes.flushFileSystem(folder->get());  // only a power failure could tell
  }
}

void PendingNames::giveName(Waiting& copy) {
  const int folder = copy.folder->get();
  const int error = copy.taken == TakenName::replace
                        ? replace(copy)
                        : _changes.renameKeepingExisting(folder, copy.temporary.name(), copy.name);
  if (error == 0) return copy.temporary.forget();
  if (copy.taken != TakenName::replace) return;
  (void)removeEntry(_changes, folder, copy.name);  // the old entry goes even so
}

// A rename replaces a file or link by itself, without a moment in which there is none. Where one of
// the two is a folder, the old entry has to go first.
int PendingNames::replace(const Waiting& copy) {
  const int folder = copy.folder->get();
  const int error = _changes.rename(folder, copy.temporary.name(), copy.name);
  if (!isFolderInTheWay(error)) return error;
  (void)removeEntry(_changes, folder, copy.name);  // the rename will tell
  return _changes.rename(folder, copy.temporary.name(), copy.name);
}

}  // namespace installer
