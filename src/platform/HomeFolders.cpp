#include "hotfix/platform/HomeFolders.h"

#include <algorithm>
#include <optional>

#include "hotfix/base/Path.h"
#include "platform/Platform.h"
#include "platform/UserContext.h"

namespace installer::path {

namespace {

std::optional<std::string> homeInDatabase(const std::optional<std::string>& name) {
  const auto user = name ? Platform::current().users->findUser(*name) : std::nullopt;
  if (!user || user->home.empty()) return std::nullopt;
  return user->home;
}

std::optional<std::string> ownHome() {
  UserContext& users = *Platform::current().users;
  if (auto home = homeInDatabase(users.currentUserName())) return home;
  auto home = users.environment("HOME");
  if (home && home->empty()) return std::nullopt;
  return home;
}

}  // namespace

std::string expandingTilde(std::string_view path) {
  if (path.empty() || path.front() != '~') return std::string(path);
  const std::size_t end = std::min(path.find('/'), path.size());
  const std::string name(path.substr(1, end - 1));
  const auto home = name.empty() ? ownHome() : homeInDatabase(name);
  if (!home) return std::string(path);
  return appendingComponent(*home, path.substr(end));
}

}  // namespace installer::path
