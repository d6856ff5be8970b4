#include "PluginManifest.h"

#include <sstream>

#include "Files.h"

namespace sample {

namespace {

const std::string kHeader = "Require-Bundle:";

// The header's value; a line that begins with a blank goes on where the one before it ended.
std::string requireBundle(const std::string& manifest) {
  std::istringstream lines(manifest);
  std::string value;
  bool inside = false;
  for (std::string line; std::getline(lines, line);) {
    if (line.ends_with('\r')) line.pop_back();
    if (inside && line.starts_with(' ')) {
      value += line.substr(1);
    } else {
      inside = line.starts_with(kHeader);
      if (inside) value = line.substr(kHeader.size());
    }
  }
  return value;
}

// Commas separate bundles, but not within the quotes of a version range.
std::vector<std::string> split(const std::string& value) {
  std::vector<std::string> parts(1);
  bool quoted = false;
  for (const char letter : value) {
    if (letter == '"') quoted = !quoted;
    if (letter == ',' && !quoted) {
      parts.emplace_back();
    } else if (letter != ' ') {
      parts.back() += letter;
    }
  }
  return parts;
}

}  // namespace

std::vector<std::string> requirementsOf(const std::filesystem::path& plugin) {
  std::vector<std::string> names;
  for (const std::string& part :
       split(requireBundle(readFile(plugin / "META-INF/MANIFEST.MF").value_or("")))) {
    const std::string name = part.substr(0, part.find(';'));
    if (!name.empty()) names.push_back(name);
  }
  return names;
}

}  // namespace sample
