#include "ctl/status/Doctor.h"

#include <fmt/format.h>

#include <algorithm>
#include <optional>

#include "ctl/status/Features.h"
#include "hotfix/base/Path.h"
#include "hotfix/instance/InstanceService.h"
#include "hotfix/util/InstallUtil.h"
#include "instance/InstanceLayout.h"
#include "platform/EntryFacts.h"
#include "platform/FileManager.h"
#include "platform/LeftOverName.h"
#include "platform/Platform.h"

namespace installer::ctl {

namespace {

// A manifest may name any number; who reads the findings does not need all.
constexpr std::size_t kMostFeatures = 10;

class Examination {
 public:
  Examination(const std::string& rcpHome, bool hasHotfix, std::vector<Finding>& findings)
      : _home(rcpHome), _hasHotfix(hasHotfix), _findings(findings) {}

  void lookForLeftOvers() {
    for (const std::string& folder : workedIn()) {
      const auto names = files().list(folder);
      if (names)
        lookForLeftOvers(folder, *names);
      else if (files().isDirectory(folder))
        add("not-looked-through", fmt::format("\"{}\" cannot be listed by this user.", folder),
            "Ask as a user who may, root say.");
    }
  }

  void compareRecord() {
    const auto instance = InstanceService::existing(_home);
    const bool hasIdentifier = instance && instance->getInstalledHotfixBundleID();
    if (_hasHotfix && !hasIdentifier)
      add("version-without-identifier",
          "The hotfix's version is recorded, its package's identifier is not: the run ended "
          "between the two, or the package has none.",
          "Install the hotfix again. Without the identifier the system's receipt of it stays when "
          "the hotfix is removed.");
    if (!_hasHotfix && hasIdentifier)
      add("identifier-without-version",
          "A hotfix's identifier is recorded and no version: it was removed, its features were "
          "not installed, or its package has no version.",
          "Install a hotfix that has a version; the removal of this one would otherwise never be "
          "asked for.");
  }

  void lookAtUninstallManifest() {
    const std::string manifest = InstanceLayout::uninstallManifest(_home);
    const bool isThere = files().exists(manifest);
    if (_hasHotfix && !isThere)
      add("uninstall-manifest-missing",
          fmt::format("\"{}\" is missing: the hotfix cannot be removed.", manifest),
          "Copy the hotfix's uninstall manifest there, or install the hotfix again.");
    if (_hasHotfix && isThere && !isManifest(manifest))
      add("uninstall-manifest-damaged",
          fmt::format("\"{}\" cannot be read as a manifest: the hotfix cannot be removed.",
                      manifest),
          "Copy the hotfix's uninstall manifest there, or install the hotfix again.");
    if (!_hasHotfix && isThere) compareFeatures(manifest);
  }

  void lookForKeyStores() {
    const auto names = files().list(InstanceLayout::deploy(_home));
    if (!names) return;  // which lookForLeftOvers() tells
    const bool hasSome = std::any_of(names->begin(), names->end(), [](const std::string& name) {
      return InstallUtil::hasPrefixCaseInsensitive(name, ".keystore");
    });
    if (hasSome) return;
    add("no-key-stores",
        fmt::format("\"{}\" holds no key store: a hotfix without any takes the instance's away.",
                    InstanceLayout::deploy(_home)),
        "If the instance had some, install a hotfix that brings them, or copy them there.");
  }

  // A run hands everything to one user in its last steps.
  void compareOwners() {
    const auto reference = entryAt(InstanceLayout::deploy(_home));
    if (!reference) return;
    for (const std::string& file : handedOver()) {
      const auto facts = entryAt(file);
      if (!facts || facts->owner == reference->owner) continue;
      add("other-owner",
          fmt::format("\"{}\" belongs to user {}, its neighbours to user {}.", file, facts->owner,
                      reference->owner),
          "The next installation hands all to one user; until then the application may not be able "
          "to change it.");
    }
  }

  void lookForLinks() {
    for (const std::string& file : plainOnes()) {
      const auto facts = entryAt(file);
      if (facts && facts->isLink)
        add("link-in-place-of-a-file",
            fmt::format("\"{}\" is a link where a file or a folder belongs.", file),
            "Put what belongs there in its place; nobody but the installer should have made it.");
    }
  }

 private:
  static FileManager& files() { return *Platform::current().files; }

  void add(std::string_view name, std::string text, std::string remedy) {
    _findings.push_back({name, std::move(text), std::move(remedy)});
  }

  void lookForLeftOvers(const std::string& folder, const std::vector<std::string>& names) {
    for (const std::string& name : names)
      if (canBeLeftOver(name))
        add("left-over-item",
            fmt::format("A run that was killed left \"{}\".",
                        path::appendingComponent(folder, name)),
            "The next installation removes it.");
  }

  // The folders in which runs write, and which they look through for what others left.
  std::vector<std::string> workedIn() const {
    using namespace InstanceLayout;
    return {_home,        deploy(_home),         extras(_home),
            links(_home), defaultRcpData(_home), workspaceFlag(defaultRcpData(_home))};
  }
  std::vector<std::string> handedOver() const {
    using namespace InstanceLayout;
    return {installInfo(_home),   launcher(_home),        launcherProperties(_home),
            customization(_home), installManifest(_home), uninstallManifest(_home),
            extras(_home)};
  }
  std::vector<std::string> plainOnes() const {
    using namespace InstanceLayout;
    std::vector<std::string> all = handedOver();
    all.push_back(deploy(_home));
    all.push_back(plugins(_home));
    all.push_back(provisioningResult(_home));
    return all;
  }

  // What the manifest would remove is installed, although no hotfix is recorded.
  void compareFeatures(const std::string& manifest) {
    constexpr const char* kRemedy =
        "Install the hotfix again, so that it is recorded and can be removed.";
    std::vector<Feature> installed = featuresIn(InstanceLayout::installManifest(_home));
    std::sort(installed.begin(), installed.end());
    std::size_t count = 0;
    for (const Feature& feature : featuresIn(manifest)) {
      if (!std::binary_search(installed.begin(), installed.end(), feature)) continue;
      if (++count > kMostFeatures) continue;
      add("unrecorded-feature",
          fmt::format("The feature {} {} is installed, and no hotfix is recorded: the run ended "
                      "before it could.",
                      feature.identifier, feature.version),
          kRemedy);
    }
    if (count > kMostFeatures)
      add("unrecorded-feature",
          fmt::format("{} more features are installed, and no hotfix is recorded.",
                      count - kMostFeatures),
          kRemedy);
  }

  const std::string& _home;
  const bool _hasHotfix;
  std::vector<Finding>& _findings;
};

}  // namespace

void examine(const std::string& rcpHome, bool hasHotfix, std::vector<Finding>& findings) {
  Examination examination(rcpHome, hasHotfix, findings);
  examination.lookForLeftOvers();
  examination.compareRecord();
  examination.lookAtUninstallManifest();
  examination.lookForKeyStores();
  examination.compareOwners();
  examination.lookForLinks();
}

}  // namespace installer::ctl
