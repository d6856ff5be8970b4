#pragma once

#include <sys/stat.h>

#include <optional>
#include <string>
#include <string_view>

#include "platform/files/EntryKind.h"
#include "platform/posix/Descriptor.h"

namespace installer {

// An entry of an open folder; AT_FDCWD and a path do as well.
struct Entry {
  int folder;
  std::string name;
  EntryKind kind = EntryKind::unknown;  // as it was last seen
};

// Where an entry is: the open folder that holds it, and its name there.
struct Place {
  Descriptor folder;
  std::string name;  // never empty, holds no slash
  int error = 0;     // why there is no folder

  bool usable() const { return folder.valid(); }
};

// Nowhere, for this reason.
Place noPlace(int error);

// A path as the system can take it: a zero byte would silently cut it short.
bool isUsablePath(std::string_view path);

// Without trailing slashes, so that a link named with one is the link itself. "/" stays.
std::string withoutTrailingSlashes(std::string_view path);

// Opens the folder that holds the last component of `path`.
Place openPlace(const std::string& path);

// Opens as openat() does, close-on-exec and tried again after a signal. Invalid with errno set.
Descriptor openEntry(int folder, const std::string& name, int flags, mode_t mode = 0);

// Opens a folder for listing and as an anchor; a link in the last component is refused or followed.
Descriptor openFolder(int folder, const std::string& name);
Descriptor openFolderFollowingLinks(int folder, const std::string& name);

// The same for what is some folders further down: none of them may be a link. Empty for the folder
// itself. An invalid descriptor comes with an errno that does not say that nothing is there when a
// link is.
Descriptor openFolderBeneath(int folder, const std::string& below);

// A regular file that is open for reading, as it was then.
struct RegularFile {
  Descriptor file;
  struct stat status {};

  bool valid() const { return file.valid(); }
};

// Whether the entry has just been seen to be a regular file.
enum class Seen { no, yes };

// Opens a regular file for reading without ever waiting; anything else is refused unopened, with
// errno EINVAL. A link in the last component is refused or followed.
RegularFile openRegularFile(int folder, const std::string& name, Seen seen = Seen::no);
RegularFile openRegularFileFollowingLinks(int folder, const std::string& name);

// The status of the entry itself, not of what a link leads to. nullopt with errno set.
[[nodiscard]] std::optional<struct stat> statusOf(int folder, const std::string& name);
[[nodiscard]] std::optional<struct stat> statusFollowingLinks(int folder, const std::string& name);
// An invalid descriptor leaves errno as its opening set it.
[[nodiscard]] std::optional<struct stat> statusOf(const Descriptor& file);

// Where the link leads that a descriptor of syscalls::openItem() names. nullopt with errno set.
[[nodiscard]] std::optional<std::string> targetOf(const Descriptor& link);

// Whether what has this status is a folder, or a link; false for what has none.
bool isFolder(const std::optional<struct stat>& status);
bool isLink(const std::optional<struct stat>& status);

// Whether the entry itself is a folder; a link to one is none.
bool isFolder(int folder, const std::string& name);

}  // namespace installer
