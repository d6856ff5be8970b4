#pragma once

#include <sys/stat.h>
#include <sys/types.h>

#include <compare>
#include <optional>
#include <set>

namespace installer {

// Which item it is, whatever its names.
struct FileIdentity {
  dev_t device = 0;
  ino_t inode = 0;

  auto operator<=>(const FileIdentity&) const = default;
};

FileIdentity identityOf(const struct stat& status);
[[nodiscard]] std::optional<FileIdentity> identityOf(int file);

// Whether the file has several names and belongs to somebody else than `owner`, who could have
// given it one of them. Root gives none away and owns what others may give a name to: root's file
// counts as somebody else's for root too. Never so where anybody may own it.
bool isBorrowed(const struct stat& file, std::optional<uid_t> owner);

// The open folder and all folders above it up to the root; nullopt when the way up is barred.
[[nodiscard]] std::optional<std::set<FileIdentity>> ancestryOf(int folder);

// Whether the open folder is the other one or below it; nullopt when the way up is barred.
[[nodiscard]] std::optional<bool> isInside(int folder, const FileIdentity& other);

}  // namespace installer
