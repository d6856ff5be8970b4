#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace installer::ctl {

// Where an instance is, or may be.
struct InstancePlace {
  std::string rcpHome;
  std::string_view foundBy;  // "argument", "registration" or "applications"
};

// The rcp home that the path means, absolute: a bundle's, or itself.
std::string rcpHomeOf(const std::string& bundleOrHome);

// Every registered instance, and those in the applications folder; each once.
std::vector<InstancePlace> knownPlaces();

}  // namespace installer::ctl
