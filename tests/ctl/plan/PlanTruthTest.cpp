#include <gmock/gmock.h>
#include <unistd.h>

#include "ctl/plan/Plan.h"
#include "hotfix/driver/Installer.h"
#include "hotfix/util/InstallUtil.h"
#include "support/ItemStates.h"
#include "support/LauncherLine.h"
#include "support/OverlayMaker.h"
#include "support/OverlaySnapshot.h"
#include "support/PackageFixture.h"
#include "support/Proves.h"
#include "support/TreeSnapshot.h"

namespace installer::ctl {
namespace {

using ::installer::test::launcherLine;
using ::installer::test::ownMaker;
using ::installer::test::statesBelow;
using ::installer::test::TreeDiff;
using ::installer::test::TreeSnapshot;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::Eq;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::SizeIs;

std::vector<std::string> wordsOf(const Command& command) {
  std::vector<std::string> words = {command.executable};
  words.insert(words.end(), command.arguments.begin(), command.arguments.end());
  return words;
}

// A plan first, then the run itself over the same files: what the first foresees is what the second
// does, and the first has left everything as it was.
class PlanTruthTest : public ::installer::test::PackageFixture {
 protected:
  PlanTruthTest() {
    _sandbox.write(inHome("rcplauncher"), "#!/bin/sh\n", 0755);
    _sandbox.write(_sandbox.paths().receiptTool, "#!/bin/sh\n", 0755);
    _sandbox.write(inHome("plugin_customization.ini"), "# old\nold=1\nnew=0\n", 0640);
    _sandbox.write(inHome("deploy/.keystore"), "old store", 0600);
    _sandbox.write(inHome("deploy/.KeyStore.bak"), "another", 0600);
    _sandbox.write(inHome("eclipse/plugins/com.kiv.rcp.base_6.2.3/x"), "x", 0600);
    _sandbox.write("Applications/Quillmere.app/Contents/MacOS/shared/file", "shared", 0600);
    _sandbox.write("data/.config/rcpinstall.properties", "rcp.install.id=1\n");
    _sandbox.children().onStart([this](const Command& command) { playLauncher(command); });
  }

  void assume(int code) { _assumed = code; }
  void recordHotfix(const std::string& version) {
    writeInfo({{"version", "6.2.3"},
               {"hotfixVersion", version},
               {"installedHotfixBundleID", "com.quillmere.older"},
               {"SKIPRUNNINGCHECK", "true"}});
    _sandbox.write(inHome("deploy/uninstall.hotfix.xml"), "<remove/>\n", 0600);
  }
  void registerBundle(const std::string& bundle) {
    describe("allowMultiInstance", std::nullopt);
    _sandbox.writePlist(_sandbox.paths().registrations + "/Quillmere/framework.plist",
                        {{"pathToProduct", bundle}});
  }

  void prove() { prove(PlanRequest{package(), destination(), data(), _assumed}); }
  void prove(const PlanRequest& request) {
    const TreeSnapshot before = ::installer::test::snapshotOf(_sandbox.root());
    const auto states = statesBelow(_sandbox.root());

    _plan.emplace(request, ownMaker());

    EXPECT_THAT(TreeDiff(before, ::installer::test::snapshotOf(_sandbox.root())).lines(),
                IsEmpty());
    EXPECT_EQ(statesBelow(_sandbox.root()), states);
    EXPECT_THAT(_sandbox.log(), IsEmpty());
    EXPECT_THAT(_sandbox.children().started(), IsEmpty());

    run(request);
    compareFiles(before);
    compareChildren();
    compareLog();
    compareRecord();
  }

  Plan& plan() { return *_plan; }

 private:
  // Each answers beside its own home.
  void playLauncher(const Command& command) {
    const std::string name = "/rcp/rcplauncher";
    if (!command.executable.ends_with(name)) return;
    const std::string above = command.executable.substr(0, command.executable.size() - name.size());
    _sandbox.write(above + "/.provisioning_rc", "rc=" + std::to_string(_assumed) + "\n");
  }

