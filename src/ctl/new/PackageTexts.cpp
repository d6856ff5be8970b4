#include "ctl/new/PackageTexts.h"

#include <string_view>

#include "base/XmlEscapes.h"
#include "ctl/lint/Keys.h"
#include "hotfix/base/PropertyList.h"
#include "hotfix/formats/InstallManifest.h"

namespace installer::ctl::package {

namespace {

std::string attribute(std::string_view name, std::string_view value) {
  std::string text = " ";
  text.append(name).append("=\"");
  xml::appendEscapedValue(value, text);
  return text + "\"";
}

// What is done with the features, and where they come from.
struct Doing {
  std::string action;
  std::string url;
};

std::string featureElement(const Feature& feature, const Doing& doing) {
  return "            <feature" + attribute("id", feature.id) +
         attribute("version", feature.version) + attribute("url", doing.url) +
         attribute("action", doing.action) + "/>\n";
}

std::string installFeature(const std::string& id, const Wanted& wanted,
                           const std::string& features) {
  return "        <installfeature" + attribute("id", id) +
         attribute("description", "Hotfix " + wanted.version) + ">\n          <requirements>\n" +
         features + "          </requirements>\n        </installfeature>\n";
}

// One that brings nothing has an element to say so: without any it would be damaged.
std::string installFeatures(const Wanted& wanted, const Doing& doing) {
  if (wanted.withdraws) return installFeature(wanted.identifier, wanted, "");
  std::string text;
  for (const Feature& feature : wanted.features)
    text += installFeature(feature.id, wanted, featureElement(feature, doing));
  return text;
}

std::string manifest(const Wanted& wanted, const Doing& doing) {
  return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
         "<manifest>\n"
         "  <domain-object>\n"
         "    <object-data>\n"
         "      <install>\n" +
         installFeatures(wanted, doing) +
         "      </install>\n"
         "    </object-data>\n"
         "  </domain-object>\n"
         "</manifest>\n";
}

}  // namespace

std::optional<std::string> description(const Wanted& wanted) {
  PropertyList::Dictionary entries;
  const auto set = [&](std::string_view key, PropertyList::Value value) {
    entries.set(std::string(key), std::move(value));
  };
  set(lint::kBundleName, wanted.bundleName);
  set(lint::kAllowMultiInstance, !wanted.isRegistered);
  set(lint::kFrameworkPath, wanted.frameworkPath);
  set(lint::kVersion, wanted.version);
  if (wanted.skipsRunningCheck) set(lint::kSkipRunningCheck, "true");
  // The installer finds the usual place by itself.
  if (wanted.layout == Layout::flat && wanted.site)
    set(lint::kUpdateSites, std::string(lint::kPackageVariable) + wanted.siteFromPackage());
  return PropertyList::serializeDictionary(entries);
}

std::optional<std::string> information(const Wanted& wanted) {
  PropertyList::Dictionary entries;
  entries.set("CFBundleIdentifier", wanted.identifier);
  entries.set("CFBundleShortVersionString", wanted.version);
  return PropertyList::serializeDictionary(entries);
}

std::string installManifest(const Wanted& wanted) {
  return manifest(
      wanted, {"install", std::string(InstallManifest::INSTALLER_ROOT) + wanted.siteFromPackage()});
}

// Whoever removes a feature needs no site, least of all one that may be gone.
std::string uninstallManifest(const Wanted& wanted) {
  return manifest(wanted, {"uninstall", ""});
}

}  // namespace installer::ctl::package
