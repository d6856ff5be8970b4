#include "platform/files/PathBelow.h"

#include <algorithm>

namespace installer {

namespace {

std::string_view withoutLeadingSlashes(std::string_view path) {
  return path.substr(std::min(path.find_first_not_of('/'), path.size()));
}

// The next component that leads anywhere; empty at the end.
std::string_view takeComponent(std::string_view& path) {
  for (;;) {
    path = withoutLeadingSlashes(path);
    const std::string_view component = path.substr(0, path.find('/'));
    path.remove_prefix(component.size());
    if (component != ".") return component;
  }
}

bool climbsOut(std::string_view path) {
  int depth = 0;
  for (auto component = takeComponent(path); !component.empty(); component = takeComponent(path)) {
    depth += component == ".." ? -1 : 1;
    if (depth < 0) return true;
  }
  return false;
}

}  // namespace

std::optional<std::string> restBelow(std::string_view folder, std::string_view path) {
  if (folder.starts_with('/') != path.starts_with('/')) return std::nullopt;
  for (auto component = takeComponent(folder); !component.empty();
       component = takeComponent(folder)) {
    if (takeComponent(path) != component) return std::nullopt;
  }
  if (climbsOut(path)) return std::nullopt;
  return std::string(withoutLeadingSlashes(path));
}

bool hasNoComponents(std::string_view path) {
  return takeComponent(path).empty();
}

}  // namespace installer
