#include "platform/overlay/PlannedCopy.h"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <utility>

#include "platform/files/Failure.h"
#include "platform/files/Opening.h"
#include "platform/overlay/NodeCopy.h"
#include "platform/overlay/Removal.h"

namespace installer::overlay {

namespace {

std::string folderOf(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  return slash == std::string::npos ? "." : path.substr(0, slash + 1);
}

}  // namespace

Found linkedContent(Tree& tree, HeldNodes& held, const std::string& path,
                    const std::vector<std::string>& within) {
  const std::string link = withoutTrailingSlashes(path);
  Found file = held.behindLinks(link, [](const Node&) { return true; });
  if (!file.node) return file;
  std::vector<std::string> all = within;
  all.push_back(folderOf(link));
  const bool isContent =
      file.node->isFile() && std::any_of(all.begin(), all.end(), [&](const std::string& folder) {
        const Found around = held.item(folder);
        return around.node && around.node != tree.root() && isInside(file.folder, *around.node);
      });
  if (isContent) return file;
  Found refused;
  refused.error = EPERM;
  return refused;
}

std::optional<FileError> PlannedCopy::run() {
  findSource();
  _place = _held.place(_to);
  if (_existing != ExistingItem::replace) return copyItem();
  if (const int error = clearTheWay())
    return failure(FileError::kOther, _from.path, reasonOf(error));
  Failure failed = copyItem();
  if (failed && !_isNamed) removeOld();
  return failed;
}

void PlannedCopy::findSource() {
  _source = _held.entry(_from.path);
  if (!_from.within || !_source.node || !_source.node->isLink()) return;
  Found content = linkedContent(_tree, _held, _from.path, *_from.within);
  _source = _held.behindLink(_source.owner, std::move(content));
  _isBehindLink = true;
}

std::optional<FileError> PlannedCopy::copyItem() {
  if (!_source.node)
    return failure(tellsMissing(_source.error) ? FileError::kMissing : FileError::kOther,
                   _from.path, reasonOf(_source.error));
  if (_existing != ExistingItem::replace && old()) return answerExisting();
  return copy();
}

NodePtr PlannedCopy::old() {
  return _place.folder ? _tree.look(_place.folder, _place.name).node : _held.entry(_to).node;
}

std::optional<FileError> PlannedCopy::copy() {
  if (!_place.folder) return failure(FileError::kOther, _from.path, reasonOf(_place.error));
  NodeCopy item(_tree, _source.owner, _from.mayOwn);
  NodePtr made = item.build(_source.name, _source.node, _place.folder);
  Failure named;
  if (made) named = giveName(std::move(made));
  if (item.whole()) return named;
  const std::string below = item.failedItem().substr(_source.name.size());
  return failure(FileError::kOther, withoutTrailingSlashes(_from.path) + below, item.reason());
}

std::optional<FileError> PlannedCopy::giveName(NodePtr copy) {
  const int error = _tree.put(_place.folder, _place.name, std::move(copy));
  _isNamed = error == 0;
  if (error == 0) return std::nullopt;
  return failure(FileError::kOther, _from.path, reasonOf(error));
}

int PlannedCopy::clearTheWay() {
  const NodePtr found = old();
  if (!found || !isInTheWay(*found)) return 0;
  if (!_place.folder) return _place.error;
  const int error = removeEntry(_tree, _place.folder, _place.name);
  findSource();  // it can have been the old item, or below it
  return error;
}

bool PlannedCopy::isInTheWay(const Node& old) {
  if (old.isFolder()) return true;
  return _source.node && (_source.node->isFolder() || isOwnPlace(old));
}

// Another name of the same file is another place.
bool PlannedCopy::isOwnPlace(const Node& old) {
  if (_source.node.get() != &old) return false;
  if (old.now.names == 1) return true;
  const Found named = _isBehindLink ? _source : _held.place(_from.path);
  return _place.folder && named.name == _place.name && named.folder == _place.folder;
}

void PlannedCopy::removeOld() {
  if (!_place.folder) return;
  (void)removeEntry(_tree, _place.folder, _place.name);  // the failure is told already
}

std::optional<FileError> PlannedCopy::answerExisting() const {
  if (_existing == ExistingItem::keep) return std::nullopt;
  return failure(FileError::kExists, _from.path, reasonOf(EEXIST));
}

std::optional<FileError> PlannedCopy::failure(int code, const std::string& item,
                                              const std::string& reason) const {
  return installer::failure(code, item, fmt::format("copied to \"{}\"", _to), reason);
}

}  // namespace installer::overlay
