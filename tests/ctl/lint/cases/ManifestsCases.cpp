// Cases of manifests.

#include "ctl/lint/LintCases.h"

namespace installer::ctl::lint::test {

namespace {

using World = LintWorld;

constexpr std::size_t kLongest = std::size_t{64} << 20;  // that is read, bytes
const std::string kInstall = World::deploy("install.hotfix.xml");
const std::string kUninstall = World::deploy("uninstall.hotfix.xml");

Feature removed(const std::string& version = "1.5") {
  return {.version = version, .url = "", .action = "uninstall"};
}

}  // namespace

std::vector<LintCase> manifestsCases() {
  return {
      {"HF120", "", [](World& w) { w.text("version", "2.5"); },
       [](World& w) {
         w.install({{.version = "1.5.20121115"}, {.id = "com.kiv.more", .version = "7"}});
       }},
      {"HF120", "LongerNumber", [](World& w) { w.install({{.version = "1.57"}}); }},
      {"HF301", "", [](World& w) { w.replace(kInstall, "</install>", ""); }},
      {"HF301", "TooLong", [](World& w) { w.resize(kInstall, kLongest + 1); }},
      {"HF301", "Pipe", [](World& w) { w.makePipe(kInstall); }},
      {"HF302", "",
       [](World& w) {
         w.replace(kInstall, "<object-data>", "");
         w.replace(kInstall, "</object-data>", "");
       }},
      {"HF303", "", [](World& w) { w.install({}); }},
      {"HF304", "",
       [](World& w) {
         w.replace(kInstall, "</requirements>",
                   "</requirements>\n<requirements>\n<feature id=\"com.kiv.more\" version=\"1\" "
                   "url=\"${installer.root}/updates\"/>\n</requirements>");
       },
       [](World& w) {
         w.replace(kInstall, "</requirements>",
                   "</requirements>\n<!-- <feature url=\"${installer.root}\"/> -->");
       }},
      {"HF304", "InAnotherAttribute",
       [](World& w) { w.replace(kInstall, " url=", " source=\"${installer.root}\" url="); }},
      {"HF305", "", [](World& w) { w.install({{.url = "${installer.Root}/updates"}}); }},
      {"HF305", "WithoutItsSign",
       [](World& w) { w.install({{.url = "{installer.root}/updates"}}); },
       [](World& w) { w.install({{.url = "${installer.root}/../root/installer"}}); }},
      {"HF305", "WithAHyphen", [](World& w) { w.install({{.url = "${installer-root}/updates"}}); },
       [](World& w) { w.install({{.url = "http://root.example/installer"}}); }},
      {"HF306", "", [](World& w) { w.install({{.url = ""}}); },
       [](World& w) {
         w.install({{}, {.id = "com.kiv.old", .url = "", .action = "uninstall"}});
       }},
      {"HF306", "OfOneMachine", [](World& w) { w.install({{.url = "file:/Users/build/site"}}); },
       [](World& w) { w.install({{.url = "https://updates.example/site"}}); }},
      {"HF307", "", [](World& w) { w.install({{.url = "file:${installer.root}/updates"}}); },
       [](World& w) { w.install({{.url = "jar:${installer.root}/site.jar!/"}}); }},
      {"HF307", "BesideItsLetters",
       [](World& w) { w.install({{.url = "file:${installer.root}/../root/installer"}}); }},
      {"HF308", "",
       [](World& w) {
         w.install({{}, {.id = ""}});
       }},
      {"HF308", "Version",
       [](World& w) {
         w.install({{}, {.id = "com.kiv.more", .version = ""}});
       },
       [](World& w) { w.uninstall({removed("")}); }},
      {"HF309", "",
       [](World& w) {
         w.install({{}, {.version = "1.4"}});
       },
       [](World& w) {
         w.install({{}, {.version = "1.4", .action = "uninstall"}});
       }},
      {"HF309", "WithAndWithoutAnAction",
       [](World& w) {
         w.install({{}, {.action = ""}});
       }},
      {"HF310", "", [](World& w) { w.install({{.action = "update"}}); },
       [](World& w) { w.install({{.action = ""}}); }},
      {"HF311", "", [](World& w) { w.replace(kUninstall, "</install>", ""); }},
      {"HF311", "Pipe", [](World& w) { w.makePipe(kUninstall); },
       [](World& w) { w.remove(kUninstall); }},
      {"HF311", "TooLong", [](World& w) { w.resize(kUninstall, kLongest + 1); }},
      {"HF312", "",
       [](World& w) {
         w.replace(kUninstall, "<domain-object>", "<object>");
         w.replace(kUninstall, "</domain-object>", "</object>");
       }},
      {"HF313", "", [](World& w) { w.uninstall({{.id = "com.kiv.other", .action = "uninstall"}}); },
       [](World& w) {
         w.install({{}, {.id = "com.kiv.old", .action = "uninstall"}});
       }},
      {"HF314", "", [](World& w) { w.uninstall({{.action = "uninstall"}}); },
       [](World& w) { w.replace(kUninstall, "<install>", "<!-- ${installer.root} --><install>"); }},
      {"HF315", "", [](World& w) { w.uninstall({{.url = ""}}); }},
      {"HF315", "WithoutAnAction", [](World& w) { w.uninstall({{.url = "", .action = ""}}); }},
      {"HF316", "", [](World& w) { w.uninstall({removed("1.4")}); },
       [](World& w) {
         w.uninstall({removed("1.4"), removed("1.5")});
       }},
      {"HF317", "", [](World& w) { w.install({{.action = ""}}); },
       [](World& w) { w.install({{.action = "uninstall"}}); }},
      {"HF317", "Uninstall", [](World& w) { w.uninstall({{.url = "", .action = ""}}); }},
  };
}

}  // namespace installer::ctl::lint::test
