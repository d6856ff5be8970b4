#include "workflow/HotfixPackage.h"

#include "hotfix/base/Path.h"
#include "hotfix/platform/PropertyListFile.h"
#include "platform/FileManager.h"
#include "platform/Platform.h"

namespace installer::HotfixPackage {

std::string propertiesFile(const std::string& package) {
  return path::appendingComponent(package, "Contents/Resources/hotfix.plist");
}

std::optional<PropertyList::Dictionary> properties(const std::optional<std::string>& package) {
  if (!package || !Platform::current().files->exists(*package)) return std::nullopt;
  return PropertyList::readDictionary(propertiesFile(*package));
}

std::optional<std::string> rcpHomeIn(const std::string& bundle,
                                     const PropertyList::Dictionary& properties) {
  const auto frameworkPath = PropertyList::textForKey(properties, "frameworkPath");
  if (!frameworkPath) return std::nullopt;
  return path::appendingComponent(path::appendingComponent(bundle, *frameworkPath), "rcp");
}

std::optional<std::string> applicationName(const PropertyList::Dictionary& properties) {
  const auto bundleName = PropertyList::textForKey(properties, "bundleName");
  if (!bundleName) return std::nullopt;
  return *bundleName + ".app";
}

}  // namespace installer::HotfixPackage
