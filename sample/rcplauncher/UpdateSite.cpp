#include "UpdateSite.h"

#include <sstream>

#include "Files.h"
#include "Xml.h"

namespace sample {

namespace fs = std::filesystem;

namespace {

std::string withoutScheme(const std::string& place) {
  const std::string kScheme = "file:";
  return place.starts_with(kScheme) ? place.substr(kScheme.size()) : place;
}

bool isThere(const fs::path& path) {
  std::error_code error;
  return fs::exists(path, error);
}

}  // namespace

std::string featureIdOf(const fs::path& folder) {
  const XmlDocument document = parseXml(folder / "feature.xml");
  return document ? attributeOf(xmlDocGetRootElement(document.get()), "id") : "";
}

std::optional<std::vector<PluginName>> pluginsOf(const fs::path& folder) {
  const XmlDocument document = parseXml(folder / "feature.xml");
  if (!document) return std::nullopt;
  std::vector<PluginName> names;
  for (const xmlNode* plugin : childrenOf(xmlDocGetRootElement(document.get()), "plugin")) {
    const PluginName name{attributeOf(plugin, "id"), attributeOf(plugin, "version")};
    if (!isPlainName(name.id) || !isPlainName(name.version)) return std::nullopt;
    names.push_back(name);
  }
  return names;
}

std::optional<fs::path> findPlugin(const fs::path& plugins, const PluginName& name) {
  const std::string entry = name.id + "_" + name.version;
  for (const std::string& candidate : {entry, entry + ".jar"}) {
    if (isThere(plugins / candidate)) return plugins / candidate;
  }
  return std::nullopt;
}

std::vector<fs::path> sitesIn(const std::string& list) {
  const std::string whole = withoutScheme(list);
  if (whole.empty()) return {};
  if (isThere(whole)) return {whole};
  std::vector<fs::path> sites;
  std::istringstream places(list);
  for (std::string place; std::getline(places, place, ',');) {
    sites.emplace_back(withoutScheme(place));
  }
  return sites;
}

}  // namespace sample
