// What comes of cases of manifests.

#include "ctl/lint/harm/HarmTest.h"

namespace installer::cli {

namespace {

using ::testing::HasSubstr;

const std::string kUpdate = "install.update.xml";
const std::string kRemoval = "uninstall.hotfix.xml";

}  // namespace

std::vector<Harm> manifestsHarms() {
  return {
      {"HF120", silently([](HarmTest& test) {
         EXPECT_EQ("2.5", test.version());
         EXPECT_THAT(test.deployed("install.update.xml"), HasSubstr("version=\"1.5\""));
       })},
      {"HF301", refusedWith(4)},
      {"HF301TooLong", refusedWith(4)},
      {"HF301Pipe", refusedWith(4)},
      {"HF302", deployedHolds(kUpdate, "url=\"${installer.root}/")},  // and LintTest of the sample
      {"HF304", deployedHolds(kUpdate, "url=\"${installer.root}/")},
      {"HF304InAnotherAttribute", deployedHolds(kUpdate, "source=\"${installer.root}\"")},
      {"HF305", deployedHolds(kUpdate, "url=\"${installer.Root}/")},
      {"HF305WithoutItsSign", deployedHolds(kUpdate, "url=\"{installer.root}/")},
      {"HF305WithAHyphen", deployedHolds(kUpdate, "url=\"${installer-root}/")},
      {"HF306", deployedLacks(kUpdate, "url=")},
      {"HF306OfOneMachine", deployedHolds(kUpdate, "url=\"file:/Users/build/site\"")},
      {"HF307", deployedHolds(kUpdate, "url=\"file:file:/")},
      {"HF309", deployedHolds(kUpdate, "version=\"1.4\"")},
      {"HF311", deployedLacks(kRemoval, "</install>")},
      {"HF311Pipe", silently([](HarmTest& test) { EXPECT_EQ("", test.deployed(kRemoval)); })},
      {"HF312", deployedLacks(kRemoval, "domain-object")},
      {"HF313", deployedLacks(kRemoval, "com.kiv.fix\" version")},
      {"HF314", deployedHolds(kRemoval, "${installer.root}")},
      {"HF315", deployedHolds(kRemoval, "action=\"install\"")},
      {"HF315WithoutAnAction", deployedLacks(kRemoval, "action=")},
      {"HF316", deployedHolds(kRemoval, "version=\"1.4\"")},
  };
}

}  // namespace installer::cli
