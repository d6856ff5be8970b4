#include "platform/TrustedPath.h"

#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <system_error>

#include "platform/UserContext.h"
#include "platform/posix/PathSteps.h"

namespace installer {

namespace {

bool isShared(const struct stat& status) {
  return (status.st_mode & (S_IWGRP | S_IWOTH)) != 0;
}

class TrustedWalk {
 public:
  TrustedWalk(const std::string& path, uid_t user) : _path(path), _user(user) {}

  std::optional<std::string> run() {
    if (!_rest.starts_with('/')) return "the path is relative";
    judge("/");
    while (!_reason && !_rest.empty()) step();
    return _reason;
  }

 private:
  void step() {
    const std::string name(takeComponent(_rest));
    if (name.empty() || name == ".") return;
    if (name == "..") return leave();
    judge(_reached + "/" + name);
  }

  // No link is left in what has been reached, so that the name above is the folder above.
  void leave() { _reached.erase(std::min(_reached.rfind('/'), _reached.size())); }

  void judge(const std::string& item) {
    struct stat status {};
    if (::lstat(item.c_str(), &status) != 0) return judgeMissing(item, errno);
    if (!isRootOr(_user, status.st_uid))
      return refuse(fmt::format("{} belongs to the user {}", item, status.st_uid));
    if (S_ISLNK(status.st_mode)) return follow(item);
    const bool keepsOwners = S_ISDIR(status.st_mode) && (status.st_mode & S_ISVTX) != 0;
    if (isShared(status) && !keepsOwners) return refuse(fmt::format("others can write {}", item));
    _reached = item == "/" ? "" : item;
  }

  void judgeMissing(const std::string& item, int error) {
    if (error != ENOENT)
      return refuse(
          fmt::format("{} cannot be looked at: {}", item, std::generic_category().message(error)));
    struct stat folder {};
    if (::lstat(_reached.empty() ? "/" : _reached.c_str(), &folder) != 0 || isShared(folder))
      return refuse(fmt::format("others can make {}", item));
    _rest = {};
  }

  void follow(const std::string& link) {
    std::array<char, PATH_MAX> bytes;
    const ssize_t length = ::readlink(link.c_str(), bytes.data(), bytes.size());
    if (length == -1 || ++_links > kMaximumLinks)
      return refuse(fmt::format("{} leads through too many links", link));
    const std::string target(bytes.data(), static_cast<std::size_t>(length));
    if (target.starts_with('/')) _reached.clear();
    _path = target + "/" + std::string(_rest);
    _rest = _path;
  }

  void refuse(std::string reason) { _reason = std::move(reason); }

  std::string _reached;  // empty at the root
  std::string _path;
  std::string_view _rest = _path;  // of the path, behind that
  const uid_t _user;
  int _links = 0;
  std::optional<std::string> _reason;
};

}  // namespace

std::optional<std::string> reasonToDistrust(const std::string& path, uid_t user) {
  return TrustedWalk(path, user).run();
}

}  // namespace installer
