#pragma once

#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "platform/files/Ancestry.h"
#include "platform/files/FileChanges.h"
#include "platform/files/HeldFolders.h"
#include "platform/files/ItemCopy.h"
#include "platform/files/NewFileModes.h"
#include "platform/files/PendingNames.h"
#include "platform/posix/Descriptor.h"

namespace installer {

// One merge of a folder into an existing one, as FileManager::merge promises. Copies wait under
// temporary names and are flushed and named in batches.
class TreeMerge {
 public:
  // A boundary that does not exist contains nothing.
  TreeMerge(HeldFolders& folders, FileChanges& changes, const std::string& boundary);

  void run(const std::string& from, const std::string& to);

 private:
  // A folder that is merged into.
  struct Destination {
    OpenFolder folder;
    NewFileModes modes;

    int get() const { return folder->get(); }
  };

  void mergeSubfolder(const Entry& source, const std::string& name, Descriptor folder,
                      Destination& destination, int depth);
  void mergeThroughLink(const Entry& source, const std::string& name, Descriptor folder,
                        Destination& destination, int depth);
  void mergeFolder(Descriptor source, Descriptor destination, int depth);
  void mergeEntry(const Entry& source, Destination& destination, int depth);
  void replaceEntry(const Entry& source, const std::string& name, Destination& destination);
  void copyMissing(const Entry& source, const std::string& name, Destination& destination);

  bool leadsOut(int folder) const;
  bool isSource(const Entry& source, int folder, int enteredSource) const;
  bool isInSource(int folder, int enteredSource) const;

  HeldFolders& _folders;
  FileChanges& _changes;
  PendingNames _pending;
  std::optional<FileIdentity> _boundary;
  std::set<FileIdentity> _entered;      // every source folder that was merged
  std::vector<FileIdentity> _underWay;  // the source folders above the present entry
};

}  // namespace installer