  void run(const PlanRequest& request) {
    std::vector<std::string> arguments = {"HotfixInstaller", request.package, request.destination};
    if (request.rcpData) arguments.insert(arguments.end(), {"-rcpdata", *request.rcpData});
    ::testing::internal::CaptureStdout();
    const int status = runInstaller(arguments);
    EXPECT_EQ(plan().output, ::testing::internal::GetCapturedStdout());
    EXPECT_EQ(plan().status, status);
  }

  // The trace itself is among the lines of the log.
  TreeSnapshot withoutTrace(TreeSnapshot snapshot) {
    const auto trace = snapshot.find("tmp/install_trace.log");
    if (trace != snapshot.end()) trace->second.content.clear();
    return snapshot;
  }

  void compareFiles(const TreeSnapshot& before) {
    const TreeSnapshot after = ::installer::test::snapshotOf(_sandbox.root());
    const TreeSnapshot predicted = ::installer::test::snapshotOf(plan().tree(), _sandbox.root());
    EXPECT_THAT(TreeDiff(withoutTrace(predicted), withoutTrace(after)).lines(), IsEmpty());
    compareChanges(TreeDiff(withoutTrace(before), withoutTrace(after)));
  }

  // The list names what differs and nothing else, besides what was written again as it was.
  void compareChanges(const TreeDiff& diff) {
    std::set<std::string> told;
    for (const overlay::Change& change : plan().changes) {
      const std::string name =
          change.path.substr(std::min(_sandbox.root().size() + 1, change.path.size()));
      if (change.kind != overlay::Change::Kind::rewritten && name != "tmp/install_trace.log")
        told.insert(name);
    }
    std::set<std::string> different;
    for (const std::string& line : diff.lines()) {
      const std::string name = line.substr(line.find(' ') + 1);
      const std::string path = name.substr(0, name.find(": "));
      if (path != "tmp/install_trace.log") different.insert(path);
    }
    EXPECT_EQ(told, different);
  }

  void compareChildren() {
    std::vector<std::vector<std::string>> planned;
    std::vector<std::vector<std::string>> started;
    for (const overlay::PlannedChild& child : plan().children())
      if (!child.isQuestion) planned.push_back(wordsOf(child.command));
    for (const Command& command : _sandbox.children().started())
      started.push_back(wordsOf(command));
    EXPECT_EQ(planned, started);
  }

  void compareLog() {
    std::vector<std::string> planned;
    for (const overlay::PlannedLine& line : plan().log)
      planned.push_back(std::to_string(static_cast<int>(line.level)) + " " + line.text);
    EXPECT_EQ(planned, numberedLines());
  }

  void compareRecord() {
    const auto record = InstallUtil::getErrorMessage();
    ASSERT_TRUE(record.has_value());
    PropertyList::Array details;
    for (const std::string& detail : plan().errorDetails) details.emplace_back(detail);
    const PropertyList::Dictionary expected = {{"ERROR_CODE", plan().errorCode},
                                               {"ERROR_DETAILS", details}};
    EXPECT_EQ(*record, expected);
  }

