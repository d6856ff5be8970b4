// What comes of cases of key stores, extras and the package's identity.

#include "ctl/lint/harm/HarmTest.h"

namespace installer::cli {

std::vector<Harm> filesHarms() {
  return {
      {"HF501", kNoKeyStore},
      {"HF502", silently([](HarmTest& test) {
         EXPECT_FALSE(test.box().exists(test.instance().deploy(".keystore.client")));
       })},
      {"HF502All", kNoKeyStore},
      {"HF503", kNoKeyStore},
      {"HF504", kNoKeyStore},
      {"HF504Folder", silently([](HarmTest& test) {
         EXPECT_TRUE(test.box().isFolder(test.instance().deploy(".keystores")));
       })},
      {"HF505", silently([](HarmTest& test) {
         EXPECT_EQ("/Volumes/Other/keys",
                   test.box().linkTarget(test.instance().deploy(".keystore")));
       })},
      {"HF506", silently([](HarmTest& test) {
         EXPECT_EQ("", test.box().readFile(test.instance().deploy(".keystore")));
       })},
      {"HF601", silently([](HarmTest& test) {
         EXPECT_EQ("../../../none",
                   test.box().linkTarget(test.instance().deploy("extras/fonts/link")));
       })},
      {"HF601Absolute", silently([](HarmTest& test) {
         EXPECT_EQ("/etc/passwd", test.box().linkTarget(test.instance().deploy("extras/link")));
       })},
      {"HF601Dangling", silently([](HarmTest& test) {
         EXPECT_TRUE(test.box().isLink(test.instance().deploy("extras/link")));
       })},
      {"HF602", silently([](HarmTest& test) {
         EXPECT_FALSE(test.box().exists(test.instance().deploy("extras/pipe")));
       })},
      {"HF607", silently([](HarmTest& test) {
         EXPECT_TRUE(test.box().exists(test.instance().deploy("extras/.DS_Store")));
       })},
      {"HF607Copy", silently([](HarmTest& test) {
         EXPECT_TRUE(test.box().exists(test.instance().deploy("extras/more/readme.txt~")));
       })},
      {"HF609", silently([](HarmTest& test) {
         EXPECT_FALSE(test.box().isFolder(test.instance().deploy("extras/readme.txt")));
       })},
      {"HF701", silently([](HarmTest& test) {
         EXPECT_EQ(std::nullopt, test.recorded("installedHotfixBundleID"));
       })},
      {"HF701WithoutTheKey", silently([](HarmTest& test) {
         EXPECT_EQ(std::nullopt, test.recorded("installedHotfixBundleID"));
       })},
      {"HF702", silently([](HarmTest& test) {
         EXPECT_EQ(std::nullopt, test.recorded("installedHotfixBundleID"));
       })},
      {"HF702Damaged", silently([](HarmTest& test) {
         EXPECT_EQ(std::nullopt, test.recorded("installedHotfixBundleID"));
       })},
      {"HF703", silently([](HarmTest& test) {
         EXPECT_EQ("com.kiv.hotfix ", test.recorded("installedHotfixBundleID"));
       })},
  };
}

}  // namespace installer::cli
