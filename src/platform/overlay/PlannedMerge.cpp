#include "platform/overlay/PlannedMerge.h"

#include <algorithm>
#include <utility>

#include "platform/files/FolderReader.h"
#include "platform/overlay/NodeCopy.h"
#include "platform/overlay/Removal.h"

namespace installer::overlay {

void PlannedMerge::run(const std::string& from, const std::string& to) {
  const Found source = _held.entry(from);
  const Found folder = _held.item(from);
  const Found place = _held.place(to);
  if (!folder.node || !folder.node->isFolder() || !place.folder) return;
  mergeSubfolder({source.name, source.node, folder.node}, place.name, place.folder, 0);
}

void PlannedMerge::mergeSubfolder(const Source& source, const std::string& name,
                                  const NodePtr& destination, int depth) {
  const NodePtr old = _tree.look(destination, name).node;
  if (!old) return copyMissing(source, name, destination);
  if (!source.folder) return;  // cannot be listed
  if (old->isLink()) return mergeThroughLink(source, name, destination, depth);
  if (!old->isFolder() || isSource(source, old)) return;
  mergeFolder(source.folder, old, depth);
}

// A link that leads nowhere or to no folder stays.
void PlannedMerge::mergeThroughLink(const Source& source, const std::string& name,
                                    const NodePtr& destination, int depth) {
  const NodePtr existing = folderBehind(destination, name);
  if (!existing) return;
  const bool leadsOut = !_boundary || !isInside(existing, *_boundary);
  if (leadsOut || isInSource(existing, *source.folder))
    return replaceEntry(source, name, destination);
  mergeFolder(source.folder, existing, depth);
}

void PlannedMerge::mergeFolder(const NodePtr& source, const NodePtr& destination, int depth) {
  if (depth >= kMaximumDepth || !_entered.insert(source.get()).second) return;
  _underWay.push_back(source);
  const auto names = _tree.names(source);
  for (const std::string& name : names.value_or(std::vector<std::string>()))
    mergeEntry(source, name, destination, depth + 1);
  _underWay.pop_back();
}

void PlannedMerge::mergeEntry(const NodePtr& folder, const std::string& name,
                              const NodePtr& destination, int depth) {
  const Source source{name, _tree.look(folder, name).node, folderBehind(folder, name)};
  if (!source.folder) return replaceEntry(source, name, destination);
  mergeSubfolder(source, name, destination, depth);
}

void PlannedMerge::replaceEntry(const Source& source, const std::string& name,
                                const NodePtr& destination) {
  NodePtr made;
  if (source.entry) made = NodeCopy(_tree).build(source.name, source.entry, destination);
  (void)removeEntry(_tree, destination, name);  // failures are passed over in merges
  if (made) (void)_tree.put(destination, name, std::move(made));  // here too
}

void PlannedMerge::copyMissing(const Source& source, const std::string& name,
                               const NodePtr& destination) {
  if (!source.entry) return;
  NodePtr made = NodeCopy(_tree).build(source.name, source.entry, destination);
  if (made) (void)_tree.put(destination, name, std::move(made));  // passed over, too
}

NodePtr PlannedMerge::folderBehind(const NodePtr& folder, const std::string& name) {
  const Found found = walk(_tree, folder, name, LastLink::follow);
  return found.node && found.node->isFolder() ? found.node : nullptr;
}

bool PlannedMerge::isSource(const Source& source, const NodePtr& folder) const {
  if (!source.entry || source.entry->isLink()) return isInSource(folder, *source.folder);
  return folder == source.folder ||
         std::find(_underWay.begin(), _underWay.end(), folder) != _underWay.end();
}

bool PlannedMerge::isInSource(const NodePtr& folder, const Node& entered) const {
  return isInside(folder, entered) ||
         std::any_of(_underWay.begin(), _underWay.end(),
                     [&](const NodePtr& source) { return isInside(folder, *source); });
}

}  // namespace installer::overlay
