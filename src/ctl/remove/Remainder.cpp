#include "ctl/remove/Remainder.h"

#include <fmt/format.h>

#include <algorithm>
#include <optional>

#include "hotfix/base/Path.h"
#include "hotfix/instance/InstanceService.h"
#include "hotfix/util/InstallUtil.h"
#include "instance/InstanceLayout.h"
#include "platform/Exists.h"
#include "platform/FileManager.h"
#include "platform/Platform.h"

namespace installer::ctl {

namespace {

std::vector<std::string> entriesOf(const std::string& folder) {
  const auto names = Platform::current().files->list(folder);
  std::vector<std::string> paths;
  for (const std::string& name : names.value_or(std::vector<std::string>()))
    paths.push_back(path::appendingComponent(folder, name));
  return paths;
}

Remainder extrasIn(const std::string& rcpHome) {
  return {"extras",
          "Extra files stay: nothing tells which of them the hotfix brought, and which were there "
          "before.",
          entriesOf(InstanceLayout::extras(rcpHome))};
}

Remainder settingsIn(const std::string& rcpHome) {
  std::vector<std::string> paths = {InstanceLayout::customization(rcpHome)};
  const auto instance = InstanceService::existing(rcpHome);
  if (const auto base = instance ? instance->getBaseVersion() : std::nullopt)
    paths.push_back(InstanceLayout::baseCustomization(rcpHome, *base));
  std::erase_if(paths, [](const std::string& path) { return !exists(path); });
  return {"settings", "Settings that the hotfix merged stay, with its values.", std::move(paths)};
}

// They are told even when there are none: the hotfix may have taken the instance's away.
Remainder keyStoresIn(const std::string& rcpHome) {
  std::vector<std::string> paths = entriesOf(InstanceLayout::deploy(rcpHome));
  std::erase_if(paths, [](const std::string& path) {
    return !InstallUtil::hasPrefixCaseInsensitive(path::lastComponent(path), ".keystore");
  });
  const std::string_view text =
      paths.empty()
          ? "There are no key stores: those that were there before the hotfix, if any, are gone."
          : "Key stores stay as the hotfix left them: those that were there before it, if any, are "
            "gone.";
  return {"key-stores", std::string(text), std::move(paths)};
}

// The launcher has said that it took them out; the instance's own manifest may say otherwise.
std::optional<Remainder> featuresIn(const std::string& rcpHome,
                                    const std::vector<Feature>& features) {
  const std::string manifest = InstanceLayout::installManifest(rcpHome);
  std::string names;
  for (const Feature& feature : ctl::featuresIn(manifest))
    if (std::find(features.begin(), features.end(), feature) != features.end())
      names +=
          fmt::format("{}{} {}", names.empty() ? "" : ", ", feature.identifier, feature.version);
  if (names.empty()) return std::nullopt;
  return Remainder{"features",
                   fmt::format("The instance's manifest still names what was to go: {}.", names),
                   {manifest}};
}

}  // namespace

std::vector<Remainder> remaindersIn(const std::string& rcpHome,
                                    const std::vector<Feature>& features) {
  std::vector<Remainder> all;
  for (Remainder& one : std::vector<Remainder>{extrasIn(rcpHome), settingsIn(rcpHome)})
    if (!one.paths.empty()) all.push_back(std::move(one));
  all.push_back(keyStoresIn(rcpHome));
  if (auto left = featuresIn(rcpHome, features)) all.push_back(std::move(*left));
  return all;
}

}  // namespace installer::ctl