  int _assumed = 0;
  std::optional<Plan> _plan;
};

// --- Installations -------------------------------------------------------------------------------

TEST_F(PlanTruthTest, APlainInstallation) {
  prove();
  EXPECT_EQ(plan().status, 0);
  EXPECT_EQ(plan().versionAfter, "6.2.3.1");
}

TEST_F(PlanTruthTest, OneWithoutADataFolderOfItsOwn) {
  prove({package(), destination(), std::nullopt});
  EXPECT_EQ(plan().status, 0);
}

TEST_F(PlanTruthTest, ADoubledOneWithoutTheWorkspaceFlag) {
  _sandbox.remove("data/.config");
  prove();
  EXPECT_THAT(plan().children(), SizeIs(3));
}

TEST_F(PlanTruthTest, AnUpgrade) {
  recordHotfix("6.2.3.0");
  prove();
  EXPECT_THAT(plan().output, ::testing::HasSubstr("completed successfully"));
  EXPECT_EQ(plan().versionBefore, "6.2.3.0");
}

TEST_F(PlanTruthTest, TheSameOnceMore) {
  recordHotfix("6.2.3.1");
  prove();
  EXPECT_EQ(plan().status, 0);
}

TEST_F(PlanTruthTest, AnUpgradeWithoutAnUninstallManifest) {
  recordHotfix("6.2.3.0");
  _sandbox.remove(inHome("deploy/uninstall.hotfix.xml"));
  prove();
  EXPECT_EQ(plan().status, 0);
}

TEST_F(PlanTruthTest, AnInstanceWithoutARecord) {
  _sandbox.write(inHome("installInfo.plist"), "no list");
  prove();
}

TEST_F(PlanTruthTest, AnInstanceWithAlmostNothing) {
  for (const char* name :
       {"plugin_customization.ini", "rcplauncher.properties", "deploy/.keystore"})
    _sandbox.remove(inHome(name));
  prove();
  EXPECT_EQ(plan().status, 0);
}

TEST_F(PlanTruthTest, OneWithABackupOfThatNameAlready) {
  _sandbox.write(inHome("deploy/install.0101130000.xml"), "kept");
  prove();
}

// --- Checks --------------------------------------------------------------------------------------

TEST_F(PlanTruthTest, ACharacterThatIsNotSupported) {
  const std::string odd = _sandbox.makeFolder("odd#place");
  _sandbox.children().failToStart(odd + "/Quillmere.app/Contents/MacOS/rcp/rcplauncher");
  prove({package(), odd, data()});
  EXPECT_EQ(plan().errorCode, 3);
  EXPECT_EQ(plan().checks[0].state, PlannedCheck::State::failed);
  EXPECT_EQ(plan().checks[1].state, PlannedCheck::State::notReached);
}

TEST_F(PlanTruthTest, NoInstance) {
  _sandbox.remove(inHome("deploy/install.xml"));
  prove();
  EXPECT_EQ(plan().errorCode, 8);
  EXPECT_EQ(plan().checks[1].state, PlannedCheck::State::failed);
}

TEST_F(PlanTruthTest, NoBundle) {
  _sandbox.remove(kBundle);
  _sandbox.children().failToStart(launcher());
  prove();
  EXPECT_EQ(plan().errorCode, 8);
}

TEST_F(PlanTruthTest, ARunningApplication) {
  _sandbox.processes().add(destination() + "/Quillmere.app/Contents/MacOS/Quillmere");
  prove();
  EXPECT_EQ(plan().errorCode, 6);
  EXPECT_EQ(plan().checks[2].values[1].text,
            destination() + "/Quillmere.app/Contents/MacOS/Quillmere");
}

TEST_F(PlanTruthTest, ARunningApplicationThatIsNotAskedFor) {
  _sandbox.processes().add(destination() + "/Quillmere.app/Contents/MacOS/Quillmere");
  describe("SKIPRUNNINGCHECK", "true");
  prove();
  EXPECT_EQ(plan().status, 0);
  EXPECT_EQ(plan().checks[2].state, PlannedCheck::State::skipped);
}

// Another user's could be the application. Root sees what its run will see.
TEST_F(PlanTruthTest, ProcessesThatAreClosedAreUnknownToTheCheckThatAsksForThem) {
  const PlanRequest request{package(), destination(), data()};
  _sandbox.processes().isOpen = false;
  _sandbox.users().effectiveUser = 4711;
  EXPECT_THAT(Plan(request, ownMaker()).unknown(), Contains("the processes of other users"));
  _sandbox.users().effectiveUser = 0;
  EXPECT_THAT(Plan(request, ownMaker()).unknown(), IsEmpty());

  _sandbox.users().effectiveUser = 4711;

  describe("SKIPRUNNINGCHECK", "true");
  EXPECT_THAT(Plan(request, ownMaker()).unknown(), Not(Contains("the processes of other users")));
}

TEST_F(PlanTruthTest, ALauncherThatRootHasLeftBehindIsWaitedFor) {
  const auto planFor = [&](uid_t user) {
    overlay::Maker maker = ownMaker();
    maker.user = user;
    return Plan({package(), destination(), data()}, maker).waitsForLauncher;
  };
  EXPECT_FALSE(planFor(4711));

  _sandbox.processes().addCommandLine(launcherLine(launcher()), 4711);

  EXPECT_TRUE(planFor(4711));
  EXPECT_FALSE(planFor(4712));
}

TEST_F(PlanTruthTest, ALauncherOfTheOtherHomeIsWaitedForToo) {
  registerBundle(_sandbox.makeFolder("Applications/Other.app"));
  const PlanRequest request{package(), destination(), data()};
  const Plan before(request, ownMaker());
  ASSERT_NE(before.rcpHomeOfWorkflow, std::nullopt);
  EXPECT_FALSE(before.waitsForLauncher);

  _sandbox.processes().addCommandLine(launcherLine(*before.rcpHomeOfWorkflow + "/rcplauncher"));

  EXPECT_TRUE(Plan(request, ownMaker()).waitsForLauncher);
}

TEST_F(PlanTruthTest, AHigherHotfix) {
  recordHotfix("6.2.3.9");
  prove();
  EXPECT_EQ(plan().errorCode, 7);
  EXPECT_EQ(plan().versionAfter, "6.2.3.9");
  EXPECT_EQ(plan().checks[3].state, PlannedCheck::State::failed);
  EXPECT_EQ(plan().checks[3].values[1].text, "6.2.3.9");
}

// --- Packages ------------------------------------------------------------------------------------

TEST_F(PlanTruthTest, NoPackage) {
  prove({_sandbox.path("none"), destination(), data()});
  EXPECT_EQ(plan().reason, BundleReason::none);
}

TEST_F(PlanTruthTest, APackageThatIsAFile) {
  prove({_sandbox.write("file.pkg", "no package"), destination(), data()});
  EXPECT_EQ(plan().status, 1);
}

TEST_F(PlanTruthTest, ADescriptionThatIsNoList) {
  _sandbox.write("HF/HF.pkg/Contents/Resources/hotfix.plist", "no list");
  prove();
  EXPECT_EQ(plan().errorCode, 8);
}

TEST_F(PlanTruthTest, ADescriptionThatNamesNoBundle) {
  describe("bundleName", std::nullopt);
  prove();
  EXPECT_EQ(plan().errorCode, 8);
}

TEST_F(PlanTruthTest, ADescriptionThatNamesNoFrameworkPath) {
  describe("frameworkPath", std::nullopt);
  prove();
}

TEST_F(PlanTruthTest, ADescriptionThatNamesNoVersion) {
  describe("version", std::nullopt);
  prove();
  EXPECT_EQ(plan().versionAfter, std::nullopt);
}

TEST_F(PlanTruthTest, AMissingInstallManifest) {
  _sandbox.remove("HF/deploy/install.hotfix.xml");
  prove();
  EXPECT_EQ(plan().errorCode, 4);
  EXPECT_EQ(plan().checks[3].state, PlannedCheck::State::passed);
}

TEST_F(PlanTruthTest, AnInstallManifestThatIsNotWellFormed) {
  _sandbox.write("HF/deploy/install.hotfix.xml", "<manifest>");
  prove();
  EXPECT_EQ(plan().errorCode, 4);
}

TEST_F(PlanTruthTest, AnInstallManifestWithoutFeatures) {
  _sandbox.write("HF/deploy/install.hotfix.xml", "<manifest><domain-object/></manifest>");
  prove();
  EXPECT_EQ(plan().status, 0);
}

TEST_F(PlanTruthTest, AManifestBehindALinkOutOfThePackage) {
  _sandbox.write("elsewhere/install.xml", kManifest);
  _sandbox.remove("HF/deploy/install.hotfix.xml");
  _sandbox.makeLink("HF/deploy/install.hotfix.xml", "../../elsewhere/install.xml");
  prove();
}

TEST_F(PlanTruthTest, AMissingUninstallManifest) {
  _sandbox.remove("HF/deploy/uninstall.hotfix.xml");
  prove();
  EXPECT_EQ(plan().status, 0);
}

TEST_F(PlanTruthTest, NoKeyStores) {
  _sandbox.remove("HF/deploy/.keystore");
  prove();
}

TEST_F(PlanTruthTest, ExtrasThatAreMerged) {
  _sandbox.write("HF/deploy/extras/sub/replaced", "new", 0751);
  _sandbox.makeLink("HF/deploy/extras/link", "sub/replaced");
  _sandbox.write(inHome("deploy/extras/sub/replaced"), "old");
  _sandbox.write(inHome("deploy/extras/sub/kept"), "kept", 0600);
  _sandbox.write(inHome("deploy/extras/extra/below"), "in the way");
  prove();
}

TEST_F(PlanTruthTest, ExtrasWithWhatCannotBeCopied) {
  _sandbox.makePipe("HF/deploy/extras/sub/pipe");
  _sandbox.write(inHome("deploy/extras/pipe"), "old");
  _sandbox.makePipe("HF/deploy/extras/pipe");
  prove();
}

TEST_F(PlanTruthTest, LocationsOfThePackagesOwn) {
  _sandbox.write("own/install.xml", kManifest);
  _sandbox.write("own/.keystore", "own store");
  _sandbox.write("own/extras/e", "e");
  describe("pathToHotfixManifest", _sandbox.path("own/install.xml"));
  describe("pathToPluginCustomization", "${package}/../deploy/none.ini");
  describe("updateSiteList", "${package}/site with blanks");
  prove();
}

// --- Provisioning --------------------------------------------------------------------------------

TEST_F(PlanTruthTest, AFailingProvisioning) {
  assume(13);
  prove();
  EXPECT_EQ(plan().status, 1);
  EXPECT_EQ(plan().versionAfter, std::nullopt);
}

TEST_F(PlanTruthTest, AProvisioningThatFindsNothingNew) {
  assume(2);
  prove();
  EXPECT_EQ(plan().status, 0);
}

TEST_F(PlanTruthTest, AFailingRemoval) {
  assume(1);
  recordHotfix("6.2.3.0");
  prove();
  EXPECT_THAT(plan().output, ::testing::HasSubstr("Unexpected results"));
}

TEST_F(PlanTruthTest, AMissingLauncher) {
  _sandbox.remove(inHome("rcplauncher"));
  _sandbox.children().failToStart(launcher());
  prove();
  EXPECT_EQ(plan().status, 1);
  EXPECT_EQ(plan().children().front().refusal, "No such file or directory");
}

// --- Places --------------------------------------------------------------------------------------

TEST_F(PlanTruthTest, ABundleThatIsRegisteredElsewhere) {
  registerBundle(destination() + "/Quillmere.app");
  prove({package(), _sandbox.makeFolder("Other"), data()});
  EXPECT_EQ(plan().status, 0);
  EXPECT_EQ(plan().reason, BundleReason::registered);
}

TEST_F(PlanTruthTest, ABundleThatIsRegisteredUnderAnotherName) {
  registerBundle(_sandbox.makeFolder("Applications/Other.app"));
  _sandbox.write("Applications/Other.app/Contents/MacOS/rcp/deploy/install.xml", "<x/>");
  _sandbox.write("Applications/Other.app/Contents/MacOS/rcp/rcplauncher", "#!/bin/sh\n", 0755);
  prove();
  EXPECT_NE(plan().rcpHomeOfWorkflow, std::nullopt);
}

TEST_F(PlanTruthTest, ARegisteredBundleThatIsGone) {
  registerBundle(_sandbox.path("Gone/Quillmere.app"));
  prove();
  EXPECT_EQ(plan().reason, BundleReason::registeredOneIsMissing);
}

TEST_F(PlanTruthTest, AProductThatIsNotRegistered) {
  describe("allowMultiInstance", std::nullopt);
  prove();
  EXPECT_EQ(plan().reason, BundleReason::notRegistered);
}

TEST_F(PlanTruthTest, ADataFolderThatIsALink) {
  prove({package(), destination(), _sandbox.makeLink("linked data", "data")});
}

TEST_F(PlanTruthTest, AMissingDataFolderWithADotAtItsEnd) {
  prove({package(), destination(), _sandbox.path("none/.")});
}

TEST_F(PlanTruthTest, AHomeWithLinksOutOfTheBundle) {
  _sandbox.write("elsewhere/.keystore", "not ours");
  _sandbox.write("elsewhere/install.xml", "<x/>");
  _sandbox.remove(inHome("deploy"));
  _sandbox.makeLink(inHome("deploy"), "../../../../../elsewhere");
  _sandbox.makeLink(inHome("link"), "/etc/hosts");
  prove();
}

TEST_F(PlanTruthTest, AHomeWithAFileThatHasAnotherName) {
  _sandbox.write("other name", "x", 0600);
  ASSERT_EQ(::link(_sandbox.path("other name").c_str(), homePath("linked").c_str()), 0);
  prove();
}

// --- What other runs and programs have left ------------------------------------------------------

TEST_F(PlanTruthTest, LeftOversOfAKilledRun) {
  _sandbox.write(inHome("deploy/.hotfix-1"), "x");
  _sandbox.write(inHome("eclipse/.hotfix-2/below"), "x");
  _sandbox.write("tmp/.hotfix-3", "x");
  _sandbox.write("data/.config/.hotfix-4", "x");
  _sandbox.write(inHome("deploy/.hotfix-x"), "kept");
  prove();
}

TEST_F(PlanTruthTest, AStagingFolder) {
  _sandbox.write("tmp/qlmcore2/sub/file", "staged", 0640);
  _sandbox.writePlist(_sandbox.paths().internalConfiguration,
                      {{"newInstallLocation", _sandbox.path("staged")}});
  prove();
}

TEST_F(PlanTruthTest, WhatAnEarlierRunLeavesInTmp) {
  _sandbox.write(_sandbox.paths().traceFile, "old", 0600);
  _sandbox.write(_sandbox.paths().errorMarker, "old");
  _sandbox.write(_sandbox.paths().pasteboard, "old");
  _sandbox.write(_sandbox.paths().staleResultPanel, "old");
  _sandbox.write(inHome("../.provisioning_rc"), "rc=7\n", 0600);
  prove();
}

TEST_F(PlanTruthTest, LinksThatOthersHavePlantedInTmp) {
  const std::string target = _sandbox.write("target", "mine");
  _sandbox.makeLink(_sandbox.paths().traceFile, target);
  _sandbox.makeLink(_sandbox.paths().pasteboard, target);
  _sandbox.makeLink(_sandbox.paths().internalConfiguration, target);
  _sandbox.makeFolder(_sandbox.paths().errorMarker);
  _sandbox.remove(inHome("deploy/install.xml"));
  prove();
}

TEST_F(PlanTruthTest, ACollectionOfLogs) {
  _sandbox.write("java/bin/java", "#!/bin/sh\n", 0755);
  _sandbox.users().variables["JAVA_HOME"] = _sandbox.path("java");
  _sandbox.write(inHome("collectionutility.jar"), "");
  prove();
  EXPECT_EQ(plan().children().back().command.arguments.front(), "-jar");
}

}  // namespace
}  // namespace installer::ctl
