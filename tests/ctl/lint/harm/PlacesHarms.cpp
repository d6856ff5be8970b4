// What comes of cases of the places of files, and update sites.

#include "ctl/lint/harm/HarmTest.h"

namespace installer::cli {

namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;

}  // namespace

std::vector<Harm> placesHarms() {
  return {
      {"HF201",
       [](HarmTest& test) {
         EXPECT_EQ(4, test.errorRecord().code);
         EXPECT_EQ("none", test.version());  // that of the older hotfix, which is gone
       },
       installed("1.4")},
      {"HF202", silently([](HarmTest& test) {
         EXPECT_EQ("1.5", test.version());
         EXPECT_FALSE(test.box().exists(test.instance().deploy("uninstall.hotfix.xml")));
       })},
      {"HF203", kSettingsNotMerged},
      {"HF203KeyStores", kNoKeyStore},
      {"HF204", kSettingsNotMerged},
      {"HF204WithAScheme", kNoKeyStore},
      {"HF204OfASite", silently([](HarmTest& test) {
         EXPECT_EQ("-DprovUpdateSiteListOverride=file:updates/platform", test.site());
       })},
      {"HF205", kSettingsNotMerged},
      {"HF206", kNoKeyStore},
      {"HF206FolderOfSettings", kSettingsNotMerged},
      {"HF206FileOfExtras", silently([](HarmTest& test) {
         EXPECT_FALSE(test.box().exists(test.instance().deploy("extras")));
       })},
      {"HF207", kNoKeyStore},
      {"HF207Extras", silently([](HarmTest& test) {
         EXPECT_FALSE(test.box().exists(test.instance().deploy("extras")));
       })},
      {"HF208", kSettingsNotMerged},
      {"HF209", kSettingsNotMerged},
      {"HF210", deployedHolds("uninstall.hotfix.xml", "action=\"install\"")},
      {"HF221", silently([](HarmTest& test) {
         EXPECT_THAT(test.site(), HasSubstr("file:" + test.world().package));
         EXPECT_FALSE(test.box().exists(LintWorld::kSite));
       })},
      {"HF222",
       silently([](HarmTest& test) { EXPECT_THAT(test.site(), HasSubstr("=file:file:/")); })},
      {"HF222Remote",
       silently([](HarmTest& test) { EXPECT_THAT(test.site(), HasSubstr("=file:http://")); })},
      {"HF223", silently([](HarmTest& test) {
         EXPECT_THAT(test.site(), HasSubstr("/updates/platform"));
         EXPECT_THAT(test.box().list(LintWorld::kSite), IsEmpty());
       })},
      {"HF226",
       silently([](HarmTest& test) { EXPECT_THAT(test.site(), HasSubstr("/updates/no#1")); })},
  };
}

}  // namespace installer::cli
