#include "platform/files/ItemCopy.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <optional>
#include <utility>

#include "platform/files/Ancestry.h"
#include "platform/files/Failure.h"
#include "platform/files/FileSystemCalls.h"
#include "platform/files/FolderReader.h"
#include "platform/files/Opening.h"

namespace installer {

namespace {

constexpr mode_t kKeptModeBits = 01777;  // a copy must not pass on the right to act as its owner
constexpr mode_t kPrivateFolder = 0700;

mode_t modeOfCopy(const struct stat& source) {
  return source.st_mode & kKeptModeBits;
}

std::array<timespec, 2> timesOf(const struct stat& status) {
  return {timespec{0, UTIME_OMIT}, syscalls::modificationTime(status)};
}

void giveTime(int copy, const struct stat& source) {
  (void)::futimens(copy, timesOf(source).data());  // not every file system keeps times
}

// 0 when the open folder may receive a copy of the source; it must not be the source or below it.
int checkOutside(int folder, const struct stat& source) {
  const auto inside = isInside(folder, identityOf(source));
  if (!inside) return errno;
  return *inside ? EINVAL : 0;
}

}  // namespace

bool ItemCopy::build(const Entry& source, TemporaryItem& temporary) {
  NewFileModes modes;
  return build(source, temporary, modes);
}

bool ItemCopy::build(const Entry& source, TemporaryItem& temporary, NewFileModes& modes) {
  _item = source.name;
  _temporary = &temporary;
  const bool whole = copyEntry(source, {temporary.folder(), temporary.name(), modes}, 0);
  if (!whole && !statusOf(temporary.folder(), temporary.name())) temporary.forget();
  return whole;
}

bool ItemCopy::copyEntry(const Entry& source, const Target& copy, int depth) {
  switch (source.kind) {
    case EntryKind::file:
      return copyFile(source, copy);
    case EntryKind::link:
      return copyLink(source, copy);
    case EntryKind::folder:
      return copyFolder(source, copy, depth);
    case EntryKind::other:
      return fail("is not a regular file, folder or link");
    case EntryKind::unknown:
      break;
  }
  const auto status = statusOf(source.folder, source.name);
  if (!status) return check(errno);
  return copyEntry({source.folder, source.name, kindOf(*status)}, copy, depth);
}

bool ItemCopy::copyFile(const Entry& source, const Target& copy) {
  const RegularFile from = openRegularFile(source.folder, source.name, Seen::yes);
  if (!from.valid()) return check(errno);
  if (!mayTake(from.status)) return false;
  TemporaryItem* const temporary = takeTemporary();
  Descriptor to;
  const mode_t mode = syscalls::modeToBeginWith(modeOfCopy(from.status));
  if (!check(_changes.createFile(copy.folder, copy.name, mode, to))) return false;
  const auto seen = temporary != nullptr ? temporary->isMade(to) : std::nullopt;
  if (!check(fillFile(from, to, copy.modes, seen))) {
    (void)_changes.unlink(copy.folder, copy.name);  // the first error is the one to tell
    return false;
  }
  if (temporary != nullptr) temporary->keepOpen(std::move(to));
  return true;
}

// The mode is there from the beginning if it can be, for whoever may open the copy may do so in the
// end as well.
int ItemCopy::fillFile(const RegularFile& from, const Descriptor& to, NewFileModes& modes,
                       const std::optional<struct stat>& seen) {
  const struct stat& status = from.status;
  if (isBorrowed(status, _owner)) return EPERM;
  const auto size = static_cast<std::size_t>(status.st_size);
  if (const int error = _changes.copyBytes(from.file.get(), to.get(), size)) return error;
  syscalls::copyAttributes(from.file.get(), to.get());
  giveTime(to.get(), status);
  const mode_t mode = modeOfCopy(status);
  if (syscalls::modeToBeginWith(mode) != mode || !modes.isExact(to, mode, seen)) {
    if (const int error = _changes.changeMode(to.get(), mode)) return error;
  }
  return _flush == Flush::eachFile ? _changes.flush(to.get()) : 0;
}

bool ItemCopy::copyLink(const Entry& source, const Target& copy) {
  const Descriptor link(syscalls::openItem(source.folder, source.name.c_str()));
  const auto status = statusOf(link);
  if (!status) return check(errno);
  if (!mayTake(*status)) return false;
  const auto target = targetOf(link);
  if (!target) return check(errno);
  if (!check(_changes.makeLink(copy.folder, copy.name, *target))) return false;
  const auto times = timesOf(*status);
  const char* const name = copy.name.c_str();
  (void)::utimensat(copy.folder, name, times.data(), AT_SYMLINK_NOFOLLOW);  // not kept everywhere
  return true;
}

bool ItemCopy::copyFolder(const Entry& source, const Target& copy, int depth) {
  if (depth >= kMaximumDepth) return check(ELOOP);
  Descriptor from = openFolder(source.folder, source.name);
  const auto status = statusOf(from);
  if (!status) return check(errno);
  if (!mayTake(*status)) return false;
  if (depth == 0 && !check(checkOutside(copy.folder, *status))) return false;
  if (!check(_changes.makeFolder(copy.folder, copy.name, kPrivateFolder))) return false;
  return fillFolder(std::move(from), copy, *status, depth);
}

// Only the item that was asked for is judged, which is the first one opened.
bool ItemCopy::mayTake(const struct stat& opened) {
  const auto mayOwn = std::exchange(_mayOwn, nullptr);
  return !mayOwn || mayOwn(opened.st_uid) || fail("belongs to another user");
}

// A folder gets its mode and time after its entries, and also when they are not all there.
bool ItemCopy::fillFolder(Descriptor from, const Target& copy, const struct stat& status,
                          int depth) {
  TemporaryItem* const temporary = takeTemporary();  // what is below it goes with it
  Descriptor to = openFolder(copy.folder, copy.name);
  if (!to.valid()) {
    (void)check(errno);  // remembers the error; the answer is known
    (void)_changes.removeEmptyFolder(copy.folder, copy.name);  // nothing was copied
    return false;
  }
  if (temporary != nullptr) temporary->isMadeAsFolder(to);
  syscalls::copyAttributes(from.get(), to.get());
  const bool whole = copyEntries(std::move(from), to.get(), depth);
  giveTime(to.get(), status);
  const bool isFinished = check(_changes.changeMode(to.get(), modeOfCopy(status))) && whole;
  if (temporary != nullptr) temporary->keepOpen(std::move(to));
  return isFinished;
}

bool ItemCopy::copyEntries(Descriptor from, int to, int depth) {
  FolderReader reader(std::move(from));
  NewFileModes modes;
  const std::size_t ownLength = _item.size();
  while (const auto name = reader.next()) {
    _item.append("/").append(*name);
    const Entry source{reader.descriptor(), *name, reader.kind()};
    if (!copyEntry(source, {to, *name, modes}, depth + 1)) return false;
    _item.resize(ownLength);
  }
  return check(reader.error());
}

bool ItemCopy::check(int error) {
  return error == 0 || fail(reasonOf(error));
}

// Only the first failure counts: later ones follow from it.
bool ItemCopy::fail(const std::string& reason) {
  if (_reason.empty()) {
    _failedItem = _item;
    _reason = reason;
  }
  return false;
}

}  // namespace installer
