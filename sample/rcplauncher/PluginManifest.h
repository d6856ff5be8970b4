#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace sample {

// The names of the bundles that a plug-in's folder says it needs, in its order; none for a jar,
// which is not opened.
std::vector<std::string> requirementsOf(const std::filesystem::path& plugin);

}  // namespace sample
