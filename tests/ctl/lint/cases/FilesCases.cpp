// Cases of key stores, extras and the package's identity.

#include "ctl/lint/LintCases.h"

namespace installer::ctl::lint::test {

namespace {

using World = LintWorld;

const std::string kKeyStore = World::deploy(".keystore");

}  // namespace

std::vector<LintCase> filesCases() {
  return {
      {"HF501", "", [](World& w) { w.remove(kKeyStore); },
       [](World& w) { w.move(kKeyStore, World::deploy(".KEYSTORE.bak")); }},
      {"HF502", "",
       [](World& w) {
         w.instance = World::kBundle;
         w.write(World::home("deploy/.keystore.client"), "client key\n");
       },
       [](World& w) {
         w.instance = World::kBundle;
         w.write(World::home("deploy/client.keystore"), "client key\n");
       }},
      {"HF502", "All",
       [](World& w) {
         w.instance = World::kBundle;
         w.remove(kKeyStore);
       }},
      {"HF503", "", [](World& w) { w.move(kKeyStore, World::deploy("client.keystore")); },
       [](World& w) { w.move(kKeyStore, World::deploy(".keystore.client")); }},
      {"HF503", "OfAnotherKind", [](World& w) { w.write(World::deploy("client.P12"), "key"); }},
      {"HF503", "BehindALink",
       [](World& w) {
         w.write(World::deploy("client.bin"), "key");
         w.makeLink(World::deploy("client.jks"), "client.bin");
       },
       [](World& w) { w.makeFolder(World::deploy("client.jks")); }},
      {"HF504", "", [](World& w) { w.makePipe(kKeyStore); }},
      {"HF504", "Folder", [](World& w) { w.makeFolder(World::deploy(".keystores")); }},
      {"HF505", "",
       [](World& w) {
         w.write("/Volumes/Other/keys", "key");
         w.makeLink(kKeyStore, "/Volumes/Other/keys");
       },
       [](World& w) {
         w.move(kKeyStore, World::deploy("keys"));
         w.makeLink(kKeyStore, "keys");
       }},
      {"HF506", "", [](World& w) { w.write(kKeyStore, ""); }},
      {"HF601", "", [](World& w) { w.makeLink(World::extras("fonts/link"), "../../../none"); },
       [](World& w) { w.makeLink(World::extras("fonts/link"), "../readme.txt"); }},
      {"HF601", "Absolute", [](World& w) { w.makeLink(World::extras("link"), "/etc/passwd"); }},
      {"HF601", "Dangling", [](World& w) { w.makeLink(World::extras("link"), "none"); }},
      {"HF602", "", [](World& w) { w.makePipe(World::extras("pipe")); }},
      {"HF603", "", [](World& w) { w.write(World::extras("README.txt"), ""); },
       [](World& w) { w.write(World::extras("more/README.txt"), ""); }},
      {"HF604", "",
       [](World& w) {
         w.write(World::extras("caf\xC3\xA9"), "");
         w.write(World::extras("cafe\xCC\x81"), "");
       },
       [](World& w) { w.write(World::extras("cafe\xCC\x81"), ""); }},
      {"HF605", "", [](World& w) { w.write(World::extras("caf\xE9"), ""); }},
      {"HF606", "", [](World& w) { w.remove(World::extras("readme.txt")); }},
      {"HF607", "", [](World& w) { w.write(World::extras(".DS_Store"), ""); }},
      {"HF607", "Copy", [](World& w) { w.write(World::extras("more/readme.txt~"), ""); }},
      {"HF608", "",
       [](World& w) {
         std::string deep = World::extras("deep");
         for (int i = 0; i < 101; ++i) deep += "/d";
         w.makeFolder(deep);
       }},
      {"HF609", "",
       [](World& w) {
         w.instance = World::kBundle;
         w.write(World::home("deploy/extras/readme.txt/own"), "own");
       },
       [](World& w) {
         w.instance = World::kBundle;
         w.write(World::home("deploy/extras/readme.txt"), "own");
       }},
      {"HF701", "", [](World& w) { w.remove(w.package + "/Contents/Info.plist"); }},
      {"HF701", "WithoutTheKey",
       [](World& w) {
         w.write(w.package + "/Contents/Info.plist", "<plist version=\"1.0\"><dict/></plist>");
       }},
      {"HF702", "",
       [](World& w) {
         w.replace(w.package + "/Contents/Info.plist", "<string>com.kiv.hotfix</string>",
                   "<integer>7</integer>");
       }},
      {"HF702", "Damaged", [](World& w) { w.write(w.package + "/Contents/Info.plist", "<plist"); }},
      {"HF703", "",
       [](World& w) {
         w.replace(w.package + "/Contents/Info.plist", "com.kiv.hotfix", "com.kiv.hotfix ");
       }},
      {"HF703", "Empty",
       [](World& w) { w.replace(w.package + "/Contents/Info.plist", "com.kiv.hotfix", ""); }},
      {"HF704", "",
       [](World& w) { w.replace(w.package + "/Contents/Info.plist", ">1.5<", ">1.6<"); }},
  };
}

}  // namespace installer::ctl::lint::test
