// Cases of the places of files, and update sites.

#include "ctl/lint/LintCases.h"

namespace installer::ctl::lint::test {

namespace {

using World = LintWorld;

const std::string kUsual = "${package}/../deploy/";
const std::string kFeature = std::string(World::kSite) + "/features/com.kiv.fix_1.5";
const std::string kPlugin = std::string(World::kSite) + "/plugins/com.kiv.fix_1.5";
const std::string kInstall = World::deploy("install.hotfix.xml");
const std::string kUninstall = World::deploy("uninstall.hotfix.xml");

}  // namespace

std::vector<LintCase> placesCases() {
  return {
      {"HF201", "", [](World& w) { w.remove(kInstall); }},
      {"HF202", "", [](World& w) { w.remove(kUninstall); }},
      {"HF203", "", [](World& w) { w.text("pathToPluginCustomization", kUsual + "plugins.ini"); },
       [](World& w) { w.text("pathToPluginCustomization", ""); }},
      {"HF203", "KeyStores", [](World& w) { w.text("keystore", kUsual + "keys"); }},
      {"HF204", "",
       [](World& w) { w.text("pathToPluginCustomization", "../deploy/plugin_customization.ini"); },
       [](World& w) { w.text("pathToPluginCustomization", kUsual + "plugin_customization.ini"); }},
      {"HF204", "WithATilde", [](World& w) { w.text("extras", "~/extras"); }},
      {"HF204", "WithAScheme", [](World& w) { w.text("keystore", "file:${package}/../deploy"); }},
      {"HF204", "OfASite", [](World& w) { w.text("updateSiteList", "updates/platform"); }},
      {"HF205", "",
       [](World& w) {
         w.text("pathToPluginCustomization", "/Users/build/plugin_customization.ini");
       },
       [](World& w) { w.text("pathToPluginCustomization", kUsual + "plugin_customization.ini"); }},
      {"HF206", "", [](World& w) { w.text("keystore", kUsual + ".keystore"); },
       [](World& w) { w.text("keystore", kUsual); }},
      {"HF206", "FolderOfSettings",
       [](World& w) {
         w.remove(World::deploy("plugin_customization.ini"));
         w.makeFolder(World::deploy("plugin_customization.ini"));
       }},
      {"HF206", "FileOfExtras",
       [](World& w) {
         w.remove(World::deploy("extras"));
         w.write(World::deploy("extras"), "no folder");
       }},
      {"HF207", "",
       [](World& w) {
         w.move(kInstall, "/Volumes/HF/mac/manifests/install.hotfix.xml");
         w.text("pathToHotfixManifest", "${package}/../manifests/install.hotfix.xml");
         w.text("extras", kUsual + "extras");
       },
       [](World& w) {
         w.move(kInstall, "/Volumes/HF/mac/manifests/install.hotfix.xml");
         w.text("pathToHotfixManifest", "${package}/../manifests/install.hotfix.xml");
         w.text("keystore", kUsual).text("extras", kUsual + "extras");
       }},
      {"HF207", "Extras",
       [](World& w) {
         w.move(kInstall, "/Volumes/HF/mac/manifests/install.hotfix.xml");
         w.text("pathToHotfixManifest", "${package}/../manifests/install.hotfix.xml");
         w.text("keystore", kUsual);
       }},
      {"HF208", "",
       [](World& w) {
         w.write("/Volumes/Other/settings.ini", "k=1\n");
         w.makeLink(World::deploy("plugin_customization.ini"), "../../../Other/settings.ini");
       },
       [](World& w) {
         w.move(World::deploy("plugin_customization.ini"), w.package + "/Contents/settings.ini");
         w.makeLink(World::deploy("plugin_customization.ini"), "../Fix.pkg/Contents/settings.ini");
       }},
      {"HF209", "",
       [](World& w) {
         w.move(World::deploy("plugin_customization.ini"),
                World::deploy("plugin_customisation.ini"));
       },
       [](World& w) { w.write(World::deploy("plugin_customisation.ini"), ""); }},
      {"HF209", "Manifest",
       [](World& w) { w.move(kUninstall, World::deploy("unistall.hotfix.xml")); },
       [](World& w) { w.remove(kInstall); }},
      {"HF210", "",
       [](World& w) { w.text("pathToHotfixUninstallManifest", kUsual + "install.hotfix.xml"); },
       [](World& w) { w.text("pathToHotfixUninstallManifest", kUsual + "uninstall.hotfix.xml"); }},
      {"HF221", "", [](World& w) { w.remove(World::kSite); },
       [](World& w) {
         w.remove(World::kSite);
         w.install({});
         w.uninstall({});
       }},
      {"HF221", "SecondOfTwo",
       [](World& w) {
         w.text("updateSiteList", "${package}/../../updates/platform,file:/Volumes/none");
       },
       [](World& w) {
         w.move(World::kSite, "/Volumes/HF/updates/a,b");
         w.text("updateSiteList", "${package}/../../updates/a,b");
       }},
      {"HF221", "BetweenTwoCommas",
       [](World& w) {
         w.text("updateSiteList", "${package}/../../updates/platform,,/Volumes/none");
       },
       [](World& w) { w.text("updateSiteList", "${package}/../../updates/platform,,"); }},
      {"HF221", "AsASecondUrl",
       [](World& w) {
         w.text("updateSiteList", "${package}/../../updates/platform,file:/Volumes/none");
       },
       [](World& w) {
         w.text("updateSiteList",
                "${package}/../../updates/platform,file:" + w.path(World::kSite) + "/");
       }},
      {"HF222", "",
       [](World& w) { w.text("updateSiteList", "file:${package}/../../updates/platform"); },
       [](World& w) { w.text("updateSiteList", "${package}/../../updates/platform"); }},
      {"HF222", "Remote",
       [](World& w) { w.text("updateSiteList", "http://updates.example/site"); }},
      {"HF222", "SecondOfTwo",
       [](World& w) {
         w.text("updateSiteList", "${package}/../../updates/platform,http://updates.example/site");
       },
       [](World& w) {
         w.text("updateSiteList", "${package}/../../updates/platform,file:/Volumes/none");
       }},
      {"HF223", "",
       [](World& w) {
         w.remove(World::kSite);
         w.makeFolder(World::kSite);
       },
       [](World& w) {
         w.remove(World::kSite);
         w.write(std::string(World::kSite) + "/content.jar", "");
       }},
      {"HF224", "",
       [](World& w) { w.remove(std::string(World::kSite) + "/features/com.kiv.fix_1.5"); },
       [](World& w) {
         w.remove(std::string(World::kSite) + "/features/com.kiv.fix_1.5");
         w.write(std::string(World::kSite) + "/features/com.kiv.fix_1.5.jar", "");
       }},
      {"HF224", "BehindAnEmptyPart",
       [](World& w) {
         w.remove(kFeature);
         w.text("updateSiteList", "${package}/../../updates/platform,");
       },
       [](World& w) {
         w.remove(kFeature);
         w.instance = World::kBundle;
         w.makeFolder(World::home("eclipse/features/com.kiv.fix_1.5"));
       }},
      {"HF225", "",
       [](World& w) { w.remove(std::string(World::kSite) + "/plugins/com.kiv.fix_1.5"); },
       [](World& w) {
         w.remove(std::string(World::kSite) + "/plugins/com.kiv.fix_1.5");
         w.write(std::string(World::kSite) + "/plugins/com.kiv.fix_1.5.jar", "");
       }},
      {"HF225", "OfTheInstance",
       [](World& w) {
         w.remove(kPlugin);
         w.instance = World::kBundle;
         w.makeFolder(World::home("eclipse/plugins/com.kiv.fix_1.4"));
       },
       [](World& w) {
         w.remove(kPlugin);
         w.instance = World::kBundle;
         w.makeFolder(World::home("eclipse/plugins/com.kiv.fix_1.5"));
       }},
      {"HF225", "ForSomeSystems", [](World& w) { w.remove(kPlugin); },
       [](World& w) {
         w.remove(kPlugin);
         w.replace(kFeature + "/feature.xml", "version=", "os=\"win32\" version=");
       }},
      {"HF226", "",
       [](World& w) {
         w.move(World::kSite, "/Volumes/HF/updates/no#1");
         w.text("updateSiteList", "${package}/../../updates/no#1");
       },
       [](World& w) {
         w.move(World::kSite, "/Volumes/HF/updates/100%?");
         w.text("updateSiteList", "${package}/../../updates/100%?");
       }},
      {"HF227", "", [](World& w) { w.remove(kFeature + "/feature.xml"); },
       [](World& w) {
         w.remove(kFeature);
         w.write(kFeature + ".jar", "");
       }},
      {"HF227", "Damaged", [](World& w) { w.write(kFeature + "/feature.xml", "<feature>"); },
       [](World& w) { w.write(kFeature + "/feature.xml", "<feature/>"); }},
      {"HF227", "PluginWithoutAVersion",
       [](World& w) {
         w.write(kFeature + "/feature.xml", "<feature><plugin id=\"com.kiv.fix\"/></feature>");
       }},
      {"HF227", "PluginWithoutAnId",
       [](World& w) {
         w.write(kFeature + "/feature.xml", "<feature><plugin version=\"1.5\"/></feature>");
       }},
  };
}

}  // namespace installer::ctl::lint::test
