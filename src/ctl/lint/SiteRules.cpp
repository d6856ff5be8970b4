#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "ctl/lint/Files.h"
#include "ctl/lint/Keys.h"
#include "ctl/lint/ManifestView.h"
#include "ctl/lint/RuleTable.h"
#include "ctl/lint/Rules.h"
#include "hotfix/base/KeyedHash.h"
#include "hotfix/base/Path.h"
#include "instance/InstanceLayout.h"
#include "platform/FileManager.h"
#include "platform/Platform.h"

namespace installer::ctl::lint {

namespace {

using path::appendingComponent;

// What makes a folder an update site to the platform: one of these is in it.
constexpr std::array kSiteEntries{"features",
                                  "plugins",
                                  "content.jar",
                                  "content.xml",
                                  "content.xml.xz",
                                  "compositeContent.jar",
                                  "compositeContent.xml",
                                  "site.xml"};
constexpr const char* kFeatures = "features";
constexpr const char* kPlugins = "plugins";
constexpr std::string_view kScheme = "file:";  // of the sites behind the first
constexpr std::string_view kAnyVersion = "0.0.0";
// More than these are not looked at.
constexpr std::size_t kMostSites = 100;
constexpr std::size_t kMostFeatures = 10'000;
constexpr std::size_t kMostFeatureBytes = std::size_t{64} << 20;  // of their feature.xml

bool hasScheme(std::string_view site) {
  const std::size_t colon = site.find(':');
  return colon != std::string_view::npos && colon > 1 &&
         site.substr(0, colon).find_first_of("/. ") == std::string_view::npos;
}

// The sites of the list as paths, each once: one that exists as a whole, else those between the
// commas.
std::vector<std::string> sitesIn(const std::string& list) {
  if (exists(list)) return {list};
  std::vector<std::string> sites;
  for (std::size_t at = 0; at <= list.size() && sites.size() < kMostSites;) {
    const std::size_t end = std::min(list.find(',', at), list.size());
    std::string site = list.substr(at, end - at);
    if (at > 0 && site.starts_with(kScheme)) site.erase(0, kScheme.size());
    const bool isNew = std::find(sites.begin(), sites.end(), site) == sites.end();
    if (!site.empty() && isNew) sites.push_back(std::move(site));
    at = end + 1;
  }
  return sites;
}

bool isSite(const std::string& folder) {
  return std::any_of(kSiteEntries.begin(), kSiteEntries.end(),
                     [&](const char* name) { return exists(appendingComponent(folder, name)); });
}

void lintUrl(const PackageView& package, const std::string& site, Findings& findings) {
  findings.add(rule("HF222"), package.at(kUpdateSites),
               fmt::format("updateSiteList \"{0}\" reaches the platform as \"file:{0}\".", site));
}

void lintSite(const PackageView& package, const std::string& site, Findings& findings) {
  const Place place = package.at(kUpdateSites);
  if (hasScheme(site))
    lintUrl(package, site, findings);
  else if (!exists(site))
    findings.add(rule("HF221"), place, fmt::format("There is no update site at {}.", site));
  else if (!isSite(site))
    findings.add(rule("HF223"), placeOf(site), "The folder holds no update site.");
  if (site.find('#') != std::string::npos)
    findings.add(rule("HF226"), place, fmt::format("The update site's path {} holds #.", site));
}

// --- What the sites hold -------------------------------------------------------------------------

// The folders and jars of one kind, features or plug-ins, that can be taken from somewhere.
class Supply {
 public:
  void add(const std::string& folder) {
    const auto entries = _isWhole ? entriesOf(folder) : std::vector<SeenEntry>();
    for (const SeenEntry& entry : entries)
      _places.emplace(entry.path, appendingComponent(folder, entry.path));
    _isWhole = _isWhole && entries.size() < kMostEntries && _places.size() < kMostEntries;
  }

  // False when there was more than is looked at.
  bool isWhole() const { return _isWhole; }

  // Where it lies, on the first that has it; nullopt when none has.
  [[nodiscard]] std::optional<std::string> find(const std::string& name) const {
    auto found = _places.find(name);
    if (found == _places.end()) found = _places.find(name + ".jar");
    if (found == _places.end()) return std::nullopt;
    return found->second;
  }

