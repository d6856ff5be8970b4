// What comes of cases of the description.

#include "ctl/lint/harm/HarmTest.h"

namespace installer::cli {

namespace {

const Instance kOther{"/Users/alice/Quillmere.app"};

void registerElsewhere(HarmTest& test) {
  test.buildInstance(kOther);
  test.registerProduct(
      "Quillmere", ListValue::dictionary({{"pathToProduct", ListValue::string(kOther.bundle)}}));
}

void startApplication(HarmTest& test) {
  const std::string program = test.instance().bundle + "/Contents/MacOS/Quillmere";
  test.box().copyChildProgram(program);
  test.options().background = {{program, "--idle"}};
}

}  // namespace

std::vector<Harm> descriptionHarms() {
  return {
      {"HF101", refusedWith(8)},
      {"HF102", refusedWith(8)},
      {"HF102RootIsAnArray", refusedWith(8)},
      {"HF102IsAPipe", refusedWith(8)},
      {"HF103", refusedWith(8)},
      {"HF104",
       [](HarmTest& test) {
         EXPECT_EQ((ErrorRecord{8, {"/Applications", "Quillmere.app.app"}}), test.errorRecord());
       }},
      {"HF104Empty",
       [](HarmTest& test) {
         EXPECT_EQ((ErrorRecord{8, {"/Applications", ".app"}}), test.errorRecord());
       }},
      {"HF104WithASlash", refusedWith(8)},
      {"HF105", refusedWith(8)},
      {"HF106", refusedWith(8)},
      {"HF107", silently([](HarmTest& test) {
         EXPECT_EQ("1.5", test.versionIn(kOtherName));
         EXPECT_EQ("none", test.version());
       }),
       [](HarmTest& test) { test.buildInstance(kOtherName); }},
      {"HF108", kNothingRecorded},
      {"HF109", refusedWith(7), installed("1.4")},
      {"HF110", kNothingRecorded},
      {"HF110LetterCase", kNothingRecorded},
      {"HF110AllowsInstance",
       silently([](HarmTest& test) { EXPECT_EQ("1.5", test.versionIn(kOther)); }),
       registerElsewhere},
      {"HF112", kNothingRecorded},
      {"HF112SkipIsABoolean", refusedWith(6), startApplication},
      {"HF113", silently([](HarmTest& test) { EXPECT_EQ("1.5", test.versionIn(kOther)); }),
       registerElsewhere},
      {"HF113IsADate", silently([](HarmTest& test) { EXPECT_EQ("1.5", test.versionIn(kOther)); }),
       registerElsewhere},
      {"HF114",
       [](HarmTest& test) {
         // The other instance was built last, so that its launcher is the one that answers.
         EXPECT_EQ("none", test.versionIn(kOther));
         EXPECT_TRUE(test.box().exists(test.instance().deploy("uninstall.hotfix.xml")));
       },
       registerElsewhere},
      {"HF115", refusedWith(6), startApplication},
      {"HF115Yes", refusedWith(6), startApplication},
      {"HF116", refusedWith(7), installed("1.4")},
      {"HF116AtTheEndOfAPlace", kSettingsNotMerged},
      {"HF117", kSettingsNotMerged},
      {"HF118", silently([](HarmTest& test) { EXPECT_EQ(test.world().package, test.version()); })},
      {"HF119", refusedWith(7), installed("1.9")},
      {"HF121", silently([](HarmTest& test) { EXPECT_EQ("1.6", test.version()); })},
  };
}

}  // namespace installer::cli
