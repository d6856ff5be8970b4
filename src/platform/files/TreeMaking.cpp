#include "platform/files/TreeMaking.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <utility>

#include "hotfix/base/Path.h"
#include "platform/Interruption.h"
#include "platform/files/Failure.h"
#include "platform/files/FolderReader.h"
#include "platform/files/ItemCopy.h"

namespace installer {

namespace {

constexpr mode_t kClosed = 0700;  // while it is made
constexpr mode_t kFolder = 0755;
constexpr mode_t kProgram = 0755;
constexpr mode_t kFile = 0644;

bool isEmpty(int folder, const std::string& name) {
  FolderReader reader(openFolder(folder, name));
  return !reader.next() && reader.error() == 0;
}

}  // namespace

TreeMaking::TreeMaking(const std::string& path, FileChanges::Door refusal)
    : _path(withoutTrailingSlashes(path)),
      _changes(std::move(refusal)),
      _parent(openPlace(_path)),
      _item(_changes, _parent.folder.get(), Claimed::yes) {}

bool TreeMaking::begin(FileError& error) {
  if (!_parent.usable()) return check(_parent.error, {}, error);
  if (!check(whyNotFree(), {}, error)) return false;
  _place = path::appendingComponent(path::deletingLastComponent(_path), _item.name());
  return check(makeItself(), {}, error);
}

int TreeMaking::whyNotFree() {
  const int folder = _parent.folder.get();
  const auto status = statusOf(folder, _parent.name);
  if (!status) return errno == ENOENT ? 0 : errno;
  return S_ISDIR(status->st_mode) && isEmpty(folder, _parent.name) ? 0 : EEXIST;
}

int TreeMaking::makeItself() {
  const std::string name = _item.name();
  const int made = _changes.makeFolder(_parent.folder.get(), name, kClosed);
  if (made == 0) _root = openFolder(_parent.folder.get(), name);
  const int error = made == 0 && !_root.valid() ? errno : made;
  if (error != 0) {
    if (made == 0) (void)_changes.removeEmptyFolder(_parent.folder.get(), name);
    _item.forget();
    return error;
  }
  _item.isMadeAsFolder(_root);
  return 0;
}

bool TreeMaking::addFolder(std::string_view path, FileError& error) {
  for (std::size_t end = 0; end < path.size();) {
    end = std::min(path.find('/', end + 1), path.size());
    const int made = _changes.makeFolder(_root.get(), std::string(path.substr(0, end)), kClosed);
    if (made != EEXIST && !check(made, path, error)) return false;
  }
  return true;
}

bool TreeMaking::addFile(const std::string& path, std::string_view bytes, FileError& error) {
  return check(fillFile(path, bytes), path, error);
}

int TreeMaking::fillFile(const std::string& path, std::string_view bytes) {
  Descriptor file;
  const int made = _changes.createFile(_root.get(), path, kFile, file);
  return made == 0 ? _changes.write(file.get(), bytes) : made;
}

// Copied as the folder's own "." so that a link that names it is followed.
bool TreeMaking::addCopy(const std::string& from, const std::string& path, FileError& error) {
  const std::string source = withoutTrailingSlashes(from);
  const std::string above = path::deletingLastComponent(path);
  const Descriptor folder = openFolder(_root.get(), above.empty() ? "." : above);
  if (!folder.valid()) return check(errno, path, error);
  TemporaryItem copy(_changes, folder.get());
  ItemCopy item(_changes, Flush::later);
  if (!item.build({AT_FDCWD, source + "/.", EntryKind::folder}, copy)) {
    const std::string below = item.failedItem().substr(source.size() + 2);
    error = failure(FileError::kOther, source + below, "copied", item.reason());
    return false;
  }
  const int named =
      _changes.renameKeepingExisting(folder.get(), copy.name(), path::lastComponent(path));
  if (named == 0) copy.forget();
  return check(named, path, error);
}

bool TreeMaking::finish(FileError& error) {
  return check(settleModes(openFolder(_root.get(), "."), 0), {}, error) &&
         check(_changes.flushFileSystem(_root.get()), {}, error) && check(giveName(), {}, error);
}

int TreeMaking::giveName() {
  checkInterruption();
  const int folder = _parent.folder.get();
  // A folder takes the place of nothing but an empty one.
  const int named = _changes.rename(folder, _item.name(), _parent.name);
  if (named != 0) return named == ENOTEMPTY || named == ENOTDIR ? EEXIST : named;
  _item.forget();
  (void)_changes.flushFolder(folder);  // it is there, and whole; a power cut can take the name back
  return 0;
}

int TreeMaking::settleModes(Descriptor folder, int depth) {
  if (!folder.valid()) return errno;
  if (depth > kMaximumDepth) return ELOOP;
  FolderReader reader(std::move(folder));
  while (const auto name = reader.next())
    if (const int error = settleMode(reader.descriptor(), *name, depth)) return error;
  if (reader.error() != 0) return reader.error();
  return _changes.changeMode(reader.descriptor(), kFolder);  // last: it opens what is below
}

int TreeMaking::settleMode(int folder, const std::string& name, int depth) {
  const auto status = statusOf(folder, name);
  if (!status) return errno;
  if (S_ISDIR(status->st_mode)) return settleModes(openFolder(folder, name), depth + 1);
  if (!S_ISREG(status->st_mode)) return 0;  // a link has none
  const mode_t mode = (status->st_mode & S_IXUSR) != 0 ? kProgram : kFile;
  return _changes.changeModeOfEntry(folder, name, mode);
}

bool TreeMaking::check(int error, std::string_view path, FileError& answer) {
  if (error == 0) return true;
  answer =
      failureWithItem(path.empty() ? _path : path::appendingComponent(_path, path), "made", error);
  return false;
}

std::unique_ptr<NewTree> beginTree(const std::string& path, FileError& error) {
  auto tree = std::make_unique<TreeMaking>(path, [](FileOperation) { return 0; });
  if (!tree->begin(error)) return nullptr;
  return tree;
}

}  // namespace installer
