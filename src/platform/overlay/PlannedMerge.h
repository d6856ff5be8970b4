#pragma once

#include <set>
#include <string>
#include <vector>

#include "platform/overlay/HeldNodes.h"

namespace installer::overlay {

// One merge of a folder into an existing one, as FileManager::merge promises; step by step what
// platform/files/TreeMerge.h does.
class PlannedMerge {
 public:
  // A boundary that does not exist contains nothing.
  PlannedMerge(Tree& tree, HeldNodes& held, const std::string& boundary)
      : _tree(tree), _held(held), _boundary(held.item(boundary).node) {}

  void run(const std::string& from, const std::string& to);

 private:
  // An entry of the source, null where the way to it is barred or it has gone while it is held, and
  // the folder behind it, null when it cannot be entered.
  struct Source {
    std::string name;
    NodePtr entry;
    NodePtr folder;
  };

  void mergeSubfolder(const Source& source, const std::string& name, const NodePtr& destination,
                      int depth);
  void mergeThroughLink(const Source& source, const std::string& name, const NodePtr& destination,
                        int depth);
  void mergeFolder(const NodePtr& source, const NodePtr& destination, int depth);
  void mergeEntry(const NodePtr& folder, const std::string& name, const NodePtr& destination,
                  int depth);
  void replaceEntry(const Source& source, const std::string& name, const NodePtr& destination);
  void copyMissing(const Source& source, const std::string& name, const NodePtr& destination);
  NodePtr folderBehind(const NodePtr& folder, const std::string& name);
  bool isInSource(const NodePtr& folder, const Node& entered) const;
  bool isSource(const Source& source, const NodePtr& folder) const;

  Tree& _tree;
  HeldNodes& _held;
  NodePtr _boundary;
  std::set<const Node*> _entered;  // every source folder that was merged
  std::vector<NodePtr> _underWay;  // the source folders above the present entry
};

}  // namespace installer::overlay