 private:
  bool _isWhole = true;
  std::unordered_map<std::string, std::string, KeyedHash> _places;  // by name
};

std::string nameOf(const std::string& id, const std::string& version) {
  return id + "_" + version;
}

// Looks for features on the sites, and for their plug-ins. What the instance has is not taken from
// a site.
class SiteSearch {
 public:
  SiteSearch(const PackageView& package, const std::vector<std::string>& sites,
             const std::optional<std::string>& rcpHome, Findings& findings)
      : _place(placeOf(package.resolved.locations.updateSites)), _findings(findings) {
    for (const std::string& site : sites) {
      _features.add(appendingComponent(site, kFeatures));
      _plugins.add(appendingComponent(site, kPlugins));
    }
    if (!rcpHome) return;
    _installed.add(appendingComponent(InstanceLayout::eclipse(*rcpHome), kFeatures));
    _plugins.add(InstanceLayout::plugins(*rcpHome));
  }

  void look(const std::vector<FeatureView>& features) {
    bool isWhole = _features.isWhole() && _plugins.isWhole() && _installed.isWhole();
    std::size_t number = 0;
    for (const FeatureView& feature : features)
      if (isWhole && ++number <= kMostFeatures) lookFor(feature);
    isWhole = isWhole && number <= kMostFeatures && _bytesLeft > 0;
    if (!isWhole)
      _findings.add(rule("HF608"), _place,
                    "The update sites hold more, or more is wanted of them, than is looked at.");
  }

 private:
  void lookFor(const FeatureView& feature) {
    if (feature.id.value_or("").empty() || feature.version.value_or("").empty()) return;
    const std::string name = nameOf(*feature.id, *feature.version);
    if (_installed.find(name)) return;
    const auto entry = _features.find(name);
    if (!entry)
      return _findings.add(rule("HF224"), _place,
                           fmt::format("No update site has the feature {}.", name));
    if (isFolder(*entry)) lookForPlugins(appendingComponent(*entry, "feature.xml"));
  }

  void lookForPlugins(const std::string& file) {
    if (_bytesLeft == 0) return;
    FileError error;
    auto bytes = Platform::current().files->read(file, &error);
    if (!bytes) return _findings.add(rule("HF227"), placeOf(file), error.description + ".");
    _bytesLeft -= std::min(_bytesLeft, bytes->size());
    const auto plugins = childrenOfRoot(*std::move(bytes), "plugin");
    if (!plugins) return _findings.add(rule("HF227"), placeOf(file), "It is not well-formed.");
    for (const ElementAttributes& plugin : *plugins) lookFor(plugin, file);
  }

  void lookFor(const ElementAttributes& plugin, const std::string& file) {
    if (plugin.id.value_or("").empty() || plugin.version.value_or("").empty())
      return _findings.add(
          rule("HF227"), placeOf(file),
          fmt::format("The plug-in \"{}\" lacks its id or its version.", plugin.id.value_or("")));
    if (plugin.isForSomeSystems || *plugin.version == kAnyVersion) return;
    const std::string name = nameOf(*plugin.id, *plugin.version);
    if (!_plugins.find(name))
      _findings.add(rule("HF225"), placeOf(file),
                    fmt::format("No update site has the plug-in {}.", name));
  }

  const Place _place;
  Findings& _findings;
  Supply _features;
  Supply _plugins;
  Supply _installed;  // features
  std::size_t _bytesLeft = kMostFeatureBytes;
};

// Whether the site's features lie there as folders or jars that can be looked for by name.
bool listsFeatures(const std::string& site) {
  return isFolder(appendingComponent(site, kFeatures));
}

}  // namespace

void lintUpdateSites(const PackageView& package, const std::optional<std::string>& rcpHome,
                     Findings& findings) {
  const std::string& list = package.resolved.locations.updateSites;
  if (hasScheme(list)) return lintUrl(package, list, findings);
  const auto features = readManifest(package.resolved.locations.installManifest).installed();
  if (features.empty()) return;  // nothing is taken from a site
  const std::vector<std::string> sites = sitesIn(list);
  for (const std::string& site : sites) lintSite(package, site, findings);
  if (!std::all_of(sites.begin(), sites.end(), listsFeatures)) return;
  SiteSearch(package, sites, rcpHome, findings).look(features);
}

}  // namespace installer::ctl::lint
