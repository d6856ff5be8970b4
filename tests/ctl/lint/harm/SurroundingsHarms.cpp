// What comes of cases of paths, the instance and the package before.

#include "ctl/lint/harm/HarmTest.h"

namespace installer::cli {

std::vector<Harm> surroundingsHarms() {
  return {
      {"HF801", refusedWith(3)},
      {"HF802", silently([](HarmTest& test) {
         EXPECT_EQ("1.5", test.versionIn(Instance{"/Applications/Quill#mere.app"}));
       }),
       [](HarmTest& test) { test.buildInstance({"/Applications/Quill#mere.app"}); }},
      {"HF803", silently([](HarmTest& test) {
         EXPECT_FALSE(test.box().exists(kOtherName.info()));
         EXPECT_EQ("1.5", test.version());
       })},
      {"HF804", refusedWith(8)},
      {"HF805", refusedWith(7)},
      {"HF806", refusedWith(3),
       [](HarmTest& test) {
         test.buildInstance({"/Volumes/A=B/Quillmere.app"});
         test.destination() = "/Volumes/A=B";
       }},
      {"HF901", refusedWith(7), installed("1.6")},
      {"HF902", silently([](HarmTest& test) {
         EXPECT_EQ(4U, test.box().children("rcplauncher").size()) << "two of them to remove it";
       }),
       installed("1.4")},
      {"HF903", silently([](HarmTest& test) {
         EXPECT_EQ("1.5", test.version());
         EXPECT_EQ("1.4", test.versionIn(kOtherName));
       }),
       [](HarmTest& test) {
         test.buildInstance(kOtherName);
         test.box().script("rcplauncher", ChildScript().write(test.instance().result(), "rc=0\n"));
         test.box().writeFile(
             kOtherName.info(),
             xmlList(ListValue::dictionary({{"hotfixVersion", ListValue::string("1.4")}})));
       }},
      {"HF904", silently([](HarmTest& test) {
         EXPECT_EQ(2U, test.box().children("rcplauncher").size()) << "none of them to remove it";
       }),
       [](HarmTest& test) {
         test.recordHotfix("1.4");
         test.box().remove(test.instance().deploy("uninstall.hotfix.xml"));
       }},
      {"HF905", silently([](HarmTest& test) {
         EXPECT_FALSE(test.box().exists(test.instance().deploy(".keystore.old")));
       }),
       [](HarmTest& test) {
         test.box().writeFile(test.instance().deploy(".keystore.old"), "key");
       }},
  };
}

}  // namespace installer::cli
