#pragma once

#include <compare>
#include <string>
#include <vector>

namespace installer::ctl {

// A feature as a manifest names it.
struct Feature {
  std::string identifier;
  std::string version;
  friend auto operator<=>(const Feature&, const Feature&) = default;
};

// The features of the manifest, in its order; none when it cannot be read or has none.
std::vector<Feature> featuresIn(const std::string& manifest);

// Whether it has features, and takes each of them out.
bool isRemoval(const std::string& manifest);

// Whether it can be read and is well-formed.
bool isManifest(const std::string& manifest);

}  // namespace installer::ctl
