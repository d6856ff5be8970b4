#include "hotfix/base/Path.h"

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

}  // namespace installer::path
