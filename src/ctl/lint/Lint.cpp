#include "ctl/lint/Lint.h"

#include <utility>

#include "ctl/QuietPlatform.h"
#include "ctl/lint/Closed.h"
#include "ctl/lint/PackageView.h"
#include "ctl/lint/RuleTable.h"
#include "ctl/lint/Rules.h"
#include "hotfix/util/InstallUtil.h"
#include "instance/InstanceLayout.h"
#include "platform/AbsolutePath.h"
#include "platform/FileManager.h"
#include "platform/Platform.h"

namespace installer::ctl::lint {

namespace {

// What comes of opening a package: the package, a finding that leaves nothing else to look at, or
// neither.
using Opened = std::variant<CannotLook, Finding, PackageView>;

CannotLook cannotLook(const std::string& path, std::string_view reason) {
  return {path + ": " + std::string(reason)};
}

Opened withoutDescription(const std::string& file, const FileError& error) {
  switch (error.code) {
    case FileError::kMissing:
      return Finding{&rule("HF101"), placeOf(file), "There is no such file."};
    case FileError::kNoFile:
      return Finding{&rule("HF102"), placeOf(file), "It is no regular file."};
    default:
      return CannotLook{error.description};
  }
}

Opened openPackage(const std::string& path) {
  FileManager& files = *Platform::current().files;
  FileError error;
  if (!files.exists(path, &error))
    return error.code == FileError::kMissing ? cannotLook(path, "there is no such package")
                                             : CannotLook{error.description};
  if (!files.isDirectory(path)) return cannotLook(path, "a package is a folder, and this is none");
  PackageView package{.path = path, .listFile = HotfixPackage::propertiesFile(path)};
  auto bytes = files.read(package.listFile, &error);
  if (!bytes) return withoutDescription(package.listFile, error);
  auto entries = PropertyList::parseDictionary(*bytes);
  if (!entries)
    return Finding{&rule("HF102"), placeOf(package.listFile),
                   "It is damaged, or its root is no dictionary."};
  package.listBytes = *std::move(bytes);
  package.listKeys = rootKeysOf(package.listBytes);
  package.entries = *std::move(entries);
  package.described = HotfixPackage::describedBy(package.entries);
  package.resolved = HotfixPackage::resolvedFor(path, package.entries);
  return package;
}

// The bundle that is meant by it, or by its rcp home, with its whole path.
std::string bundleOf(const std::string& instance) {
  std::string path = absolutePath(instance);
  while (path.size() > 1 && path.ends_with('/')) path.pop_back();
  if (path.ends_with(".app")) return path;
  return InstallUtil::getBundlePath(path).value_or(path);
}

// The rcp home that the package means in the bundle; nullopt without a way to it.
std::optional<std::string> rcpHomeIn(const std::optional<std::string>& bundle,
                                     const PackageView& package) {
  if (!bundle) return std::nullopt;
  return package.described.rcpHomeIn(*bundle);
}

// What of the package is looked at.
Wanted wantedOf(const PackageView& package) {
  const ResolvedPackage::Locations& places = package.resolved.locations;
  return {.files = {places.installManifest, places.uninstallManifest, places.customization,
                    InstanceLayout::bundleInfo(package.path)},
          .folders = {package.deploy(), places.keyStores},
          .trees = {places.extras}};
}

Wanted wantedOf(const std::optional<std::string>& rcpHome) {
  if (!rcpHome) return {};
  return {.files = {InstanceLayout::installInfo(*rcpHome)},
          .folders = {InstanceLayout::deploy(*rcpHome)},
          .trees = {}};
}

std::optional<CannotLook> lookAt(const PackageView& package, const Request& request,
                                 Findings& findings) {
  std::optional<std::string> instance;
  if (request.instance) instance = bundleOf(*request.instance);
  const std::optional<std::string> rcpHome = rcpHomeIn(instance, package);
  for (const Wanted& wanted : {wantedOf(package), wantedOf(rcpHome)})
    if (auto reason = whyClosed(wanted)) return CannotLook{*std::move(reason)};
  lintDescription(package, findings);
  lintVersion(package, request.older.has_value(), findings);
  lintLocations(package, findings);
  lintDeployFolder(package, findings);
  lintUpdateSites(package, rcpHome, findings);
  lintManifests(package, findings);
  lintCustomization(package, findings);
  lintKeyStores(package, rcpHome, findings);
  lintExtras(package, rcpHome, findings);
  lintIdentity(package, findings);
  if (instance) lintInstance(package, *instance, findings);
  return std::nullopt;
}

std::optional<CannotLook> whyNoInstance(const std::optional<std::string>& bundle) {
  if (!bundle || Platform::current().files->isDirectory(*bundle)) return std::nullopt;
  return cannotLook(*bundle, "there is no such application bundle");
}

// Why the older package cannot be compared with; nullopt for none, too.
std::optional<CannotLook> whyNotCompared(const std::optional<Opened>& opened) {
  if (!opened) return std::nullopt;
  const Opened& older = *opened;
  if (const auto* reason = std::get_if<CannotLook>(&older)) return *reason;
  if (const auto* finding = std::get_if<Finding>(&older))
    return cannotLook(finding->place.file, finding->message);
  if (auto reason = whyClosed(wantedOf(std::get<PackageView>(older))))
    return CannotLook{*std::move(reason)};
  return std::nullopt;
}

}  // namespace

std::variant<CannotLook, Findings> lint(const Request& request) {
  const QuietPlatform quiet;
  if (auto reason = whyNoInstance(request.instance)) return *std::move(reason);
  const Opened opened = openPackage(request.package);
  if (const auto* reason = std::get_if<CannotLook>(&opened)) return *reason;
  std::optional<Opened> older;
  if (request.older) older = openPackage(*request.older);
  if (auto reason = whyNotCompared(older)) return *std::move(reason);
  Findings findings(request.disabled);
  lintPath(request.package, findings);
  if (const auto* finding = std::get_if<Finding>(&opened)) {
    findings.add(*finding->rule, finding->place, finding->message);
    return findings;
  }
  const auto& package = std::get<PackageView>(opened);
  if (auto reason = lookAt(package, request, findings)) return *std::move(reason);
  if (older) lintOlder(package, std::get<PackageView>(*older), findings);
  return findings;
}

}  // namespace installer::ctl::lint
