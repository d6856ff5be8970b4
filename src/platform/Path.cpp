#include "platform/Path.h"

#include <algorithm>
#include <optional>

#include "platform/Platform.h"
#include "platform/UserContext.h"

namespace installer::path {

namespace {

// Runs of slashes collapsed, and no slash at the end unless the path is the root.
std::string normalized(std::string_view path) {
  std::string result;
  for (const char character : path) {
    if (character != '/' || result.empty() || result.back() != '/') result.push_back(character);
  }
  if (result.size() > 1 && result.back() == '/') result.pop_back();
  return result;
}

// Where the last component begins in a normalized path.
std::size_t lastComponentStart(const std::string& path) {
  const auto slash = path.rfind('/');
  return slash == std::string::npos ? 0 : slash + 1;
}

std::optional<std::string> homeInDatabase(const std::optional<std::string>& name) {
  const auto user = name ? Platform::current().users->findUser(*name) : std::nullopt;
  if (!user || user->home.empty()) return std::nullopt;
  return user->home;
}

std::optional<std::string> ownHome() {
  UserContext& users = *Platform::current().users;
  if (auto home = users.environment("HOME"); home && !home->empty()) return home;
  return homeInDatabase(users.currentUserName());
}

}  // namespace

std::string appendingComponent(std::string_view path, std::string_view component) {
  if (path.empty()) return normalized(component);
  return normalized(std::string(path).append("/").append(component));
}

std::string deletingLastComponent(std::string_view path) {
  std::string result = normalized(path);
  result.resize(lastComponentStart(result));
  return normalized(result);
}

std::string lastComponent(std::string_view path) {
  const std::string whole = normalized(path);
  return whole == "/" ? whole : whole.substr(lastComponentStart(whole));
}

std::vector<std::string> components(std::string_view path) {
  std::vector<std::string> result;
  if (path.empty()) return result;
  if (path.front() == '/') result.emplace_back("/");
  std::size_t start = 0;
  while (start < path.size()) {
    const std::size_t end = std::min(path.find('/', start), path.size());
    if (end > start) result.emplace_back(path.substr(start, end - start));
    start = end + 1;
  }
  if (path.back() == '/' && result.back() != "/") result.emplace_back("/");
  return result;
}

std::string expandingTilde(std::string_view path) {
  if (path.empty() || path.front() != '~') return std::string(path);
  const std::size_t end = std::min(path.find('/'), path.size());
  const std::string name(path.substr(1, end - 1));
  const auto home = name.empty() ? ownHome() : homeInDatabase(name);
  if (!home) return std::string(path);
  return appendingComponent(*home, path.substr(end));
}

}  // namespace installer::path
