#include "hotfix/instance/InstanceService.h"
#include "hotfix/platform/PropertyListFile.h"
#include "instance/InstanceLayout.h"
#include "platform/Reported.h"

namespace installer {

namespace {

using PropertyList::Array;
using PropertyList::Dictionary;

std::optional<std::string> textOf(const std::optional<Dictionary>& entry, std::string_view key) {
  if (!entry) return std::nullopt;
  return PropertyList::textForKey(*entry, key);
}

}  // namespace

std::optional<std::vector<Dictionary>> InstanceService::getAllAddonRegistryInfo() const {
  if (!_pathToRcphome) return std::nullopt;
  const std::string file = InstanceLayout::addonInfo(*_pathToRcphome);
  std::vector<Dictionary> entries;
  FileError error;
  const std::optional<Dictionary> registry = PropertyList::readDictionary(file, error);
  if (!registry && error.code == FileError::kMissing) return std::nullopt;
  if (!registry) reported::tell(error);
  const PropertyList::Value* addons = registry ? registry->find("addons") : nullptr;
  const Array* list = addons ? addons->as<Array>() : nullptr;
  if (list == nullptr) return entries;
  for (const PropertyList::Value& addon : *list)
    if (const Dictionary* entry = addon.as<Dictionary>()) entries.push_back(*entry);
  return entries;
}

std::optional<Dictionary> InstanceService::getRegistryInfoForAddon(
    const std::optional<std::string>& addon) const {
  if (!addon) return std::nullopt;
  const std::optional<std::vector<Dictionary>> entries = getAllAddonRegistryInfo();
  if (!entries) return std::nullopt;
  for (const Dictionary& entry : *entries)
    if (PropertyList::textForKey(entry, "ID") == *addon) return entry;
  return std::nullopt;
}

std::optional<std::string> InstanceService::getAddonInstalledVersion(
    const std::optional<std::string>& addon) const {
  return textOf(getRegistryInfoForAddon(addon), "version");
}

std::optional<std::string> InstanceService::getAddonInstalledBundleID(
    const std::optional<std::string>& addon) const {
  return textOf(getRegistryInfoForAddon(addon), "CFBundleIdentifier");
}

void InstanceService::removeRegistryInfoforAddon(
    const std::optional<std::string>& /*addon*/) const {}

}  // namespace installer
