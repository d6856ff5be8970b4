#pragma once

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

// Models the choice of the base plug-in's version among the names in the plug-in folder.
namespace installer::model {

inline std::optional<std::string> baseVersion(const std::vector<std::string>& names) {
  std::vector<std::string> versions;
  for (const std::string& name : names) {
    if (name.find("com.kiv.rcp.base_") != 0) continue;
    std::string version;
    int underscores = 0;
    for (const char character : name) {
      if (character == '_')
        ++underscores;
      else if (underscores == 1)
        version += character;
    }
    versions.push_back(version);
  }
  if (versions.empty()) return std::nullopt;
  return *std::max_element(versions.begin(), versions.end());
}

}  // namespace installer::model
