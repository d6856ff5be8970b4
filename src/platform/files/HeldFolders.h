#pragma once

#include <sys/types.h>

#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "platform/UserContext.h"
#include "platform/files/Ancestry.h"
#include "platform/files/LinkWalk.h"
#include "platform/files/Opening.h"
#include "platform/posix/Descriptor.h"

namespace installer {

// Where an entry was found, as the system's calls take it.
struct FoundEntry {
  Descriptor opened;    // the folder, when it was opened for this
  int folder = -1;      // that folder, one that is held, or the one that the process is in
  std::string name;     // there
  bool follow = false;  // whether a link in the entry's place may lead elsewhere
  int error = 0;        // why there is none
  // Who may own it when it has several names: with another owner, its other name can be in a place
  // that its reader is not meant to see. nullopt when anybody may.
  std::optional<uid_t> owner;

  // nullopt with errno set, and invalid with errno set. The entry is looked at once.
  [[nodiscard]] std::optional<struct stat> status();
  RegularFile openFile();
  Descriptor openFolder() const;
  // See LinkWalk.h. A path of no held folder is followed from where the process is.
  Place behindLinks(const LinkJudge& mayFollow) &&;

 private:
  std::optional<struct stat> _status;
};

// The entry at the place, which stays open.
FoundEntry foundAt(Place place);

// One folder that is held.
struct HeldFolder {
  std::string path;
  std::optional<uid_t> newOwner;  // see FoundEntry::owner
  Descriptor folder;              // none as long as there is no such folder, or it is refused
  int error = 0;                  // why
  bool mayEnter = false;          // whether what is below it may be handed over
  std::set<FileIdentity> links;   // that were followed on the way, when the path ends in one
};

// The folders that a run holds open, and the way from a path to its entry. A path below a held
// folder is looked up beneath that folder's descriptor, whatever becomes of the folder's name;
// links on the way are followed as long as they lead to a place inside it, and what leads elsewhere
// is EPERM. Any other path is the system's business.
class HeldFolders {
 public:
  explicit HeldFolders(UserContext& users) : _users(users) {}

  // Holds the folder as long as a copy of the answer lives. One that is missing is looked for
  // again each time. A link on the way that belongs to neither root nor the effective user, is
  // followed to a folder of the link's own owner only, for he could do there himself what is done.
  // `newOwner`: to whom what is below it is handed, see FoundEntry::owner; the strictest counts of
  // those for whom it is held. The root cannot be held: null.
  std::shared_ptr<const void> hold(const std::string& path, std::optional<uid_t> newOwner);

  // The open folder that holds the last component, for changes there.
  Place place(const std::string& path);
  // The entry itself, not what a link leads to.
  FoundEntry entry(const std::string& path);
  // What the path leads to, links followed; the last one to a place inside any held folder.
  FoundEntry item(const std::string& path);
  // Whether something is there, and whether a folder is, which a link to anywhere may answer. The
  // first is false with errno set.
  bool exists(const std::string& path);
  bool isDirectory(const std::string& path);

  // A folder that the caller named. When it is a link itself, all links on the way must belong to
  // root or the effective user, for whoever owns a link chooses where it leads. `links` receives
  // the ones that were followed then. Invalid with errno set.
  Descriptor openNamedFolder(const std::string& path, std::set<FileIdentity>& links);

  // The entry at the place to which a link of this `owner` has led. It is judged as one of every
  // folder that is held around either.
  FoundEntry behindLink(std::optional<uid_t> owner, Place place) const;

 private:
  struct Below {
    HeldFolder* held = nullptr;
    std::string rest;
  };
  enum class Itself { counts, doesNot };
  using OpenBeneath = int (*)(int above, const char* path);

  std::optional<Below> find(const std::string& path, Itself itself);
  bool open(HeldFolder& held);
  void openAnew(HeldFolder& held);
  bool openWithoutLinks(HeldFolder& held);
  void openJudgingLinks(HeldFolder& held);
  Descriptor openBeneath(const HeldFolder& held, const std::string& rest);
  Place placeBelow(const Below& below);
  FoundEntry entryBelow(const Below& below);
  FoundEntry foundBelow(const Below& below);
  FoundEntry itemBelow(const Below& below, const std::string& path);
  FoundEntry glimpse(const std::string& path);
  Descriptor openAtOnce(const std::string& path, OpenBeneath call);
  std::vector<std::shared_ptr<HeldFolder>> heldAround(const Place& place) const;
  bool isRefused(HeldFolder& held);
  bool isTrusted(const struct stat& link);

  UserContext& _users;
  std::vector<std::weak_ptr<HeldFolder>> _held;
};

}  // namespace installer
