#include "platform/overlay/NodeCopy.h"

#include <sys/stat.h>

#include <cerrno>

#include "platform/Interruption.h"
#include "platform/files/Failure.h"
#include "platform/files/FolderReader.h"
#include "platform/overlay/HeldNodes.h"

namespace installer::overlay {

namespace {

constexpr mode_t kKeptModeBits = 01777;
constexpr mode_t kPrivateFolder = 0700;

}  // namespace

NodePtr NodeCopy::build(const std::string& name, const NodePtr& source, const NodePtr& to) {
  _item = name;
  if (const int error = _tree.refusal(to)) return fail(error);
  return copyItem(source, to, 0);
}

NodePtr NodeCopy::copyItem(const NodePtr& source, const NodePtr& to, int depth) {
  checkInterruption();
  switch (source->now.kind) {
    case EntryKind::file:
      return copyFile(*source, to);
    case EntryKind::link:
      return copyLink(*source, to);
    case EntryKind::folder:
      return copyFolder(source, to, depth);
    case EntryKind::other:
    case EntryKind::unknown:
      break;
  }
  return fail("is not a regular file, folder or link");
}

NodePtr NodeCopy::copyFile(const Node& source, const NodePtr& to) {
  if (!mayTake(source)) return nullptr;
  if (isBorrowed(source, _owner)) return fail(EPERM);
  return _tree.newFile(to, source.now.mode & kKeptModeBits, source.content);
}

NodePtr NodeCopy::copyLink(const Node& source, const NodePtr& to) {
  if (!mayTake(source)) return nullptr;
  return _tree.newLink(to, source.target);
}

// The folder has the bits that it was made with until all is in it.
NodePtr NodeCopy::copyFolder(const NodePtr& source, const NodePtr& to, int depth) {
  if (depth >= kMaximumDepth) return fail(ELOOP);
  if (!mayTake(*source)) return nullptr;
  if (depth == 0 && isInside(to, *source)) return fail(EINVAL);
  NodePtr copy = _tree.newFolder(to, kPrivateFolder);
  (void)copyEntries(source, copy, depth);  // whole() tells
  copy->now.mode = source->now.mode & kKeptModeBits;
  return copy;
}

bool NodeCopy::copyEntries(const NodePtr& source, const NodePtr& copy, int depth) {
  const auto names = _tree.names(source);
  const int error = errno;
  const std::size_t ownLength = _item.size();
  for (const std::string& name : names.value_or(std::vector<std::string>())) {
    _item.append("/").append(name);
    const Look entry = _tree.look(source, name);
    NodePtr made = entry.node ? copyItem(entry.node, copy, depth + 1) : fail(entry.error);
    if (made) (void)_tree.put(copy, name, std::move(made));  // nothing refuses it in a new folder
    if (!whole()) return false;
    _item.resize(ownLength);
  }
  return names || fail(error);
}

bool NodeCopy::mayTake(const Node& source) {
  const auto mayOwn = std::exchange(_mayOwn, nullptr);
  return !mayOwn || mayOwn(source.now.owner) || fail("belongs to another user");
}

NodePtr NodeCopy::fail(int error) {
  return fail(reasonOf(error));
}

NodePtr NodeCopy::fail(const std::string& reason) {
  if (_reason.empty()) {
    _failedItem = _item;
    _reason = reason;
  }
  return nullptr;
}

}  // namespace installer::overlay
