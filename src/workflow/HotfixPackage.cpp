#include "workflow/HotfixPackage.h"

#include "hotfix/base/Path.h"
#include "hotfix/platform/PropertyListFile.h"
#include "hotfix/util/InstallUtil.h"
#include "platform/FileManager.h"
#include "platform/Platform.h"
#include "platform/Reported.h"

namespace installer {

namespace {

using PropertyList::Dictionary;
using PropertyList::textForKey;

constexpr const char* kInstallManifest = "pathToHotfixManifest";
constexpr const char* kUninstallManifest = "pathToHotfixUninstallManifest";
constexpr const char* kCustomization = "pathToPluginCustomization";
constexpr const char* kUpdateSites = "updateSiteList";
constexpr const char* kKeyStores = "keystore";
constexpr const char* kExtras = "extras";

// The text under the key, after the default has taken the place of a missing or empty one.
std::string withDefault(Dictionary& properties, const char* key, const std::string& value) {
  const std::string text = textForKey(properties, key).value_or("");
  if (!text.empty()) return text;
  properties.set(key, value);
  return value;
}

// Before "${package}" is replaced: the folders of key stores and extras follow from the manifest's
// place as it stands.
void initializeDefaultValues(Dictionary& properties) {
  const std::string manifest =
      withDefault(properties, kInstallManifest, "${package}/../deploy/install.hotfix.xml");
  withDefault(properties, kUninstallManifest, "${package}/../deploy/uninstall.hotfix.xml");
  withDefault(properties, kCustomization, "${package}/../deploy/plugin_customization.ini");
  withDefault(properties, kUpdateSites, "${package}/../../updates/platform");
  // A package that names its own manifest moves the folders beside it along.
  const std::string folder = path::deletingLastComponent(manifest);
  withDefault(properties, kKeyStores, folder);
  withDefault(properties, kExtras, path::appendingComponent(folder, "extras"));
}

// Of a description that has its defaults.
ResolvedPackage::Locations locationsIn(const Dictionary& properties) {
  const auto location = [&](const char* key) { return textForKey(properties, key).value_or(""); };
  return {.installManifest = location(kInstallManifest),
          .uninstallManifest = location(kUninstallManifest),
          .customization = location(kCustomization),
          .updateSites = location(kUpdateSites),
          .keyStores = location(kKeyStores),
          .extras = location(kExtras)};
}

}  // namespace

std::optional<std::string> HotfixPackage::applicationName() const {
  if (!bundleName) return std::nullopt;
  return *bundleName + ".app";
}

std::optional<std::string> HotfixPackage::bundleIn(const std::string& folder) const {
  const std::optional<std::string> application = applicationName();
  if (!application) return std::nullopt;
  return path::appendingComponent(folder, *application);
}

std::optional<std::string> HotfixPackage::rcpHomeIn(const std::string& bundle) const {
  if (!frameworkPath) return std::nullopt;
  return path::appendingComponent(path::appendingComponent(bundle, *frameworkPath), "rcp");
}

std::optional<std::string> HotfixPackage::rcpHomeBelow(const std::string& folder) const {
  const std::optional<std::string> bundle = bundleIn(folder);
  if (!bundle) return std::nullopt;
  return rcpHomeIn(*bundle);
}

HotfixPackage HotfixPackage::describedBy(const Dictionary& properties) {
  HotfixPackage package;
  package.bundleName = textForKey(properties, "bundleName");
  package.frameworkPath = textForKey(properties, "frameworkPath");
  package.version = textForKey(properties, "version");
  package.allowMultiInstance = PropertyList::booleanForKey(properties, "allowMultiInstance");
  package.skipRunningCheck = textForKey(properties, "SKIPRUNNINGCHECK") == "true";
  return package;
}

ResolvedPackage HotfixPackage::resolvedFor(const std::string& package,
                                           const Dictionary& properties) {
  Dictionary complete = properties;
  initializeDefaultValues(complete);
  InstallUtil::replacePackageVariableWith(package, complete);
  return {describedBy(complete), locationsIn(complete)};
}

std::string HotfixPackage::propertiesFile(const std::string& package) {
  return path::appendingComponent(package, "Contents/Resources/hotfix.plist");
}

std::optional<Dictionary> HotfixPackage::properties(const std::optional<std::string>& package,
                                                    Lack* lack) {
  const auto without = [&](Lack reason) {
    if (lack != nullptr) *lack = reason;
    return std::nullopt;
  };
  if (!package || package->empty()) return without(Lack::package);
  const std::string file = propertiesFile(*package);
  FileError error;
  const std::optional<std::string> bytes = Platform::current().files->read(file, &error);
  if (!bytes && !reported::exists(*package)) return without(Lack::package);
  if (!bytes && !reported::exists(file)) return without(Lack::description);
  if (!bytes) reported::tellUnreadable(error);
  std::optional<Dictionary> entries = bytes ? PropertyList::parseDictionary(*bytes) : std::nullopt;
  if (!entries) return without(Lack::propertyList);
  return entries;
}

}  // namespace installer
