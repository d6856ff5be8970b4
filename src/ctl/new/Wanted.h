#pragma once

#include <optional>
#include <string>
#include <vector>

namespace installer::ctl::package {

struct Feature {
  std::string id;
  std::string version;
};

// Where package, deploy folder and update site are below the folder that is made.
enum class Layout {
  usual,  // mac/<package>, mac/deploy, updates/platform: where the installer looks by itself
  flat,   // <package>, deploy, the site in a folder of its own: named by updateSiteList
};

// Everything of a package that somebody wants to be made.
struct Wanted {
  std::string folder;         // absolute
  std::string packageName;    // "Hotfix.pkg"
  std::string version;        // never empty
  std::string bundleName;     // of the application, without ".app"
  std::string frameworkPath;  // from the bundle to the folder that holds "rcp"
  std::string identifier;     // CFBundleIdentifier
  bool isRegistered = false;  // the product's registration tells where the application is
  bool skipsRunningCheck = false;
  bool withdraws = false;  // brings no feature
  Layout layout = Layout::usual;
  std::string siteFolder;  // below the folder, in the flat layout
  std::vector<Feature> features;
  std::optional<std::string> site;           // a folder that becomes the update site
  std::optional<std::string> customization;  // a file in UTF-8
  std::vector<std::string> keyStores;        // files
  std::optional<std::string> extras;         // a folder
  std::optional<std::string> instance;       // an application bundle, absolute

  // Below the folder.
  std::string package() const {
    return layout == Layout::flat ? packageName : "mac/" + packageName;
  }
  std::string deploy() const { return layout == Layout::flat ? "deploy" : "mac/deploy"; }
  std::string sitePlace() const { return layout == Layout::flat ? siteFolder : "updates/platform"; }
  // From the package to the site, with a slash before it.
  std::string siteFromPackage() const {
    return (layout == Layout::flat ? "/../" : "/../../") + sitePlace();
  }
};

}  // namespace installer::ctl::package
