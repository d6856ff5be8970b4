#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/FileManager.h"
#include "platform/overlay/HeldNodes.h"

namespace installer::overlay {

// One copy of an item to a new place, as FileManager::copy promises; step by step what
// platform/files/SingleCopy.h does.
class PlannedCopy {
 public:
  PlannedCopy(Tree& tree, HeldNodes& held, const CopySource& from, const std::string& to,
              ExistingItem existing)
      : _tree(tree), _held(held), _from(from), _to(to), _existing(existing) {}

  // nullopt when the copy counts as done.
  [[nodiscard]] std::optional<FileError> run();

 private:
  using Failure = std::optional<FileError>;

  void findSource();
  Failure copyItem();
  Failure copy();
  Failure giveName(NodePtr copy);
  NodePtr old();
  [[nodiscard]] int clearTheWay();
  bool isInTheWay(const Node& old);
  bool isOwnPlace(const Node& old);
  void removeOld();
  Failure answerExisting() const;
  Failure failure(int code, const std::string& item, const std::string& reason) const;

  Tree& _tree;
  HeldNodes& _held;
  const CopySource& _from;
  const std::string& _to;
  const ExistingItem _existing;
  Found _source;  // what is copied: the item itself, or the file behind a link
  Found _place;   // where it is copied to
  bool _isBehindLink = false;
  bool _isNamed = false;  // the copy, or what there is of it, stands at `_to`
};

// The regular file to which the link at `path` leads, when that is in the folder that holds the
// link or in one of the folders `within`; else EPERM. See platform/files/LinkedContent.h.
Found linkedContent(Tree& tree, HeldNodes& held, const std::string& path,
                    const std::vector<std::string>& within);

}  // namespace installer::overlay
