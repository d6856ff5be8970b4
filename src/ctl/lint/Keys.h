#pragma once

#include <algorithm>
#include <array>
#include <string_view>

// The keys of a hotfix.plist.
namespace installer::ctl::lint {

inline constexpr std::string_view kBundleName = "bundleName";
inline constexpr std::string_view kFrameworkPath = "frameworkPath";
inline constexpr std::string_view kVersion = "version";
inline constexpr std::string_view kAllowMultiInstance = "allowMultiInstance";
inline constexpr std::string_view kSkipRunningCheck = "SKIPRUNNINGCHECK";
inline constexpr std::string_view kInstallManifest = "pathToHotfixManifest";
inline constexpr std::string_view kUninstallManifest = "pathToHotfixUninstallManifest";
inline constexpr std::string_view kCustomization = "pathToPluginCustomization";
inline constexpr std::string_view kUpdateSites = "updateSiteList";
inline constexpr std::string_view kKeyStores = "keystore";
inline constexpr std::string_view kExtras = "extras";

inline constexpr std::array kKnownKeys{
    kBundleName,      kFrameworkPath,     kVersion,       kAllowMultiInstance, kSkipRunningCheck,
    kInstallManifest, kUninstallManifest, kCustomization, kUpdateSites,        kKeyStores,
    kExtras};

inline bool isKnownKey(std::string_view key) {
  return std::find(kKnownKeys.begin(), kKnownKeys.end(), key) != kKnownKeys.end();
}

// What is replaced in the values of these keys, by the package's path.
inline constexpr std::string_view kPackageVariable = "${package}";

}  // namespace installer::ctl::lint
