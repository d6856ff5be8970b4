#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <string>
#include <vector>

#include "ctl/Nearest.h"
#include "ctl/lint/Files.h"
#include "ctl/lint/Keys.h"
#include "ctl/lint/RuleTable.h"
#include "ctl/lint/Rules.h"
#include "ctl/lint/Texts.h"
#include "hotfix/base/Path.h"
#include "hotfix/util/InstallUtil.h"

namespace installer::ctl::lint {

namespace {

using Locations = ResolvedPackage::Locations;

enum class Holds { file, folder };

struct Location {
  std::string_view key;
  std::string Locations::*place;
  Holds holds;
  std::string_view usualName;  // in the deploy folder
};

constexpr std::array kLocations{
    Location{kInstallManifest, &Locations::installManifest, Holds::file, "install.hotfix.xml"},
    Location{kUninstallManifest, &Locations::uninstallManifest, Holds::file,
             "uninstall.hotfix.xml"},
    Location{kCustomization, &Locations::customization, Holds::file, "plugin_customization.ini"},
    Location{kKeyStores, &Locations::keyStores, Holds::folder, ""},
    Location{kExtras, &Locations::extras, Holds::folder, "extras"}};

// The value as it stands in the description; empty without one.
std::string valueOf(const PackageView& package, std::string_view key) {
  return PropertyList::textForKey(package.entries, key).value_or("");
}

bool isAbsolute(std::string_view value) {
  return value.starts_with('/') || value.starts_with(kPackageVariable);
}

// Whether other rules tell what is wrong with the text.
bool isOddText(std::string_view value) {
  return withoutBlanks(value) != value || !unknownPlaceholder(value, kPackageVariable).empty();
}

void lintForm(const PackageView& package, std::string_view key, Findings& findings) {
  const std::string value = valueOf(package, key);
  if (value.empty() || isOddText(value)) return;
  if (!isAbsolute(value))
    findings.add(
        rule("HF204"), package.at(key),
        fmt::format("{} is \"{}\", which begins where the installer was started.", key, value));
  else if (value.starts_with('/'))
    findings.add(rule("HF205"), package.at(key),
                 fmt::format("{} is \"{}\", a path of one machine.", key, value));
}

void lintKind(const PackageView& package, const Location& location, const std::string& place,
              Findings& findings) {
  const bool isWrong = location.holds == Holds::file ? isFolder(place) : isFile(place);
  if (isWrong)
    findings.add(rule("HF206"), placeOf(place),
                 fmt::format("For {} it must be {}.", location.key,
                             location.holds == Holds::file ? "a file" : "a folder"));
  if (location.holds == Holds::file && isFile(place) && !hasContent(package, place))
    findings.add(rule("HF208"), placeOf(place),
                 "It is a link to a file that does not belong to the package.");
}

void lintNamedPlace(const PackageView& package, const Location& location, const std::string& place,
                    Findings& findings) {
  const std::string value = valueOf(package, location.key);
  if (value.empty() || isOddText(value) || !isAbsolute(value) || exists(place)) return;
  findings.add(rule("HF203"), package.at(location.key),
               fmt::format("{} names {}, where there is nothing.", location.key, place));
}

// --- What the usual folder holds -----------------------------------------------------------------

bool holdsEntries(const std::string& folder) {
  return !entriesOf(folder).empty();
}

void lintMovedManifest(const PackageView& package, Findings& findings) {
  const Locations& locations = package.resolved.locations;
  if (!package.names(kInstallManifest)) return;
  const std::string deploy = package.deploy();
  const auto stores = keyStoresIn(deploy);
  if (!package.names(kKeyStores) && !stores.empty() && keyStoresIn(locations.keyStores) != stores)
    findings.add(rule("HF207"), package.at(kInstallManifest),
                 fmt::format("Key stores are taken from {}; {} in {} is not used.",
                             locations.keyStores, stores.front(), deploy));
  const std::string extras = path::appendingComponent(deploy, "extras");
  if (!package.names(kExtras) && holdsEntries(extras) && !holdsEntries(locations.extras))
    findings.add(rule("HF207"), package.at(kInstallManifest),
                 fmt::format("Extras are taken from {}; those in {} are not used.",
                             locations.extras, extras));
}

bool isUsualName(const std::string& name) {
  return InstallUtil::hasPrefixCaseInsensitive(name, ".keystore") ||
         std::any_of(kLocations.begin(), kLocations.end(),
                     [&](const Location& location) { return location.usualName == name; });
}

// What is looked for under its usual name and not found.
std::vector<std::string> missingNames(const PackageView& package) {
  std::vector<std::string> names;
  for (const Location& location : kLocations) {
    const bool isUsual = !location.usualName.empty() && !package.names(location.key);
    if (isUsual && !exists(package.resolved.locations.*location.place))
      names.emplace_back(location.usualName);
  }
  return names;
}

}  // namespace

void lintLocations(const PackageView& package, Findings& findings) {
  const Locations& locations = package.resolved.locations;
  for (const Location& location : kLocations) {
    const std::string& place = locations.*location.place;
    lintForm(package, location.key, findings);
    lintKind(package, location, place, findings);
    if (location.key != kInstallManifest) lintNamedPlace(package, location, place, findings);
  }
  lintForm(package, kUpdateSites, findings);
  if (!exists(locations.installManifest))
    findings.add(rule("HF201"), package.at(kInstallManifest),
                 fmt::format("There is no install manifest at {}.", locations.installManifest));
  if (!package.names(kUninstallManifest) && !exists(locations.uninstallManifest))
    findings.add(rule("HF202"), placeOf(locations.uninstallManifest),
                 "There is no such file: the hotfix cannot be removed.");
  if (exists(locations.installManifest) && locations.installManifest == locations.uninstallManifest)
    findings.add(rule("HF210"), package.at(kUninstallManifest),
                 fmt::format("{} is both the install and the uninstall manifest.",
                             locations.installManifest));
  lintMovedManifest(package, findings);
}

void lintDeployFolder(const PackageView& package, Findings& findings) {
  const std::vector<std::string> missing = missingNames(package);
  const std::string folder = package.deploy();
  for (const SeenEntry& entry : entriesOf(folder)) {
    const auto meant = nearest(entry.path, missing);
    if (meant && !isUsualName(entry.path))
      findings.add(rule("HF209"), placeOf(path::appendingComponent(folder, entry.path)),
                   fmt::format("\"{}\" is not used; \"{}\" is looked for.", entry.path, *meant));
  }
}

}  // namespace installer::ctl::lint
