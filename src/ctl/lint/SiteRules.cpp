#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <string>
#include <vector>

#include "ctl/lint/Files.h"
#include "ctl/lint/Keys.h"
#include "ctl/lint/ManifestView.h"
#include "ctl/lint/RuleTable.h"
#include "ctl/lint/Rules.h"
#include "ctl/lint/Texts.h"
#include "hotfix/base/Path.h"
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

// The sites of the list as paths: one that exists as a whole, else those between the commas.
std::vector<std::string> sitesIn(const std::string& list) {
  if (exists(list)) return {list};
  std::vector<std::string> sites;
  for (std::size_t at = 0; at <= list.size() && sites.size() < kMostSites;) {
    const std::size_t end = std::min(list.find(',', at), list.size());
    std::string site = list.substr(at, end - at);
    if (at > 0 && site.starts_with(kScheme)) site.erase(0, kScheme.size());
    sites.push_back(std::move(site));
    at = end + 1;
  }
  return sites;
}

bool isSite(const std::string& folder) {
  return std::any_of(kSiteEntries.begin(), kSiteEntries.end(),
                     [&](const char* name) { return exists(appendingComponent(folder, name)); });
}

void lintSite(const PackageView& package, const std::string& site, Findings& findings) {
  const Place place = package.at(kUpdateSites);
  if (!exists(site))
    findings.add(rule("HF221"), place, fmt::format("There is no update site at {}.", site));
  else if (!isSite(site))
    findings.add(rule("HF223"), placeOf(site), "The folder holds no update site.");
  if (site.find_first_of("#%?") != std::string::npos)
    findings.add(rule("HF226"), place,
                 fmt::format("The update site's path {} holds #, % or ?.", site));
}

// --- What the sites hold -------------------------------------------------------------------------

// The entry of the feature or plug-in on one of the sites: a folder or a jar; empty without one.
std::string entryOn(const std::vector<std::string>& sites, const char* kind,
                    const std::string& name) {
  for (const std::string& site : sites)
    for (const char* const end : {"", ".jar"}) {
      const std::string entry = appendingComponent(appendingComponent(site, kind), name + end);
      if (exists(entry)) return entry;
    }
  return {};
}

// A plug-in of a feature.
void lintPlugin(const ElementAttributes& plugin, const std::vector<std::string>& sites,
                const std::string& file, Findings& findings) {
  if (!plugin.id || !plugin.version || *plugin.version == kAnyVersion) return;
  const std::string name = *plugin.id + "_" + *plugin.version;
  if (entryOn(sites, "plugins", name).empty())
    findings.add(rule("HF225"), placeOf(file),
                 fmt::format("No update site has the plug-in {}.", name));
}

// Looks for features on the sites, and for their plug-ins.
class SiteSearch {
 public:
  SiteSearch(const PackageView& package, const std::vector<std::string>& sites, Findings& findings)
      : _package(package), _sites(sites), _findings(findings) {}

  void look(const std::vector<FeatureView>& features) {
    std::size_t number = 0;
    for (const FeatureView& feature : features)
      if (++number <= kMostFeatures) lookFor(feature);
    if (number > kMostFeatures || _bytesLeft == 0)
      _findings.add(rule("HF608"), placeOf(_package.resolved.locations.updateSites),
                    "The update site holds more features than can be looked at.");
  }

 private:
  void lookFor(const FeatureView& feature) {
    if (feature.id.value_or("").empty() || feature.version.value_or("").empty()) return;
    const std::string name = *feature.id + "_" + *feature.version;
    const std::string entry = entryOn(_sites, "features", name);
    if (entry.empty())
      return _findings.add(rule("HF224"), placeOf(_package.resolved.locations.updateSites),
                           fmt::format("No update site has the feature {}.", name));
    lookForPlugins(appendingComponent(entry, "feature.xml"));
  }

  void lookForPlugins(const std::string& file) {
    auto bytes = _bytesLeft > 0 ? Platform::current().files->read(file) : std::nullopt;
    if (!bytes) return;
    _bytesLeft -= std::min(_bytesLeft, bytes->size());
    const auto plugins = childrenOfRoot(*std::move(bytes), "plugin");
    if (!plugins) return;
    for (const ElementAttributes& plugin : *plugins) lintPlugin(plugin, _sites, file, _findings);
  }

  const PackageView& _package;
  const std::vector<std::string>& _sites;
  Findings& _findings;
  std::size_t _bytesLeft = kMostFeatureBytes;
};

// Whether the site's features lie there as folders or jars that can be looked for by name.
bool listsFeatures(const std::string& site) {
  return isFolder(appendingComponent(site, "features"));
}

}  // namespace

void lintUpdateSites(const PackageView& package, Findings& findings) {
  const std::string& list = package.resolved.locations.updateSites;
  if (hasScheme(list))
    return findings.add(
        rule("HF222"), package.at(kUpdateSites),
        fmt::format("updateSiteList \"{0}\" reaches the platform as \"file:{0}\".", list));
  const auto features = readManifest(package.resolved.locations.installManifest).installed();
  if (features.empty()) return;  // nothing is taken from a site
  const std::vector<std::string> sites = sitesIn(list);
  for (const std::string& site : sites) lintSite(package, site, findings);
  if (!std::all_of(sites.begin(), sites.end(), listsFeatures)) return;
  SiteSearch(package, sites, findings).look(features);
}

}  // namespace installer::ctl::lint
