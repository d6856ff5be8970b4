#include <fmt/format.h>

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

#include "ctl/lint/Files.h"
#include "ctl/lint/Keys.h"
#include "ctl/lint/ManifestView.h"
#include "ctl/lint/RuleTable.h"
#include "ctl/lint/Rules.h"
#include "hotfix/base/Path.h"
#include "hotfix/formats/Properties.h"
#include "hotfix/util/InstallUtil.h"
#include "instance/InstanceLayout.h"
#include "platform/AbsolutePath.h"

namespace installer::ctl::lint {

// --- Paths ---------------------------------------------------------------------------------------

void lintPath(const std::string& package, Findings& findings) {
  if (InstallUtil::containUnSupportedCharacters(absolutePath(package)))
    findings.add(rule("HF801"), placeOf(package), "The path is refused.");
}

// --- The instance --------------------------------------------------------------------------------

namespace {

void lintInstalledVersion(const PackageView& package, const std::string& rcpHome,
                          Findings& findings) {
  const std::string file = InstanceLayout::installInfo(rcpHome);
  const auto installed = Properties(file).getPropertyForKey("hotfixVersion");
  const auto& version = package.described.version;
  if (installed && version && *version < *installed)
    findings.add(rule("HF805"), package.at(kVersion),
                 fmt::format("Version \"{}\" sorts before \"{}\", which is installed.", *version,
                             *installed));
}

}  // namespace

void lintInstance(const PackageView& package, const std::string& bundle, Findings& findings) {
  const std::string destination = path::deletingLastComponent(bundle);
  if (InstallUtil::containUnSupportedCharacters(destination))
    findings.add(rule("HF806"), placeOf(destination), "The path is refused.");
  const auto name = package.described.applicationName();
  if (name && *name != path::lastComponent(bundle))
    findings.add(
        rule("HF803"), package.at(kBundleName),
        fmt::format("The package is for {}, not for {}.", *name, path::lastComponent(bundle)));
  const auto rcpHome = package.described.rcpHomeIn(bundle);
  if (!rcpHome) return;
  if (!exists(InstanceLayout::installManifest(*rcpHome)))
    return findings.add(rule("HF804"), package.at(kFrameworkPath),
                        fmt::format("There is no {}.", InstanceLayout::installManifest(*rcpHome)));
  lintInstalledVersion(package, *rcpHome, findings);
}

// --- The package before --------------------------------------------------------------------------

namespace {

void lintOlderVersion(const PackageView& package, const PackageView& older, Findings& findings) {
  const auto& now = package.described.version;
  const auto& before = older.described.version;
  if (!now || !before) return;
  if (*now < *before)
    findings.add(rule("HF901"), package.at(kVersion),
                 fmt::format("\"{}\" sorts before \"{}\".", *now, *before));
  if (*now == *before)
    findings.add(rule("HF902"), package.at(kVersion),
                 fmt::format("\"{}\" is the older package's version, too.", *now));
}

void lintOlderTarget(const PackageView& package, const PackageView& older, Findings& findings) {
  const HotfixPackage& now = package.described;
  const HotfixPackage& before = older.described;
  if (now.bundleName == before.bundleName && now.frameworkPath == before.frameworkPath) return;
  findings.add(
      rule("HF903"), package.at(kBundleName),
      fmt::format("The package is for {} in {}, the older one for {} in {}.",
                  now.frameworkPath.value_or("nothing"), now.bundleName.value_or("nothing"),
                  before.frameworkPath.value_or("nothing"), before.bundleName.value_or("nothing")));
}

void lintOlderRemoval(const PackageView& older, Findings& findings) {
  const std::string& file = older.resolved.locations.uninstallManifest;
  const ManifestView manifest = readManifest(file);
  if (!manifest.isWellFormed || !manifest.lack.empty())
    findings.add(rule("HF904"), placeOf(file),
                 "The older hotfix's uninstall manifest is missing or damaged.");
}

// A folder that stays is told alone, without what is in it.
void lintOlderExtras(const PackageView& package, const std::string& older, Findings& findings) {
  const std::string& extras = package.resolved.locations.extras;
  const auto seen = lookBelow(older, kTreeLook);
  if (!seen) return;
  for (const SeenEntry& entry : seen->entries) {
    const std::string now = path::appendingComponent(extras, entry.path);
    const bool isTold =
        entry.path.find('/') != std::string::npos && !exists(path::deletingLastComponent(now));
    if (!isTold && !exists(now))
      findings.add(rule("HF906"), placeOf(path::appendingComponent(older, entry.path)),
                   fmt::format("\"{}\" of the older package's extras stays.", entry.path));
  }
}

void lintOlderFiles(const PackageView& package, const PackageView& older, Findings& findings) {
  const auto brought = keyStoresIn(package.resolved.locations.keyStores);
  const std::string& stores = older.resolved.locations.keyStores;
  for (const std::string& name : keyStoresIn(stores))
    if (!std::binary_search(brought.begin(), brought.end(), name))
      findings.add(
          rule("HF905"), placeOf(path::appendingComponent(stores, name)),
          fmt::format("\"{}\" of the older package would be removed and not replaced.", name));
  lintOlderExtras(package, older.resolved.locations.extras, findings);
}

}  // namespace

void lintOlder(const PackageView& package, const PackageView& older, Findings& findings) {
  lintOlderVersion(package, older, findings);
  lintOlderTarget(package, older, findings);
  lintOlderRemoval(older, findings);
  lintOlderFiles(package, older, findings);
}

}  // namespace installer::ctl::lint
