// Cases of paths, the instance and the package before.

#include "ctl/lint/LintCases.h"

namespace installer::ctl::lint::test {

namespace {

using World = LintWorld;

}  // namespace

std::vector<LintCase> surroundingsCases() {
  return {
      {"HF801", "",
       [](World& w) {
         w.move(w.package, "/Volumes/HF/mac/Fix#1.pkg");
         w.package = "/Volumes/HF/mac/Fix#1.pkg";
       },
       [](World& w) {
         w.move(w.package, "/Volumes/HF/mac/Fix 1 & $.pkg");
         w.package = "/Volumes/HF/mac/Fix 1 & $.pkg";
       }},
      {"HF802", "", [](World& w) { w.text("bundleName", "Quill#mere"); }},
      {"HF802", "FrameworkPath", [](World& w) { w.text("frameworkPath", "Contents/Mac=OS"); }},
      {"HF803", "",
       [](World& w) {
         w.instance = "/Applications/Other.app";
         w.makeFolder("/Applications/Other.app/Contents/MacOS/rcp/deploy");
       },
       [](World& w) { w.instance = std::string(World::kBundle) + "/"; }},
      {"HF804", "",
       [](World& w) {
         w.instance = World::kBundle;
         w.text("frameworkPath", "Contents/Resources");
       },
       [](World& w) { w.instance = World::kBundle; }},
      {"HF805", "",
       [](World& w) {
         w.instance = World::kBundle;
         w.write(World::home("installInfo.plist"),
                 "<plist version=\"1.0\"><dict><key>hotfixVersion</key><string>1.6</string></dict>"
                 "</plist>");
       },
       [](World& w) {
         w.instance = World::kBundle;
         w.write(World::home("installInfo.plist"),
                 "<plist version=\"1.0\"><dict><key>hotfixVersion</key><string>1.5</string></dict>"
                 "</plist>");
       }},
      {"HF806", "",
       [](World& w) {
         w.instance = "/Volumes/A=B/Quillmere.app";
         w.makeFolder(*w.instance);
       }},
      {"HF901", "",
       [](World& w) {
         w.older = World::kOlder;
         w.replace(std::string(World::kOlder) + "/Contents/Resources/hotfix.plist", "1.4", "1.6");
       },
       [](World& w) { w.older = World::kOlder; }},
      {"HF902", "",
       [](World& w) {
         w.older = World::kOlder;
         w.text("version", "1.4");
       },
       [](World& w) { w.older = World::kOlder; }},
      {"HF903", "",
       [](World& w) {
         w.older = World::kOlder;
         w.replace(std::string(World::kOlder) + "/Contents/Resources/hotfix.plist", "Quillmere",
                   "Other");
       },
       [](World& w) { w.older = World::kOlder; }},
      {"HF904", "",
       [](World& w) {
         w.older = World::kOlder;
         w.remove("/Volumes/Old/mac/deploy/uninstall.hotfix.xml");
       },
       [](World& w) { w.older = World::kOlder; }},
      {"HF904", "Damaged",
       [](World& w) {
         w.older = World::kOlder;
         w.write("/Volumes/Old/mac/deploy/uninstall.hotfix.xml", "<manifest/>");
       }},
      {"HF905", "",
       [](World& w) {
         w.older = World::kOlder;
         w.write("/Volumes/Old/mac/deploy/.keystore.old", "key");
       },
       [](World& w) { w.older = World::kOlder; }},
      {"HF906", "",
       [](World& w) {
         w.older = World::kOlder;
         w.write("/Volumes/Old/mac/deploy/extras/old.txt", "old");
       },
       [](World& w) { w.older = World::kOlder; }},
  };
}

}  // namespace installer::ctl::lint::test
