// Any paths are taken apart and put together as the model does; what is found below a folder leads
// to the same place as the whole path.

#include "Fuzzed.h"
#include "Machine.h"
#include "hotfix/base/Path.h"
#include "hotfix/platform/HomeFolders.h"
#include "hotfix/util/InstallUtil.h"
#include "hotfix/util/StringUtil.h"
#include "platform/files/PathBelow.h"
#include "support/models/BundleModel.h"
#include "support/models/PathModel.h"
#include "support/models/StringModels.h"

namespace installer::fuzz {

namespace {

constexpr const char* kHome = "/Users/tester";
// The models try every place, and each variable that is replaced makes a text longer.
constexpr std::size_t kLongest = 512;

void tryComponents(const std::string& path, const std::string& component) {
  require(path::appendingComponent(path, component) == model::appendingComponent(path, component),
          "a component is appended as by the model");
  require(path::deletingLastComponent(path) == model::deletingLastComponent(path),
          "a component is deleted as by the model");
  require(path::lastComponent(path) == model::lastComponent(path),
          "the last component is the model's");
  require(path::expandingTilde(path) ==
              model::expandingTilde(path, kHome, "tester", {{"tester", kHome}}),
          "a home is put in as by the model");
  require(StringUtil::getVolume(path) ==
              (path.starts_with('~') ? StringUtil::getVolume(path) : model::volumeOf(path)),
          "the volume is the model's");
}

void tryBundle(const std::string& path) {
  require(InstallUtil::getBundlePath(path) == model::bundlePath(path),
          "the bundle's path is the model's");
  require(InstallUtil::getTargetNameBy(path) == model::targetName(path),
          "the target's name is the model's");
}

void tryVariable(const std::string& text, const std::string& package) {
  PropertyList::Dictionary entries{{"key", text}};
  InstallUtil::replacePackageVariableWith(package, entries);
  require(PropertyList::textForKey(entries, "key") ==
              model::replacedBackwards(text, "${package}", package),
          "the package's path is put in as by the model");
}

// The names of a path that lead anywhere.
std::vector<std::string> names(const std::string& path) {
  std::vector<std::string> all = model::takenApart(path).names;
  std::erase(all, ".");
  return all;
}

bool climbsOut(const std::vector<std::string>& names) {
  int depth = 0;
  for (const std::string& name : names) {
    depth += name == ".." ? -1 : 1;
    if (depth < 0) return true;
  }
  return false;
}

void tryBelow(const std::string& folder, const std::string& path) {
  const std::vector<std::string> above = names(folder);
  std::vector<std::string> below = names(path);
  require(hasNoComponents(path) == below.empty(), "a path without names has no components");
  const bool isBelow = folder.starts_with('/') == path.starts_with('/') &&
                       above.size() <= below.size() &&
                       std::equal(above.begin(), above.end(), below.begin());
  if (isBelow) below.erase(below.begin(), below.begin() + static_cast<long>(above.size()));
  const std::optional<std::string> rest = restBelow(folder, path);
  require(rest.has_value() == (isBelow && !climbsOut(below)), "what is below a folder has a rest");
  if (!rest) return;
  require(!rest->starts_with('/'), "a rest is no path of its own");
  require(names(*rest) == below, "a rest leads to the same place");
}

}  // namespace

void tryInput(std::string_view input) {
  static Machine machine;
  Lines lines(input.substr(0, kLongest));
  const std::string first = lines.next();
  const std::string second = lines.next();
  tryComponents(first, second);
  tryBundle(first);
  tryVariable(first, second);
  tryBelow(first, second);
  tryBelow(first, first + "/" + second);
}

}  // namespace installer::fuzz
