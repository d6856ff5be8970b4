#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace sample {

// One feature that a manifest wants installed or removed.
struct FeatureRequest {
  std::string id;
  std::string version;      // empty only for a removal: whatever version is installed
  std::string url;          // the site to fetch it from; empty when the manifest names none
  std::string description;  // of the installfeature around it
  bool install = true;
};

// The features of a manifest in document order; nullopt when the file is missing, does not parse,
// lacks the way down to "install", or holds a feature that cannot be acted on.
std::optional<std::vector<FeatureRequest>> readManifest(const std::filesystem::path& file);

// Makes the manifest of the installed state agree with what was done: installed features are put in
// (in place of another version), removed ones are taken out. False, with the file as it was, when
// it cannot be read or written.
bool carryOver(const std::filesystem::path& file, const std::vector<FeatureRequest>& done);

}  // namespace sample
