#pragma once

#include <sys/types.h>

#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "platform/UserContext.h"
#include "platform/overlay/PathWalk.h"

namespace installer::overlay {

// One folder that is held.
struct HeldNode {
  std::string path;
  std::optional<uid_t> newOwner;  // see Found::owner
  NodePtr folder;                 // null as long as there is no such folder, or it is refused
  int error = 0;                  // why
  bool mayEnter = false;          // whether what is below it may be handed over
  std::set<FileIdentity> links;   // that were followed on the way, when the path ends in one
};

// The folders that a run holds, and the way from a path to its item, by the rules of
// platform/files/HeldFolders.h, which has the words for each of them.
class HeldNodes {
 public:
  HeldNodes(Tree& tree, UserContext& users) : _tree(tree), _users(users) {}

  std::shared_ptr<const void> hold(const std::string& path, std::optional<uid_t> newOwner);

  // The folder that holds the last component, with its name there; whether something has that name
  // is not asked. Without a folder `error` tells why.
  Found place(const std::string& path);
  // The item itself, a link as a link.
  Found entry(const std::string& path);
  // What the path leads to.
  Found item(const std::string& path);
  // As item(), but for a link that leads elsewhere: only whether something is there may be asked.
  Found glimpse(const std::string& path);

  // The folder that the caller named; see HeldFolders::openNamedFolder.
  Look namedFolder(const std::string& path, std::set<FileIdentity>& links);

  // The item behind the path's links, all of which must be allowed. Of a path below a held folder
  // only the last component is judged.
  Found behindLinks(const std::string& path, const LinkJudge& mayFollow);
  // What a link of this `owner` has led to, judged as one of every held folder around it too.
  Found behindLink(std::optional<uid_t> owner, Found place) const;

 private:
  struct Below {
    HeldNode* held = nullptr;
    std::string rest;
  };
  enum class Itself { counts, doesNot };

  std::optional<Below> find(const std::string& path, Itself itself);
  bool open(HeldNode& held);
  bool openWithoutLinks(HeldNode& held);
  void openAnew(HeldNode& held);
  void openJudgingLinks(HeldNode& held);
  Look openBeneath(const HeldNode& held, const std::string& rest);
  Found placeBelow(const Below& below);
  Found entryBelow(const Below& below);
  Found itemBelow(const Below& below, const std::string& path);
  Found inside(const std::string& path);
  Look startOf(const std::string& path);
  Found fromStart(const std::string& path, LastLink last, const LinkJudge& mayFollow = nullptr);
  std::vector<std::shared_ptr<HeldNode>> heldAround(const Found& item) const;
  bool isTrusted(const Node& link);

  Tree& _tree;
  UserContext& _users;
  std::vector<std::weak_ptr<HeldNode>> _held;
};

// Whether the file has several names and belongs to somebody else than `owner`; see isBorrowed() in
// platform/files/Ancestry.h.
bool isBorrowed(const Node& file, std::optional<uid_t> owner);

}  // namespace installer::overlay
