#include "platform/files/LogOpening.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace installer {

namespace {

constexpr mode_t kLogMode = 0644;

// Everybody can put entries of all kinds into the folder of a log.
bool isOurs(const struct stat& status) {
  return S_ISREG(status.st_mode) && status.st_nlink == 1 && status.st_uid == ::geteuid();
}

// Always written at its end: another run may empty the file while this one still writes.
// Looked at before it is opened, and again when nobody can exchange it any more.
Descriptor reopen(FileChanges& changes, const Place& place) {
  const auto before = statusOf(place.folder.get(), place.name);
  if (!before || !isOurs(*before)) return {};
  Descriptor file = openEntry(place.folder.get(), place.name,
                              O_WRONLY | O_APPEND | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY);
  const auto status = statusOf(file);
  if (!status || !isOurs(*status) || changes.truncate(file.get()) != 0) return {};
  return file;
}

Descriptor createAnew(FileChanges& changes, const Place& place) {
  const int folder = place.folder.get();
  (void)changes.unlink(folder, place.name);  // what stays there makes the creation fail
  Descriptor file;
  if (changes.createFile(folder, place.name, kLogMode, file) != 0) return {};
  // Whatever the creation mask says, others read the log.
  (void)changes.changeMode(file.get(), kLogMode);  // they may still when this fails
  (void)::fcntl(file.get(), F_SETFL, O_APPEND);    // can not fail for an open file
  return file;
}

}  // namespace

int openLogFile(FileChanges& changes, const Place& place) {
  Descriptor file = reopen(changes, place);
  if (!file.valid()) file = createAnew(changes, place);
  return file.release();
}

}  // namespace installer
