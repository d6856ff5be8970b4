#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "LauncherLog.h"
#include "Manifest.h"

namespace sample {

// The installed features and plug-ins of one instance. Requests are carried out together or not at
// all: everything is looked up and copied beside its place before the first installed entry
// changes.
class FeatureStore {
 public:
  FeatureStore(std::filesystem::path eclipse, const LauncherLog& log)
      : _eclipse(std::move(eclipse)), _log(log) {}

  // `siteOverride` stands in for every feature's own url. False, after a log line that names what
  // is missing and with the installed state as it was, when a site lacks something.
  bool carryOut(const std::vector<FeatureRequest>& requests,
                const std::optional<std::string>& siteOverride);

  // Throws away what a killed run left half copied.
  void discardStaged() const;

 private:
  struct Plan {
    std::vector<std::filesystem::path> features;  // folders on a site, to be copied
    std::vector<std::filesystem::path> plugins;   // folders or jars on a site, to be copied
    std::vector<std::filesystem::path> obsolete;  // installed feature folders, to be removed
  };

  bool planInstall(const FeatureRequest& request, const std::vector<std::filesystem::path>& sites,
                   Plan& plan) const;
  bool planPlugins(const std::filesystem::path& site, const std::filesystem::path& feature,
                   Plan& plan) const;
  // Whether every bundle that a planned plug-in needs is there or comes with it.
  bool isComplete(const Plan& plan) const;
  // `isObsolete` is asked about the folder name of every installed version of the feature.
  void planRemoval(const std::string& id, const std::function<bool(const std::string&)>& isObsolete,
                   Plan& plan) const;
  bool stage(const Plan& plan) const;
  bool putInPlace(const char* kind) const;
  void removeObsolete(const Plan& plan) const;
  bool isPluginInUse(const std::string& id, const std::string& version) const;

  std::filesystem::path _eclipse;
  const LauncherLog& _log;
};

}  // namespace sample
