// Cases of the description.

#include "ctl/lint/LintCases.h"

namespace installer::ctl::lint::test {

namespace {

using World = LintWorld;

const std::string kUsual = "${package}/../deploy/";

}  // namespace

std::vector<LintCase> descriptionCases() {
  return {
      {"HF101", "", [](World& w) { w.remove(w.package + "/Contents/Resources/hotfix.plist"); }},
      {"HF102", "",
       [](World& w) { w.write(w.package + "/Contents/Resources/hotfix.plist", "<plist><dict>"); }},
      {"HF102", "RootIsAnArray",
       [](World& w) {
         w.write(w.package + "/Contents/Resources/hotfix.plist",
                 "<plist version=\"1.0\"><array/></plist>");
       }},
      {"HF102", "IsAPipe",
       [](World& w) { w.makePipe(w.package + "/Contents/Resources/hotfix.plist"); }},
      {"HF103", "", [](World& w) { w.unset("bundleName"); }},
      {"HF104", "", [](World& w) { w.text("bundleName", "Quillmere.app"); },
       [](World& w) { w.text("bundleName", "Quill.Apple"); }},
      {"HF104", "Empty", [](World& w) { w.text("bundleName", ""); }},
      {"HF104", "WithASlash", [](World& w) { w.text("bundleName", "Utilities/Quillmere"); }},
      {"HF105", "", [](World& w) { w.unset("frameworkPath"); }},
      {"HF106", "", [](World& w) { w.text("frameworkPath", "Contents/MacOS/rcp"); },
       [](World& w) { w.text("frameworkPath", "Contents/rcp/MacOS"); }},
      {"HF107", "", [](World& w) { w.text("frameworkPath", "../Other.app/Contents/MacOS"); },
       [](World& w) { w.text("frameworkPath", "Contents/..MacOS"); }},
      {"HF107", "OnTheWay", [](World& w) { w.text("frameworkPath", "Contents/../../MacOS"); },
       [](World& w) { w.text("frameworkPath", "Contents/Resources/../MacOS"); }},
      {"HF108", "", [](World& w) { w.unset("version"); }},
      {"HF109", "", [](World& w) { w.text("version", ""); }},
      {"HF110", "", [](World& w) { w.unset("version").text("verison", "1.5"); },
       [](World& w) { w.text("verison", "1.5"); }},
      {"HF110", "LetterCase", [](World& w) { w.unset("version").text("Version", "1.5"); }},
      {"HF110", "AllowsInstance",
       [](World& w) { w.unset("allowMultiInstance").set("allowMultipleInstance", "<true/>"); }},
      {"HF111", "", [](World& w) { w.text("copyright", "somebody"); }},
      {"HF112", "", [](World& w) { w.set("version", "<real>1.5</real>"); }},
      {"HF112", "SkipIsABoolean", [](World& w) { w.set("SKIPRUNNINGCHECK", "<true/>"); },
       [](World& w) { w.text("SKIPRUNNINGCHECK", "true"); }},
      {"HF112", "SkipIsANumber",
       [](World& w) { w.set("SKIPRUNNINGCHECK", "<integer>0</integer>"); },
       [](World& w) { w.set("SKIPRUNNINGCHECK", "<false/>"); }},
      {"HF112", "PlaceIsAList", [](World& w) { w.set("keystore", "<array/>"); }},
      {"HF113", "", [](World& w) { w.text("allowMultiInstance", "on"); },
       [](World& w) { w.text("allowMultiInstance", "no"); }},
      {"HF113", "IsADate",
       [](World& w) { w.set("allowMultiInstance", "<date>2020-01-01T00:00:00Z</date>"); },
       [](World& w) { w.set("allowMultiInstance", "<integer>1</integer>"); }},
      {"HF114", "", [](World& w) { w.text("allowMultiInstance", "Too early to say"); },
       [](World& w) { w.text("allowMultiInstance", "YES"); }},
      {"HF115", "", [](World& w) { w.text("SKIPRUNNINGCHECK", "True"); },
       [](World& w) { w.text("SKIPRUNNINGCHECK", "true"); }},
      {"HF115", "Yes", [](World& w) { w.text("SKIPRUNNINGCHECK", "yes"); },
       [](World& w) { w.text("SKIPRUNNINGCHECK", "No"); }},
      {"HF116", "", [](World& w) { w.text("version", " 1.5"); }},
      {"HF116", "AtTheEndOfAPlace",
       [](World& w) { w.text("pathToPluginCustomization", kUsual + "plugin_customization.ini\n"); },
       [](World& w) { w.text("pathToPluginCustomization", kUsual + "plugin_customization.ini"); }},
      {"HF117", "",
       [](World& w) {
         w.text("pathToPluginCustomization", "${Package}/../deploy/plugin_customization.ini");
       },
       [](World& w) { w.text("pathToPluginCustomization", kUsual + "plugin_customization.ini"); }},
      {"HF117", "WithoutItsSign", [](World& w) { w.text("extras", "{package}/../deploy/extras"); }},
      {"HF117", "WithoutItsBraces", [](World& w) { w.text("extras", "$package/../deploy/extras"); },
       [](World& w) { w.text("extras", kUsual + "$1"); }},
      {"HF117", "WithRoundBraces",
       [](World& w) { w.text("extras", "$(package)/../deploy/extras"); }},
      {"HF117", "Open", [](World& w) { w.text("extras", "${package/../deploy/extras"); }},
      {"HF118", "", [](World& w) { w.text("version", "${package}"); }},
      {"HF118", "InTheName", [](World& w) { w.text("bundleName", "Quill${package}mere"); }},
      {"HF119", "", [](World& w) { w.text("version", "1.10"); },
       [](World& w) { w.text("version", "1.09.20121115-1200"); }},
      {"HF119", "OfAYear", [](World& w) { w.text("version", "2026.10"); },
       [](World& w) {
         w.older = World::kOlder;
         w.text("version", "2026.10");
       }},
      {"HF121", "", [](World& w) { w.add("version", "<string>1.6</string>"); },
       [](World& w) {
         w.set("version", "<string>1.5</string><!-- <key>version</key><string>1</string> -->");
       }},
      {"HF121", "WrittenOtherwise",
       [](World& w) {
         w.set("version",
               "<string>1.5</string><key ><![CDATA[ver]]>sion</key><string>1.6</string>");
       },
       [](World& w) { w.set("more", "<dict><key>version</key><string>1</string></dict>"); }},
      {"HF122", "", [](World& w) { w.set("allowMultiInstance", "<false/>"); }},
      {"HF122", "Absent", [](World& w) { w.unset("allowMultiInstance"); }},
  };
}

}  // namespace installer::ctl::lint::test
