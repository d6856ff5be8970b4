#include "platform/files/Opening.h"

#include <fcntl.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <utility>

#include "platform/files/FileSystemCalls.h"
#include "platform/posix/Uninterrupted.h"

namespace installer {

namespace {

std::optional<struct stat> statusWithFlags(int folder, const std::string& name, int flags) {
  struct stat status {};
  if (::fstatat(folder, name.c_str(), &status, flags) != 0) return std::nullopt;
  return status;
}

RegularFile refused(mode_t mode) {
  errno = S_ISDIR(mode) ? EISDIR : EINVAL;
  return {};
}

// Judged once more, for the entry can have been changed since it was seen.
RegularFile openSeen(int folder, const std::string& name, int flags) {
  RegularFile opened{openEntry(folder, name, O_RDONLY | O_NONBLOCK | O_NOCTTY | flags)};
  const auto status = statusOf(opened.file);
  if (!status) return {};
  if (!S_ISREG(status->st_mode)) return refused(status->st_mode);
  opened.status = *status;
  return opened;
}

// Judged before opening, for the opening of a pipe or device has effects of its own.
RegularFile openUnseen(int folder, const std::string& name, int statusFlags, int flags) {
  const auto before = statusWithFlags(folder, name, statusFlags);
  if (!before) return {};
  if (!S_ISREG(before->st_mode)) return refused(before->st_mode);
  return openSeen(folder, name, flags);
}

}  // namespace

Place noPlace(int error) {
  Place place;
  place.error = error;
  return place;
}

bool isUsablePath(std::string_view path) {
  return !path.empty() && path.find('\0') == std::string_view::npos;
}

std::string withoutTrailingSlashes(std::string_view path) {
  while (path.size() > 1 && path.back() == '/') path.remove_suffix(1);
  return std::string(path);
}

Place openPlace(const std::string& path) {
  if (!isUsablePath(path)) return noPlace(ENOENT);
  const std::string whole = withoutTrailingSlashes(path);
  const auto slash = whole.rfind('/');
  const bool hasFolder = slash != std::string::npos;
  Place place;
  place.name = hasFolder ? whole.substr(slash + 1) : whole;
  if (place.name.empty()) return noPlace(EISDIR);  // the root
  const std::string folder = hasFolder ? whole.substr(0, slash + 1) : ".";
  place.folder = openFolderFollowingLinks(AT_FDCWD, folder);
  if (!place.usable()) place.error = errno;
  return place;
}

Descriptor openEntry(int folder, const std::string& name, int flags, mode_t mode) {
  return Descriptor(
      uninterrupted([&] { return ::openat(folder, name.c_str(), flags | O_CLOEXEC, mode); }));
}

Descriptor openFolder(int folder, const std::string& name) {
  return openEntry(folder, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW);
}

Descriptor openFolderFollowingLinks(int folder, const std::string& name) {
  return openEntry(folder, name, O_RDONLY | O_DIRECTORY);
}

Descriptor openFolderBeneath(int folder, const std::string& below) {
  Descriptor at = openFolder(folder, ".");
  for (std::size_t begin = 0; begin < below.size() && at.valid();) {
    const std::size_t end = std::min(below.find('/', begin), below.size());
    const std::string name = below.substr(begin, end - begin);
    Descriptor next = openFolder(at.get(), name);
    const int error = errno;
    if (!next.valid()) errno = isLink(statusOf(at.get(), name)) ? ELOOP : error;
    at = std::move(next);
    begin = end + 1;
  }
  return at;
}

RegularFile openRegularFile(int folder, const std::string& name, Seen seen) {
  return seen == Seen::yes ? openSeen(folder, name, O_NOFOLLOW)
                           : openUnseen(folder, name, AT_SYMLINK_NOFOLLOW, O_NOFOLLOW);
}

RegularFile openRegularFileFollowingLinks(int folder, const std::string& name) {
  return openUnseen(folder, name, 0, 0);
}

std::optional<struct stat> statusOf(int folder, const std::string& name) {
  return statusWithFlags(folder, name, AT_SYMLINK_NOFOLLOW);
}

std::optional<struct stat> statusFollowingLinks(int folder, const std::string& name) {
  return statusWithFlags(folder, name, 0);
}

std::optional<struct stat> statusOf(const Descriptor& file) {
  struct stat status {};
  if (!file.valid() || ::fstat(file.get(), &status) != 0) return std::nullopt;
  return status;
}

std::optional<std::string> targetOf(const Descriptor& link) {
  std::array<char, PATH_MAX> target;
  const ssize_t length = syscalls::readLink(link.get(), target.data(), target.size());
  if (length == -1) return std::nullopt;
  return std::string(target.data(), static_cast<std::size_t>(length));
}

bool isFolder(const std::optional<struct stat>& status) {
  return status && S_ISDIR(status->st_mode);
}

bool isLink(const std::optional<struct stat>& status) {
  return status && S_ISLNK(status->st_mode);
}

bool isFolder(int folder, const std::string& name) {
  return isFolder(statusOf(folder, name));
}

}  // namespace installer
