#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <set>
#include <string>

#include "ctl/lint/Files.h"
#include "ctl/lint/Keys.h"
#include "ctl/lint/Lines.h"
#include "ctl/lint/ManifestView.h"
#include "ctl/lint/RuleTable.h"
#include "ctl/lint/Rules.h"
#include "ctl/lint/Texts.h"
#include "hotfix/formats/InstallManifest.h"

namespace installer::ctl::lint {

namespace {

constexpr std::string_view kRoot = InstallManifest::INSTALLER_ROOT;

Place featureIn(const ManifestView& manifest, const FeatureView& feature) {
  return {manifest.file, std::nullopt, feature.line};
}

// --- Features ------------------------------------------------------------------------------------

bool isRemote(std::string_view url) {
  return url.starts_with("http:") || url.starts_with("https:");
}

// What stands for the placeholder and is none; empty without it.
std::string_view misspeltRoot(std::string_view url) {
  const std::string_view found = unknownPlaceholder(url, kRoot);
  const std::string small = inSmallLetters(found);
  const bool isMeant =
      small.find("installer") != std::string::npos && small.find("root") != std::string::npos;
  return isMeant ? found : std::string_view();
}

// Before the placeholder, of which "jar:file:/..." can be made, and of any other scheme nothing.
bool hasSchemeBeforeRoot(std::string_view before) {
  return before != "jar:" && before.find(':') != std::string_view::npos;
}

void lintUrl(const ManifestView& manifest, const FeatureView& feature, Findings& findings) {
  const std::string url = feature.url.value_or("");
  const Place place = featureIn(manifest, feature);
  if (const auto misspelt = misspeltRoot(url); !misspelt.empty())
    return findings.add(rule("HF305"), place,
                        fmt::format("\"{}\" is not {}, and stays as it is.", misspelt, kRoot));
  const std::size_t root = url.find(kRoot);
  if (root == std::string::npos && !isRemote(url) && feature.isInstalled())
    return findings.add(
        rule("HF306"), place,
        fmt::format("The url of feature {} is \"{}\", without {}.", feature.name(), url, kRoot));
  if (root != std::string::npos && hasSchemeBeforeRoot(url.substr(0, root)))
    findings.add(rule("HF307"), place,
                 fmt::format("\"{}\" becomes \"{}file:/...\".", url, url.substr(0, root)));
}

void lintFeature(const ManifestView& manifest, const FeatureView& feature, Findings& findings) {
  const Place place = featureIn(manifest, feature);
  const bool lacksVersion = feature.isInstalled() && feature.version.value_or("").empty();
  if (feature.id.value_or("").empty() || lacksVersion)
    findings.add(rule("HF308"), place,
                 fmt::format("The feature \"{}\" lacks its id or its version.", feature.name()));
  const std::string action = feature.action.value_or("");
  if (action.empty())
    findings.add(rule("HF317"), place,
                 fmt::format("The feature {} has no action.", feature.name()));
  if (!action.empty() && action != "install" && action != "uninstall")
    findings.add(rule("HF310"), place,
                 fmt::format("The action of feature {} is \"{}\".", feature.name(), action));
}

void lintDuplicates(const ManifestView& manifest, Findings& findings) {
  std::set<std::string> seen;
  for (const FeatureView& feature : manifest.features)
    if (!seen.insert(feature.id.value_or("") + (feature.isInstalled() ? "\n+" : "\n-")).second)
      findings.add(rule("HF309"), featureIn(manifest, feature),
                   fmt::format("The feature {} is named twice.", feature.id.value_or("")));
}

void lintFeatures(const ManifestView& manifest, Findings& findings) {
  for (const FeatureView& feature : manifest.features) {
    lintUrl(manifest, feature, findings);
    lintFeature(manifest, feature, findings);
  }
  lintDuplicates(manifest, findings);
}

// --- The install manifest ------------------------------------------------------------------------

void lintRootsThatStay(const ManifestView& manifest, Findings& findings) {
  for (const std::size_t line : linesOfRootsThatStay(manifest))
    findings.add(rule("HF304"),
                 {manifest.file, std::nullopt, line == 0 ? std::nullopt : std::optional(line)},
                 fmt::format("{} stays as it is here.", kRoot));
}

// Whether a feature of that version can belong to a hotfix of that version: it may go on with a
// stamp of its own.
bool agree(const std::string& hotfix, const std::string& feature) {
  if (!feature.starts_with(hotfix)) return false;
  return feature.size() == hotfix.size() ||
         !(feature[hotfix.size()] >= '0' && feature[hotfix.size()] <= '9');
}

void lintVersions(const PackageView& package, const ManifestView& manifest, Findings& findings) {
  const auto& version = package.described.version;
  const auto installed = manifest.installed();
  if (!version || version->empty() || installed.empty()) return;
  const bool anyAgrees =
      std::any_of(installed.begin(), installed.end(), [&](const FeatureView& feature) {
        return agree(std::string(withoutBlanks(*version)), feature.version.value_or(""));
      });
  if (!anyAgrees)
    findings.add(rule("HF120"), package.at(kVersion),
                 fmt::format("The hotfix is of version \"{}\", its feature is {}.", *version,
                             installed.front().name()));
}

void lintInstallManifest(const PackageView& package, const ManifestView& manifest,
                         Findings& findings) {
  if (!manifest.whyUnread.empty())
    return findings.add(rule("HF301"), placeOf(manifest.file), manifest.whyUnread + ".");
  if (!manifest.isThere) return;
  if (!manifest.isWellFormed)
    return findings.add(rule("HF301"), placeOf(manifest.file), "The manifest is not well-formed.");
  if (!manifest.lack.empty())
    findings.add(rule("HF302"), placeOf(manifest.file), manifest.lack + ".");
  else if (manifest.features.empty())
    findings.add(rule("HF303"), placeOf(manifest.file), "The manifest names no feature.");
  lintRootsThatStay(manifest, findings);
  lintFeatures(manifest, findings);
  lintVersions(package, manifest, findings);
}

// --- The uninstall manifest ----------------------------------------------------------------------

// The versions that a manifest removes of each feature; an empty one is any.
using RemovedVersions = std::map<std::string, std::set<std::string>>;

RemovedVersions removedBy(const ManifestView& manifest) {
  RemovedVersions removed;
  for (const FeatureView& feature : manifest.features)
    if (!feature.isInstalled())
      removed[feature.id.value_or("")].insert(feature.version.value_or(""));
  return removed;
}

void lintRemovals(const ManifestView& install, const ManifestView& manifest, Findings& findings) {
  const RemovedVersions removed = removedBy(manifest);
  for (const FeatureView& added : install.installed()) {
    const auto versions = removed.find(added.id.value_or(""));
    if (versions == removed.end())
      findings.add(rule("HF313"), placeOf(manifest.file),
                   fmt::format("The feature {} is not removed.", added.name()));
    else if (!versions->second.contains("") &&
             !versions->second.contains(added.version.value_or("")))
      findings.add(rule("HF316"), placeOf(manifest.file),
                   fmt::format("Of the feature {} another version is removed.", added.name()));
  }
}

void lintUninstallManifest(const ManifestView& install, const ManifestView& manifest,
                           Findings& findings) {
  if (!manifest.whyUnread.empty())
    return findings.add(rule("HF311"), placeOf(manifest.file), manifest.whyUnread + ".");
  if (!manifest.isThere) return;
  if (!manifest.isWellFormed)
    return findings.add(rule("HF311"), placeOf(manifest.file), "The manifest is not well-formed.");
  if (!manifest.lack.empty())
    return findings.add(rule("HF312"), placeOf(manifest.file), manifest.lack + ".");
  for (const FeatureView& feature : manifest.features) {
    lintFeature(manifest, feature, findings);
    if (feature.isInstalled())
      findings.add(rule("HF315"), featureIn(manifest, feature),
                   fmt::format("The feature {} would be installed.", feature.name()));
  }
  lintDuplicates(manifest, findings);
  if (standsIn(manifest.bytes, kRoot))
    findings.add(rule("HF314"), {manifest.file, std::nullopt, lineOf(manifest.bytes, kRoot)},
                 fmt::format("{} is not replaced when the hotfix is removed.", kRoot));
  lintRemovals(install, manifest, findings);
}

}  // namespace

void lintManifests(const PackageView& package, Findings& findings) {
  const auto& locations = package.resolved.locations;
  const ManifestView install = readManifest(locations.installManifest);
  lintInstallManifest(package, install, findings);
  if (locations.uninstallManifest != locations.installManifest)
    lintUninstallManifest(install, readManifest(locations.uninstallManifest), findings);
}

}  // namespace installer::ctl::lint
