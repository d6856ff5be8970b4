#include "platform/files/PathBelow.h"

#include <algorithm>

#include "platform/posix/PathSteps.h"

namespace installer {

namespace {

std::string_view withoutLeadingSlashes(std::string_view path) {
  return path.substr(std::min(path.find_first_not_of('/'), path.size()));
}

// The next component that leads anywhere; empty at the end.
std::string_view takeStep(std::string_view& path) {
  while (!path.empty()) {
    const std::string_view component = takeComponent(path);
    if (!component.empty() && component != ".") return component;
  }
  return {};
}

bool climbsOut(std::string_view path) {
  int depth = 0;
  for (auto component = takeStep(path); !component.empty(); component = takeStep(path)) {
    depth += component == ".." ? -1 : 1;
    if (depth < 0) return true;
  }
  return false;
}

}  // namespace

std::optional<std::string> restBelow(std::string_view folder, std::string_view path) {
  if (folder.starts_with('/') != path.starts_with('/')) return std::nullopt;
  for (auto component = takeStep(folder); !component.empty(); component = takeStep(folder)) {
    if (takeStep(path) != component) return std::nullopt;
  }
  if (climbsOut(path)) return std::nullopt;
  return std::string(withoutLeadingSlashes(path));
}

std::string withoutIdleEnd(std::string_view path) {
  while (path.size() > 1 && (path.ends_with('/') || path.ends_with("/."))) path.remove_suffix(1);
  return std::string(path);
}

bool hasNoComponents(std::string_view path) {
  return takeStep(path).empty();
}

}  // namespace installer
