#include "ctl/status/Places.h"

#include <algorithm>
#include <optional>

#include "hotfix/base/Path.h"
#include "hotfix/formats/RegisterFile.h"
#include "hotfix/util/InstallUtil.h"
#include "platform/AbsolutePath.h"
#include "platform/EntryFacts.h"
#include "platform/Exists.h"
#include "platform/FileManager.h"
#include "platform/Platform.h"

namespace installer::ctl {

namespace {

// The product's own instance, whose places other instances share: its bundle lies in the
// applications folder, and the home at the same place of every bundle.
struct UsualPlace {
  std::string applications;
  std::string homeInBundle;  // "Contents/MacOS/rcp"
};

UsualPlace usualPlace() {
  const std::string& home = Platform::current().paths.fallbackRcpHome;
  const std::string bundle = InstallUtil::getBundlePath(home).value_or(home);
  return {path::deletingLastComponent(bundle), home.substr(bundle.size() + 1)};
}

bool isFolder(const std::string& path) {
  return Platform::current().files->isDirectory(path);
}

void add(InstancePlace place, std::vector<InstancePlace>& places) {
  const bool isKnown = std::any_of(places.begin(), places.end(), [&](const InstancePlace& known) {
    return known.rcpHome == place.rcpHome || isSameItem(known.rcpHome, place.rcpHome);
  });
  if (!isKnown) places.push_back(std::move(place));
}

std::vector<std::string> namesIn(const std::string& folder) {
  return Platform::current().files->list(folder).value_or(std::vector<std::string>());
}

void addRegistered(std::vector<InstancePlace>& places) {
  for (const std::string& product : namesIn(Platform::current().paths.registrations)) {
    const std::optional<std::string> bundle = RegisterFile(product).getProductPath();
    if (bundle) add({rcpHomeOf(*bundle), "registration"}, places);
  }
}

void addApplications(std::vector<InstancePlace>& places) {
  const UsualPlace usual = usualPlace();
  for (const std::string& name : namesIn(usual.applications)) {
    if (!name.ends_with(".app")) continue;
    const std::string bundle = path::appendingComponent(usual.applications, name);
    const std::string home = path::appendingComponent(bundle, usual.homeInBundle);
    if (isFolder(home)) add({home, "applications"}, places);
  }
}

std::string withoutSlashes(std::string path) {
  while (path.size() > 1 && path.ends_with('/')) path.pop_back();
  return path;
}

}  // namespace

std::string rcpHomeOf(const std::string& bundleOrHome) {
  const std::string place = withoutSlashes(absolutePath(bundleOrHome));
  std::string home = path::appendingComponent(place, usualPlace().homeInBundle);
  return exists(home) || place.ends_with(".app") ? home : place;
}

std::vector<InstancePlace> knownPlaces() {
  std::vector<InstancePlace> places;
  addRegistered(places);
  addApplications(places);
  return places;
}

}  // namespace installer::ctl
