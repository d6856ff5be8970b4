#include "ctl/new/Options.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <utility>

#include "hotfix/base/Path.h"
#include "platform/AbsolutePath.h"

namespace installer::ctl::package {

namespace {

constexpr std::string_view kUsualPackage = "Hotfix.pkg";
constexpr std::string_view kUsualFrameworkPath = "Contents/MacOS";
constexpr std::string_view kUsualSiteFolder = "updates";
constexpr std::string_view kDeploy = "deploy";
constexpr std::string_view kBundleSuffix = ".app";

bool isGiven(const std::optional<std::string>& text) {
  return !text.value_or("").empty();
}

// An empty text is none: a script's variable that was not set.
std::optional<std::string> given(const std::optional<std::string>& text) {
  return isGiven(text) ? text : std::nullopt;
}

// A key store that the client has and the package does not bring is gone after an installation:
// nobody means to bring none by saying nothing.
constexpr std::array kNeeds{
    Need{"--version", "Version of the hotfix",
         [](const Options& options) { return isGiven(options.version); },
         [](Options& options, std::string text) { options.version = std::move(text); }},
    Need{
        "--bundle", "Application bundle that it is for, without \".app\"",
        [](const Options& options) { return isGiven(options.bundle) || isGiven(options.instance); },
        [](Options& options, std::string text) { options.bundle = std::move(text); }},
    Need{"--identifier", "Identifier of the package",
         [](const Options& options) { return isGiven(options.identifier); },
         [](Options& options, std::string text) { options.identifier = std::move(text); }},
    Need{"--feature", "Feature that it brings, as id_version",
         [](const Options& options) { return options.withdraws || !options.features.empty(); },
         [](Options& options, std::string text) { options.features.push_back(std::move(text)); }},
    Need{"--site", "Folder of the update site that has the feature",
         [](const Options& options) { return options.withdraws || isGiven(options.site); },
         [](Options& options, std::string text) { options.site = std::move(text); }},
    Need{"--keystore", "File of a key store (--instance takes an instance's own)",
         [](const Options& options) {
           return !options.keyStores.empty() || isGiven(options.instance) || options.force;
         },
         [](Options& options, std::string text) { options.keyStores.push_back(std::move(text)); }},
};

// Thrown and caught in this file.
[[noreturn]] void refuse(std::string reason) {
  throw Refusal{std::move(reason)};
}

bool isPlain(std::string_view name) {
  const auto isPlainCharacter = [](char character) {
    return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z') ||
           (character >= '0' && character <= '9') || character == '.' || character == '_' ||
           character == '-';
  };
  return !name.empty() && std::all_of(name.begin(), name.end(), isPlainCharacter);
}

// "com.quillmere.hotfix_1.5": the version is the hotfix's, or what stands behind the last "_" if
// that begins with a digit.
Feature splitFeature(const std::string& text, const std::string& version) {
  if (text.ends_with("_" + version))
    return {text.substr(0, text.size() - version.size() - 1), version};
  const std::size_t bar = text.rfind('_');
  if (bar == std::string::npos || bar + 1 == text.size() || text[bar + 1] < '0' ||
      text[bar + 1] > '9')
    return {text, version};
  return {text.substr(0, bar), text.substr(bar + 1)};
}

Feature featureOf(const std::string& text, const std::string& version) {
  Feature feature = splitFeature(text, version);
  if (!isPlain(feature.id) || !isPlain(feature.version))
    refuse(
        fmt::format("\"{}\" is no feature: letters, digits, \".\", \"_\" and \"-\" name one, as "
                    "in com.quillmere.hotfix_1.5",
                    text));
  return feature;
}

// One component of a path.
bool isName(const std::string& text) {
  return !text.empty() && text != "." && text != ".." && text.find('/') == std::string::npos;
}

std::string nameGiven(std::string_view what, const std::string& name) {
  if (!isName(name)) refuse(fmt::format("{} \"{}\" cannot be a file's name", what, name));
  return name;
}

// A way down, one name behind the other.
std::string siteFolderGiven(const std::string& folder, const std::string& packageName) {
  std::string rest = folder;
  while (true) {
    const std::size_t slash = rest.find('/');
    (void)nameGiven("a part of the update site's folder", rest.substr(0, slash));
    if (slash == std::string::npos) break;
    rest.erase(0, slash + 1);
  }
  const std::string first = folder.substr(0, folder.find('/'));
  if (first == kDeploy || first == packageName || folder.find(',') != std::string::npos)
    refuse(fmt::format("the update site cannot lie in \"{}\"", folder));
  return folder;
}

std::string bundleNameOf(const Options& options) {
  if (isGiven(options.bundle)) return nameGiven("the bundle", *options.bundle);
  std::string name = path::lastComponent(*options.instance);
  if (name.ends_with(kBundleSuffix)) name.resize(name.size() - kBundleSuffix.size());
  return name;
}

std::optional<std::string> absolute(const std::optional<std::string>& path) {
  if (!isGiven(path)) return std::nullopt;
  return absolutePath(*path);
}

Wanted wantedOf(const Options& options) {
  Wanted wanted;
  if (!isGiven(options.folder)) refuse("the folder has no name");
  wanted.folder = absolutePath(*options.folder);
  wanted.packageName =
      nameGiven("the package", options.packageName.value_or(std::string(kUsualPackage)));
  if (wanted.packageName == kDeploy) refuse("the package cannot be \"deploy\"");
  wanted.version = *options.version;
  wanted.bundleName = bundleNameOf(options);
  wanted.frameworkPath = options.frameworkPath.value_or(std::string(kUsualFrameworkPath));
  wanted.identifier = *options.identifier;
  wanted.isRegistered = options.isRegistered;
  wanted.skipsRunningCheck = options.skipsRunningCheck;
  wanted.withdraws = options.withdraws;
  if (options.layout == kFlat) {
    wanted.layout = Layout::flat;
    wanted.siteFolder = siteFolderGiven(options.siteFolder.value_or(std::string(kUsualSiteFolder)),
                                        wanted.packageName);
  }
  for (const std::string& feature : options.features)
    wanted.features.push_back(featureOf(feature, wanted.version));
  wanted.site = given(options.site);
  wanted.customization = given(options.customization);
  wanted.keyStores = options.keyStores;
  wanted.extras = given(options.extras);
  wanted.instance = absolute(options.instance);
  return wanted;
}

}  // namespace

std::vector<const Need*> missing(const Options& options) {
  std::vector<const Need*> needs;
  for (const Need& need : kNeeds)
    if (!need.isMet(options)) needs.push_back(&need);
  return needs;
}

std::variant<Refusal, Wanted> wantedBy(const Options& options) {
  if (options.withdraws && !options.features.empty())
    return Refusal{"a package that only takes a hotfix back brings no feature"};
  try {
    return wantedOf(options);
  } catch (const Refusal& refusal) {
    return refusal;
  }
}

}  // namespace installer::ctl::package
