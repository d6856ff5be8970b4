#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <vector>

// Models the platform's rules for path components: a path is a mark whether it is absolute and the
// names between its slashes.
namespace installer::model {

struct Path {
  bool absolute = false;
  std::vector<std::string> names;
};

inline Path takenApart(const std::string& path) {
  Path parts;
  parts.absolute = path.substr(0, 1) == "/";
  std::string name;
  for (const char character : path + "/") {
    if (character != '/') {
      name += character;
      continue;
    }
    if (name != "") parts.names.push_back(name);
    name = "";
  }
  return parts;
}

inline std::string putTogether(const Path& parts) {
  std::string path = parts.absolute ? "/" : "";
  for (std::size_t i = 0; i < parts.names.size(); ++i) {
    if (i > 0) path += "/";
    path += parts.names[i];
  }
  return path;
}

inline std::string appendingComponent(const std::string& path, const std::string& component) {
  if (path == "") return putTogether(takenApart(component));
  Path parts = takenApart(path);
  for (const std::string& name : takenApart(component).names) parts.names.push_back(name);
  return putTogether(parts);
}

inline std::string deletingLastComponent(const std::string& path) {
  Path parts = takenApart(path);
  if (!parts.names.empty()) parts.names.pop_back();
  return putTogether(parts);
}

inline std::string lastComponent(const std::string& path) {
  const Path parts = takenApart(path);
  if (!parts.names.empty()) return parts.names.back();
  return parts.absolute ? "/" : "";
}

using Homes = std::map<std::string, std::string>;  // home folders by users' names

// `variable` is HOME, `user` whoever runs the process.
inline std::string expandingTilde(const std::string& path, std::optional<std::string> variable,
                                  const std::string& user, Homes homes) {
  if (path == "" || path[0] != '~') return path;
  std::string name;
  std::string rest;
  for (const char character : path.substr(1))
    (character == '/' || rest != "" ? rest : name) += character;
  std::string home = homes[name == "" ? user : name];
  if (name == "" && home == "" && variable) home = *variable;
  return home == "" ? path : putTogether(takenApart(home + "/" + rest));
}

}  // namespace installer::model
