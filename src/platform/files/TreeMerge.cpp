#include "platform/files/TreeMerge.h"

#include <algorithm>
#include <utility>

#include "platform/files/FolderReader.h"
#include "platform/files/Opening.h"
#include "platform/files/TreeRemoval.h"

namespace installer {

namespace {

OpenFolder share(Descriptor folder) {
  return std::make_shared<const Descriptor>(std::move(folder));
}

bool leadsToFolder(const Entry& entry) {
  if (entry.kind == EntryKind::link || entry.kind == EntryKind::unknown)
    return isFolder(statusFollowingLinks(entry.folder, entry.name));
  return entry.kind == EntryKind::folder;
}

}  // namespace

TreeMerge::TreeMerge(HeldFolders& folders, FileChanges& changes, const std::string& boundary)
    : _folders(folders), _changes(changes), _pending(changes) {
  if (const auto status = folders.item(boundary).status()) _boundary = identityOf(*status);
}

void TreeMerge::run(const std::string& from, const std::string& to) {
  const FoundEntry source = _folders.entry(from);
  Descriptor folder = _folders.item(from).openFolder();
  Place place = _folders.place(to);
  if (!folder.valid() || !place.usable()) return;
  Destination above{share(std::move(place.folder)), {}};
  mergeSubfolder({source.folder, source.name}, place.name, std::move(folder), above, 0);
  _pending.finish();
}

// Merges the source folder into the destination's entry of that name.
void TreeMerge::mergeSubfolder(const Entry& source, const std::string& name, Descriptor folder,
                               Destination& destination, int depth) {
  const auto old = statusOf(destination.get(), name);
  if (!old) return copyMissing(source, name, destination);
  if (!folder.valid()) return;  // cannot be listed
  if (isLink(old)) {
    return mergeThroughLink(source, name, std::move(folder), destination, depth);
  }
  Descriptor existing = openFolder(destination.get(), name);
  if (!existing.valid() || isSource(source, existing.get(), folder.get())) return;
  mergeFolder(std::move(folder), std::move(existing), depth);
}

// A link that leads nowhere or to no folder stays. What waits is settled before and after, for the
// link can lead to a folder that has a name of its own in this merge.
void TreeMerge::mergeThroughLink(const Entry& source, const std::string& name, Descriptor folder,
                                 Destination& destination, int depth) {
  Descriptor existing = openFolderFollowingLinks(destination.get(), name);
  if (!existing.valid()) return;
  if (leadsOut(existing.get()) || isInSource(existing.get(), folder.get())) {
    return replaceEntry(source, name, destination);
  }
  _pending.settle();
  mergeFolder(std::move(folder), std::move(existing), depth);
  _pending.settle();
}

void TreeMerge::mergeFolder(Descriptor source, Descriptor destination, int depth) {
  const auto identity = identityOf(source.get());
  if (depth >= kMaximumDepth || !identity || !_entered.insert(*identity).second) return;
  _underWay.push_back(*identity);
  Destination into{share(std::move(destination)), {}};
  FolderReader reader(std::move(source));
  while (const auto name = reader.next()) {
    mergeEntry({reader.descriptor(), *name, reader.kind()}, into, depth + 1);
  }
  _underWay.pop_back();
}

void TreeMerge::mergeEntry(const Entry& source, Destination& destination, int depth) {
  if (!leadsToFolder(source)) return replaceEntry(source, source.name, destination);
  Descriptor folder = source.kind == EntryKind::folder
                          ? openFolder(source.folder, source.name)
                          : openFolderFollowingLinks(source.folder, source.name);
  mergeSubfolder(source, source.name, std::move(folder), destination, depth);
}

void TreeMerge::replaceEntry(const Entry& source, const std::string& name,
                             Destination& destination) {
  ItemCopy copy(_changes, Flush::later);
  TemporaryItem temporary(_changes, destination.get());
  (void)copy.build(source, temporary, destination.modes);  // what could be copied gets the name
  if (!temporary.exists()) {
    (void)removeEntry(_changes, destination.get(), name);  // failures are passed over in merges
    return;
  }
  _pending.add(destination.folder, std::move(temporary), name, TakenName::replace);
}

void TreeMerge::copyMissing(const Entry& source, const std::string& name,
                            Destination& destination) {
  ItemCopy copy(_changes, Flush::later);
  TemporaryItem temporary(_changes, destination.get());
  (void)copy.build(source, temporary, destination.modes);  // a part of a tree gets the name too
  if (temporary.exists()) {
    _pending.add(destination.folder, std::move(temporary), name, TakenName::keep);
  }
}

// Where no link was followed, a folder of a destination that is in no source folder is in none
// either, unless it is one itself.
bool TreeMerge::isSource(const Entry& source, int folder, int enteredSource) const {
  if (source.kind != EntryKind::folder) return isInSource(folder, enteredSource);
  const auto identity = identityOf(folder);
  return !identity || identity == identityOf(enteredSource) ||
         std::find(_underWay.begin(), _underWay.end(), *identity) != _underWay.end();
}

bool TreeMerge::leadsOut(int folder) const {
  return !_boundary || !isInside(folder, *_boundary).value_or(false);
}

// Also true when it cannot be found out.
bool TreeMerge::isInSource(int folder, int enteredSource) const {
  const auto ancestry = ancestryOf(folder);
  const auto entered = identityOf(enteredSource);
  if (!ancestry || !entered || ancestry->contains(*entered)) return true;
  for (const FileIdentity& source : _underWay) {
    if (ancestry->contains(source)) return true;
  }
  return false;
}

}  // namespace installer
