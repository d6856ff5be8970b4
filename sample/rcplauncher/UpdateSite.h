#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace sample {

// One plug-in that a feature lists.
struct PluginName {
  std::string id;
  std::string version;
};

// The identifier of the feature in `folder`; empty when there is none.
std::string featureIdOf(const std::filesystem::path& folder);

// The plug-ins listed by the feature in `folder`; nullopt when its feature.xml does not parse
// or names a plug-in that cannot be the name of a file.
std::optional<std::vector<PluginName>> pluginsOf(const std::filesystem::path& folder);

// The entry of a "plugins" folder that holds the plug-in, a folder or a jar; nullopt when none
// does.
std::optional<std::filesystem::path> findPlugin(const std::filesystem::path& plugins,
                                                const PluginName& name);

// Turns a site list into folders: places separated by commas, each with or without "file:" before
// it and otherwise taken as it stands, blanks and ".." included. A list that exists as one path is
// that path: a comma can be part of a name.
std::vector<std::filesystem::path> sitesIn(const std::string& list);

}  // namespace sample
