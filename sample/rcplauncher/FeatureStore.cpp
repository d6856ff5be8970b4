#include "FeatureStore.h"

#include <algorithm>

#include "Files.h"
#include "PluginManifest.h"
#include "UpdateSite.h"

namespace sample {

namespace fs = std::filesystem;

namespace {

const char* const kFeatures = "features";
const char* const kPlugins = "plugins";
const char* const kStaging = ".provisioning";

bool isFolder(const fs::path& path) {
  std::error_code error;
  return fs::is_directory(path, error);
}

std::string folderNameOf(const FeatureRequest& request) {
  return request.id + "_" + request.version;
}

bool copyInto(const std::vector<fs::path>& sources, const fs::path& folder) {
  std::error_code error;
  fs::create_directories(folder, error);
  for (const fs::path& source : sources) {
    fs::copy(source, folder / source.filename(),
             fs::copy_options::recursive | fs::copy_options::copy_symlinks |
                 fs::copy_options::overwrite_existing,
             error);
    if (error) return false;
  }
  return !error;
}

}  // namespace

bool FeatureStore::carryOut(const std::vector<FeatureRequest>& requests,
                            const std::optional<std::string>& siteOverride) {
  Plan plan;
  for (const FeatureRequest& request : requests) {
    const std::string wanted = folderNameOf(request);
    if (request.install) {
      if (!planInstall(request, sitesIn(siteOverride.value_or(request.url)), plan)) return false;
      planRemoval(
          request.id, [&](const std::string& name) { return name != wanted; }, plan);
    } else {
      const bool everyVersion = request.version.empty();
      planRemoval(
          request.id, [&](const std::string& name) { return everyVersion || name == wanted; },
          plan);
    }
  }
  const bool done =
      isComplete(plan) && stage(plan) && putInPlace(kPlugins) && putInPlace(kFeatures);
  if (done) removeObsolete(plan);
  discardStaged();
  return done;
}

bool FeatureStore::planInstall(const FeatureRequest& request, const std::vector<fs::path>& sites,
                               Plan& plan) const {
  const std::string name = folderNameOf(request);
  if (isFolder(_eclipse / kFeatures / name)) {
    _log.write(name + " is installed already");
    return true;
  }
  for (const fs::path& site : sites) {
    const fs::path feature = site / kFeatures / name;
    if (!isFolder(feature)) continue;
    _log.write("install " + name + " from " + site.string());
    plan.features.push_back(feature);
    return planPlugins(site, feature, plan);
  }
  _log.write("no site has the feature " + name);
  return false;
}

bool FeatureStore::planPlugins(const fs::path& site, const fs::path& feature, Plan& plan) const {
  const std::optional<std::vector<PluginName>> names = pluginsOf(feature);
  if (!names) {
    _log.write("the feature " + feature.string() + " cannot be read");
    return false;
  }
  for (const PluginName& name : *names) {
    if (findPlugin(_eclipse / kPlugins, name)) continue;
    const std::optional<fs::path> plugin = findPlugin(site / kPlugins, name);
    if (!plugin) {
      _log.write("the site lacks the plug-in " + name.id + "_" + name.version);
      return false;
    }
    plan.plugins.push_back(*plugin);
  }
  return true;
}

bool FeatureStore::isComplete(const Plan& plan) const {
  std::vector<std::string> entries = namesIn(_eclipse / kPlugins);
  for (const fs::path& plugin : plan.plugins) entries.push_back(plugin.filename().string());
  for (const fs::path& plugin : plan.plugins) {
    for (const std::string& bundle : requirementsOf(plugin)) {
      const bool isThere = std::any_of(entries.begin(), entries.end(), [&](const auto& entry) {
        return entry.starts_with(bundle + "_");
      });
      if (isThere) continue;
      _log.write(plugin.filename().string() + " requires " + bundle + ", which is not there");
      return false;
    }
  }
  return true;
}

void FeatureStore::planRemoval(const std::string& id,
                               const std::function<bool(const std::string&)>& isObsolete,
                               Plan& plan) const {
  for (const std::string& name : namesIn(_eclipse / kFeatures)) {
    const fs::path folder = _eclipse / kFeatures / name;
    if (featureIdOf(folder) != id || !isObsolete(name)) continue;
    _log.write("remove " + name);
    plan.obsolete.push_back(folder);
  }
}

bool FeatureStore::stage(const Plan& plan) const {
  discardStaged();
  const bool copied = copyInto(plan.features, _eclipse / kStaging / kFeatures) &&
                      copyInto(plan.plugins, _eclipse / kStaging / kPlugins);
  if (!copied) _log.write("the features could not be copied");
  return copied;
}

bool FeatureStore::putInPlace(const char* kind) const {
  std::error_code error;
  fs::create_directories(_eclipse / kind, error);
  for (const std::string& name : namesIn(_eclipse / kStaging / kind)) {
    fs::rename(_eclipse / kStaging / kind / name, _eclipse / kind / name, error);
    if (error) {
      _log.write("could not put " + name + " in its place: " + error.message());
      return false;
    }
  }
  return true;
}

// A plug-in goes with the last feature that lists it.
void FeatureStore::removeObsolete(const Plan& plan) const {
  std::error_code error;
  for (const fs::path& feature : plan.obsolete) {
    const std::vector<PluginName> names = pluginsOf(feature).value_or(std::vector<PluginName>());
    fs::remove_all(feature, error);
    for (const PluginName& name : names) {
      const std::optional<fs::path> plugin = findPlugin(_eclipse / kPlugins, name);
      if (plugin && !isPluginInUse(name.id, name.version)) fs::remove_all(*plugin, error);
    }
  }
}

bool FeatureStore::isPluginInUse(const std::string& id, const std::string& version) const {
  for (const std::string& feature : namesIn(_eclipse / kFeatures)) {
    const auto names = pluginsOf(_eclipse / kFeatures / feature);
    for (const PluginName& name : names.value_or(std::vector<PluginName>())) {
      if (name.id == id && name.version == version) return true;
    }
  }
  return false;
}

void FeatureStore::discardStaged() const {
  std::error_code error;
  fs::remove_all(_eclipse / kStaging, error);
}

}  // namespace sample
