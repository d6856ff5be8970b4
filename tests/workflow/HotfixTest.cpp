#include "hotfix/workflow/Hotfix.h"

#include <gmock/gmock.h>

#include <cerrno>

#include "hotfix/util/InstallUtil.h"
#include "instance/ProvisioningCommand.h"
#include "support/PackageFixture.h"
#include "support/Proves.h"
#include "support/TreeSnapshot.h"

namespace installer::test {
namespace {

using PropertyList::Array;
using PropertyList::Dictionary;
using PropertyList::Value;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

class HotfixTest : public PackageFixture {
 protected:
  HotfixTest() {
    _sandbox.clock().set(2013, 3, 5, 9, 7);
    InstallUtil::initInternalPasteboard(true);
  }

  Hotfix hotfix() const { return Hotfix(package(), destination(), data()); }
  bool install() {
    Hotfix workflow = hotfix();
    _sandbox.clearLog();
    return workflow.installNewHotfix();
  }
  std::string deployed(const std::string& name) const {
    return _sandbox.read(inHome("deploy/" + name));
  }
  Dictionary record() const { return InstallUtil::getErrorMessage().value_or(Dictionary()); }
  static Dictionary code(int number, const Array& details) {
    return {{"ERROR_CODE", number}, {"ERROR_DETAILS", details}};
  }
  std::vector<std::string> launcherArguments() {
    const auto& started = _sandbox.children().started();
    return started.empty() ? std::vector<std::string>() : started.back().arguments;
  }
};

TEST_F(HotfixTest, BringsEverythingIntoTheInstance) {
  proves("INSTALL-1");
  EXPECT_TRUE(install());

  EXPECT_THAT(deployed("install.update.xml"), HasSubstr("url=\"file:" + package() + "/site\""));
  EXPECT_EQ(deployed("uninstall.hotfix.xml"), "<uninstall url=\"${installer.root}\"/>");
  EXPECT_EQ(deployed("install.0101130000.xml"), "<manifest/>\n");
  EXPECT_EQ(_sandbox.read(inHome("rcplauncher.properties")),
            "provisioning.manifest.version=0503130907\nrcp.install.id=0101130000\n");
  EXPECT_EQ(_sandbox.read(inHome("plugin_customization.ini")), "new=1\n");
  EXPECT_EQ(deployed(".keystore"), "new store");
  EXPECT_EQ(deployed("extras/extra"), "extra");
  EXPECT_EQ(info(), (Dictionary{{"hotfixVersion", "6.2.3.1"},
                                {"SKIPRUNNINGCHECK", "false"},
                                {"installedHotfixBundleID", "com.quillmere.hotfix"}}));
  EXPECT_EQ(record(), code(0, {}));
}

TEST_F(HotfixTest, WhatTheLauncherInstalledIsFlushedBeforeTheVersionIsRecorded) {
  proves("INSTALL-15");
  std::size_t before = 0;
  _sandbox.children().onStart([&](const Command&) {
    _sandbox.write(inHome("../.provisioning_rc"), "rc=0\n");
    before = _sandbox.files().operations().size();
  });

  EXPECT_TRUE(install());

  const auto& operations = _sandbox.files().operations();
  ASSERT_LT(before + 1, operations.size());
  EXPECT_EQ(operations[before], FileOperation::kSync);
  EXPECT_EQ(operations[before + 1], FileOperation::kCreateTemporary) << "the record";
}

TEST_F(HotfixTest, VersionIsRecordedThoughTheFlushFails) {
  proves("INSTALL-15");
  _sandbox.children().onStart([&](const Command&) {
    _sandbox.write(inHome("../.provisioning_rc"), "rc=0\n");
    _sandbox.files().failNext(FileOperation::kSync, EIO);
  });

  EXPECT_TRUE(install());

  EXPECT_EQ(PropertyList::textForKey(info(), "hotfixVersion"), "6.2.3.1");
  EXPECT_THAT(linesAt(LogLevel::error),
              ElementsAre("\"" + home() + "\" cannot be flushed: Input/output error"));
}

TEST_F(HotfixTest, FailedProvisioningIsNotFlushed) {
  std::size_t before = 0;
  _sandbox.children().onStart([&](const Command&) {
    _sandbox.write(inHome("../.provisioning_rc"), "rc=13\n");
    before = _sandbox.files().operations().size();
  });

  EXPECT_FALSE(install());

  EXPECT_NE(_sandbox.files().operations().at(before), FileOperation::kSync);
}

TEST_F(HotfixTest, LogsEveryStepInOrder) {
  EXPECT_TRUE(install());

  const std::string deploy = homePath("deploy");
  const std::string source = package() + "/../deploy";
  EXPECT_THAT(
      numberedLines(),
      ElementsAre("6 Copy install manifest to " + deploy + "/install.update.xml.",
                  "6 Update ${installer.root}.",
                  "6 Get ${installer.root} : file:" + package() + ".", "6 Save install manifest.",
                  "6 Copy install manifest.", "6 Begin to backup install manifest.",
                  "6 Process plugin_customization.ini. ", "6 Copy .keystore file.",
                  "6 .keystore source files are in " + source + ".",
                  "6 Copy keystore file '.keystore' from " + source + "/.keystore to " + deploy +
                      "/.keystore.",
                  "6 Copy extras file.",
                  "6 Begin to copy files from " + source + "/extras to " + deploy + "/extras ",
                  "6 Start provisioning system. ",
                  "6 Begin to start provisoning sytem to install features.",
                  "6 Begin to update new hotfix version.", "6 workspace is " + data() + "\n"));
}

TEST_F(HotfixTest, StartsTheLauncherOnceWithThePackagesSites) {
  proves("PACKAGE-5");
  EXPECT_TRUE(install());

  EXPECT_THAT(_sandbox.children().started(),
              ElementsAre(Command{launcher(),
                                  ProvisioningCommand::hotfixArguments(
                                      "en_US", package() + "/../../updates/platform", data())}));
}

TEST_F(HotfixTest, OldResultIsRemovedBeforeTheRun) {
  _sandbox.write(inHome("../.provisioning_rc"), "rc=0\n");
  launcherAnswers("");

  EXPECT_FALSE(install());

  EXPECT_FALSE(_sandbox.exists(inHome("../.provisioning_rc")));
}

TEST_F(HotfixTest, StampIsNewAndBackupOldWhenTheLauncherRuns) {
  proves("INSTALL-2");
  std::string properties;
  bool backedUp = false;
  _sandbox.children().onStart([&](const Command&) {
    properties = _sandbox.read(inHome("rcplauncher.properties"));
    backedUp = _sandbox.exists(inHome("deploy/install.0101130000.xml"));
    _sandbox.write(inHome("../.provisioning_rc"), "rc=2\n");
  });

  EXPECT_TRUE(install());

  EXPECT_THAT(properties, HasSubstr("provisioning.manifest.version=0503130907\n"));
  EXPECT_TRUE(backedUp);
}

TEST_F(HotfixTest, FailedProvisioningRecordsEverythingButTheVersion) {
  proves("INSTALL-3");
  launcherAnswers("rc=1\n");
  writeInfo({{"version", "6.2.3"}});
  _sandbox.write(inHome("file"), "", 0600);
  _sandbox.write("data/file", "", 0600);

  EXPECT_FALSE(install());

  EXPECT_EQ(info(), (Dictionary{{"version", "6.2.3"},
                                {"SKIPRUNNINGCHECK", "false"},
                                {"installedHotfixBundleID", "com.quillmere.hotfix"}}));
  EXPECT_EQ(_sandbox.mode(inHome("file")), 0775U);
  EXPECT_EQ(_sandbox.mode("data/file"), 0775U);
  EXPECT_TRUE(_sandbox.exists(_sandbox.paths().internalConfiguration));
  EXPECT_EQ(record(), code(0, {}));
}

TEST_F(HotfixTest, PermissionsAreRestoredBelowHomeSharedAndData) {
  proves("INSTALL-13");
  for (const std::string& file :
       {inHome("file"), inHome("../shared/file"), std::string("data/file")})
    _sandbox.write(file, "", 0600);

  EXPECT_TRUE(install());

  for (const std::string& file :
       {inHome("file"), inHome("../shared/file"), std::string("data/file")})
    EXPECT_EQ(_sandbox.mode(file), 0775U) << file;
}

TEST_F(HotfixTest, PolicyOfThePackageIsStored) {
  describe("SKIPRUNNINGCHECK", "true");

  EXPECT_TRUE(install());

  EXPECT_EQ(*info().find("SKIPRUNNINGCHECK"), Value("true"));
}

TEST_F(HotfixTest, ResultPanelIsToldWorkspaceAndHome) {
  _sandbox.write(_sandbox.paths().staleResultPanel, "old");
  _sandbox.writePlist(_sandbox.paths().internalConfiguration, {{"kept", "1"}});

  EXPECT_TRUE(install());

  EXPECT_FALSE(_sandbox.exists(_sandbox.paths().staleResultPanel));
  EXPECT_EQ(_sandbox.readPlist(_sandbox.paths().internalConfiguration),
            (Dictionary{{"kept", "1"}, {"P_RCPDATA", data()}, {"pathToRcpHome", home()}}));
}

TEST_F(HotfixTest, WithoutDataFolderTheHomesOwnIsTaken) {
  proves("INSTALL-5");
  EXPECT_TRUE(Hotfix(package(), destination(), std::nullopt).installNewHotfix());

  EXPECT_EQ(launcherArguments().back(), homePath("systemdata"));
}

TEST_F(HotfixTest, SecondRunStandsOnTheResultsOfTheFirst) {
  proves("SUCCESS-6");
  Hotfix workflow = hotfix();
  EXPECT_TRUE(workflow.installNewHotfix());
  launcherAnswers("rc=2\n");
  const TreeSnapshot before = snapshotOf(_sandbox.path(kBundle));

  EXPECT_TRUE(workflow.installNewHotfix());

  EXPECT_THAT(TreeDiff(before, snapshotOf(_sandbox.path(kBundle))).lines(),
              ::testing::UnorderedElementsAre(
                  HasSubstr("added Contents/MacOS/rcp/deploy/install.0503130907.xml"),
                  HasSubstr("changed Contents/MacOS/.provisioning_rc")));
}

TEST_F(HotfixTest, MissingManifestIsCodeFourWithItsPath) {
  proves("INSTALL-6");
  _sandbox.remove("HF/deploy/install.hotfix.xml");

  EXPECT_FALSE(install());

  EXPECT_EQ(record(), code(4, {package() + "/../deploy/install.hotfix.xml"}));
  EXPECT_THAT(_sandbox.log(), IsEmpty());
  EXPECT_THAT(_sandbox.children().started(), IsEmpty());
}

TEST_F(HotfixTest, ManifestThatCannotBeCopiedIsCodeFourWithItsName) {
  proves("INSTALL-7");
  _sandbox.remove(inHome("deploy"));

  EXPECT_FALSE(install());

  EXPECT_EQ(record(), code(4, {"install.hotfix.xml"}));
  EXPECT_THAT(_sandbox.children().started(), IsEmpty());
  EXPECT_FALSE(_sandbox.exists(inHome("installInfo.plist")));
  EXPECT_THAT(
      linesAt(LogLevel::error),
      ElementsAre("\"" + package() + "/../deploy/install.hotfix.xml\" cannot be copied to \"" +
                  homePath("deploy/install.update.xml") + "\": No such file or directory"));
}

TEST_F(HotfixTest, ManifestInTheWayThatStaysIsCodeFourWithItsName) {
  proves("INSTALL-7");
  _sandbox.write(inHome("deploy/install.update.xml/file"), "in the way");
  _sandbox.files().failAlways(FileOperation::kUnlink, EBUSY);

  EXPECT_FALSE(install());

  EXPECT_EQ(record(), code(4, {"install.hotfix.xml"}));
  EXPECT_THAT(_sandbox.children().started(), IsEmpty());
  EXPECT_FALSE(_sandbox.exists(inHome("installInfo.plist")));
}

TEST_F(HotfixTest, UninstallManifestInTheWayThatStaysIsAWarning) {
  proves("INSTALL-9");
  _sandbox.write(inHome("deploy/uninstall.hotfix.xml/file"), "in the way");
  _sandbox.files().failAlways(FileOperation::kUnlink, EBUSY);

  EXPECT_TRUE(install());

  EXPECT_THAT(linesAt(LogLevel::warning),
              ::testing::Contains("Not able to copy hotfix uninstall manifest."));
  EXPECT_THAT(linesAt(LogLevel::error),
              ::testing::Not(::testing::Contains(::testing::HasSubstr("uninstall.hotfix.xml"))));
}

TEST_F(HotfixTest, AnswerOfTheLauncherThatIsNoSuccessIsTold) {
  proves("RESULT-8");
  launcherAnswers("rc=13\n");

  EXPECT_FALSE(install());

  EXPECT_THAT(linesAt(LogLevel::error),
              ElementsAre("The provisioning answered 13; the logs of the launcher are in " +
                          home() + " and in " + data() + "/.metadata/.log."));
}

TEST_F(HotfixTest, UnreadableRecordIsToldOnceAnInstallation) {
  proves("FILES-21", "LIBRARY-11");
  _sandbox.write(inHome("installInfo.plist"), "half an edit <dict>");
  const std::string line = "\"" + homePath("installInfo.plist") +
                           "\" cannot be read: No property list with a dictionary";

  EXPECT_TRUE(install());
  EXPECT_THAT(linesAt(LogLevel::error), ElementsAre(line));

  EXPECT_TRUE(install());
  EXPECT_THAT(linesAt(LogLevel::error), ElementsAre(line)) << "the next one";
}

TEST_F(HotfixTest, DescriptionThatCannotBeLookedAtIsTold) {
  proves("FILES-21");
  const std::string description = package() + "/Contents/Resources/hotfix.plist";
  for (const std::string& path : {package(), description}) {
    _sandbox.clearLog();
    _sandbox.files().failReading(path, EIO);

    EXPECT_FALSE(hotfix().installNewHotfix());

    EXPECT_THAT(linesAt(LogLevel::error),
                ElementsAre("\"" + path + "\" cannot be looked at: Input/output error"));
    _sandbox.files().stopFailing();
  }
}

TEST_F(HotfixTest, DescriptionThatCannotBeReadIsTold) {
  proves("FILES-21");
  const std::string description = package() + "/Contents/Resources/hotfix.plist";
  _sandbox.remove(description);
  _sandbox.makeFolder(description);

  EXPECT_FALSE(hotfix().installNewHotfix());

  EXPECT_THAT(linesAt(LogLevel::error),
              ElementsAre("\"" + description + "\" cannot be read: Is a directory"));
}

TEST_F(HotfixTest, HomeThatCannotBeLookedAtIsTold) {
  proves("FILES-21");
  _sandbox.files().failReading(home(), EIO);

  EXPECT_FALSE(hotfix().installNewHotfix());

  EXPECT_THAT(linesAt(LogLevel::error),
              ElementsAre("\"" + home() + "\" cannot be looked at: Input/output error"));
  EXPECT_EQ(record(), code(4, {"install.hotfix.xml"}));
}

TEST_F(HotfixTest, PackageFilesThatCannotBeLookedAtAreTold) {
  proves("FILES-21");
  const std::string folder = package() + "/../deploy/";
  for (const std::string name :
       {"install.hotfix.xml", "uninstall.hotfix.xml", "plugin_customization.ini"}) {
    Hotfix workflow = hotfix();
    _sandbox.clearLog();
    _sandbox.files().failReading(folder + name, EIO);

    EXPECT_EQ(workflow.installNewHotfix(), name != "install.hotfix.xml") << name;

    EXPECT_THAT(linesAt(LogLevel::error),
                ElementsAre("\"" + folder + name + "\" cannot be looked at: Input/output error"));
    _sandbox.files().stopFailing();
  }
  EXPECT_EQ(record(), code(4, {folder + "install.hotfix.xml"}));
}

TEST_F(HotfixTest, ResultPanelsOldFileThatStaysIsTold) {
  _sandbox.makeFolder("tmp/qlm.config/x");
  _sandbox.files().failAlways(FileOperation::kUnlink, EPERM);

  EXPECT_TRUE(install());

  EXPECT_THAT(linesAt(LogLevel::error),
              ::testing::Contains("\"" + _sandbox.paths().staleResultPanel +
                                  "\" cannot be removed: Operation not permitted"));
}

TEST_F(HotfixTest, MalformedManifestIsCodeFourWithItsName) {
  proves("INSTALL-7");
  _sandbox.write("HF/deploy/install.hotfix.xml", "<m>");

  EXPECT_FALSE(install());

  EXPECT_EQ(record(), code(4, {"install.hotfix.xml"}));
}

TEST_F(HotfixTest, MissingHomeIsCodeFourAndMakesNothing) {
  proves("INSTALL-7");
  Hotfix workflow(package(), _sandbox.path("Elsewhere"), data());

  EXPECT_FALSE(workflow.installNewHotfix());

  EXPECT_EQ(record(), code(4, {"install.hotfix.xml"}));
  EXPECT_FALSE(_sandbox.exists("Elsewhere"));
}

TEST_F(HotfixTest, MissingManifestIsToldWithItsPathThoughTheHomeIsMissingToo) {
  proves("INSTALL-6");
  _sandbox.remove("HF/deploy/install.hotfix.xml");

  EXPECT_FALSE(Hotfix(package(), _sandbox.path("Elsewhere"), data()).installNewHotfix());

  EXPECT_EQ(record(), code(4, {package() + "/../deploy/install.hotfix.xml"}));
}

TEST_F(HotfixTest, MissingPackageOrDescriptionEndsSilently) {
  proves("INSTALL-4");
  EXPECT_FALSE(Hotfix(std::nullopt, destination(), data()).installNewHotfix());
  EXPECT_FALSE(Hotfix(_sandbox.path("none"), destination(), data()).installNewHotfix());
  EXPECT_THAT(_sandbox.log(), IsEmpty());
  _sandbox.remove("HF/HF.pkg/Contents/Resources/hotfix.plist");
  EXPECT_FALSE(install());

  EXPECT_EQ(record(), code(0, {}));
  EXPECT_THAT(_sandbox.log(), IsEmpty());
  EXPECT_THAT(_sandbox.children().started(), IsEmpty());
}

TEST_F(HotfixTest, DescriptionWithoutNamesEndsSilently) {
  proves("INSTALL-4");
  describe("bundleName", std::nullopt);
  EXPECT_FALSE(install());
  describe("bundleName", "Quillmere");
  describe("frameworkPath", std::nullopt);
  EXPECT_FALSE(install());
  EXPECT_FALSE(Hotfix(package(), destination(), std::nullopt).installNewHotfix());

  EXPECT_EQ(record(), code(0, {}));
  EXPECT_THAT(_sandbox.log(), IsEmpty());
  EXPECT_THAT(_sandbox.children().started(), IsEmpty());
}

TEST_F(HotfixTest, MissingUninstallManifestIsSkippedSilently) {
  proves("INSTALL-9");
  _sandbox.remove("HF/deploy/uninstall.hotfix.xml");

  EXPECT_TRUE(install());

  EXPECT_FALSE(_sandbox.exists(inHome("deploy/uninstall.hotfix.xml")));
  EXPECT_THAT(linesAt(LogLevel::warning), IsEmpty());
}

TEST_F(HotfixTest, UninstallManifestThatCannotBeCopiedIsAWarning) {
  proves("INSTALL-9");
  _sandbox.remove("HF/deploy/uninstall.hotfix.xml");
  _sandbox.makePipe("HF/deploy/uninstall.hotfix.xml");

  EXPECT_TRUE(install());

  EXPECT_THAT(linesAt(LogLevel::warning),
              ElementsAre("Not able to copy hotfix uninstall manifest."));
}

TEST_F(HotfixTest, MissingCustomizationKeyStoresAndExtrasDoNotStopIt) {
  proves("INSTALL-10");
  _sandbox.remove("HF/deploy/plugin_customization.ini");
  _sandbox.remove("HF/deploy/.keystore");
  _sandbox.remove("HF/deploy/extras");

  EXPECT_TRUE(install());

  EXPECT_FALSE(_sandbox.exists(inHome("plugin_customization.ini")));
  EXPECT_FALSE(_sandbox.exists(inHome("deploy/extras")));
}

TEST_F(HotfixTest, CustomizationStaysByteForByteWhenThePackageHasNone) {
  proves("INSTALL-10");
  _sandbox.write(inHome("plugin_customization.ini"), "# mine\n z : 1\na = 2");
  _sandbox.remove("HF/deploy/plugin_customization.ini");

  EXPECT_TRUE(install());

  EXPECT_EQ(_sandbox.read(inHome("plugin_customization.ini")), "# mine\n z : 1\na = 2");
}

TEST_F(HotfixTest, DescriptionIsReadOnceWhenTheWorkflowIsMade) {
  proves("PACKAGE-4");
  Hotfix workflow = hotfix();
  describe("version", "9.9");
  describe("updateSiteList", "/other");

  EXPECT_TRUE(workflow.installNewHotfix());

  EXPECT_EQ(*info().find("hotfixVersion"), Value("6.2.3.1"));
  EXPECT_EQ(launcherArguments()[10],
            "-DprovUpdateSiteListOverride=file:" + package() + "/../../updates/platform");
}

TEST_F(HotfixTest, AbsentVersionIsNotRecorded) {
  proves("INSTALL-11");
  describe("version", std::nullopt);
  writeInfo({{"hotfixVersion", "old"}});

  EXPECT_TRUE(install());

  EXPECT_EQ(*info().find("hotfixVersion"), Value("old"));
  EXPECT_THAT(linesAt(LogLevel::info), ::testing::Contains("Begin to update new hotfix version."));
}

TEST_F(HotfixTest, LocationsOfTheDescriptionReplaceTheDefaults) {
  proves("PACKAGE-7");
  _sandbox.write("own/manifest.xml", kManifest);
  _sandbox.write("own/uninstall.xml", "own uninstall");
  _sandbox.write("own/custom.ini", "own=1\n");
  _sandbox.write("own/ks/.keystore.own", "own store");
  _sandbox.write("own/ex/own", "own extra");
  describe("pathToHotfixManifest", "${package}/../../own/manifest.xml");
  describe("pathToHotfixUninstallManifest", _sandbox.path("own/uninstall.xml"));
  describe("pathToPluginCustomization", _sandbox.path("own/custom.ini"));
  describe("updateSiteList", "/a b,${package}/site");
  describe("keystore", _sandbox.path("own/ks"));
  describe("extras", _sandbox.path("own/ex"));

  EXPECT_TRUE(install());

  EXPECT_EQ(deployed("uninstall.hotfix.xml"), "own uninstall");
  EXPECT_EQ(_sandbox.read(inHome("plugin_customization.ini")), "own=1\n");
  EXPECT_EQ(deployed(".keystore.own"), "own store");
  EXPECT_EQ(deployed("extras/own"), "own extra");
  EXPECT_EQ(launcherArguments()[10],
            "-DprovUpdateSiteListOverride=file:/a b," + package() + "/site");
}

TEST_F(HotfixTest, OwnManifestMovesKeyStoresAndExtrasAlong) {
  proves("PACKAGE-7");
  _sandbox.write("own/manifest.xml", kManifest);
  _sandbox.write("own/.keystore.own", "own store");
  _sandbox.write("own/extras/own", "own extra");
  describe("pathToHotfixManifest", _sandbox.path("own/manifest.xml"));

  EXPECT_TRUE(install());

  EXPECT_EQ(deployed(".keystore.own"), "own store");
  EXPECT_EQ(deployed("extras/own"), "own extra");
  EXPECT_EQ(deployed("uninstall.hotfix.xml"), "<uninstall url=\"${installer.root}\"/>");
}

TEST_F(HotfixTest, EmptyAndMistypedLocationsGetTheDefaults) {
  proves("PACKAGE-6");
  for (const Value& value : {Value(""), Value(5)}) {
    SCOPED_TRACE(value == Value("") ? "empty" : "no text");
    for (const char* key : {"pathToHotfixManifest", "pathToHotfixUninstallManifest",
                            "pathToPluginCustomization", "updateSiteList", "keystore", "extras"})
      describe(key, value);
    for (const char* left : {"plugin_customization.ini", "deploy/install.update.xml",
                             "deploy/uninstall.hotfix.xml", "deploy/.keystore", "deploy/extras"})
      _sandbox.remove(inHome(left));

    EXPECT_TRUE(install());

    EXPECT_THAT(deployed("install.update.xml"), HasSubstr("url=\"file:" + package() + "/site\""));
    EXPECT_EQ(deployed("uninstall.hotfix.xml"), "<uninstall url=\"${installer.root}\"/>");
    EXPECT_EQ(_sandbox.read(inHome("plugin_customization.ini")), "new=1\n");
    EXPECT_EQ(deployed(".keystore"), "new store");
    EXPECT_EQ(deployed("extras/extra"), "extra");
    EXPECT_EQ(launcherArguments()[10],
              "-DprovUpdateSiteListOverride=file:" + package() + "/../../updates/platform");
  }
}

TEST_F(HotfixTest, LauncherThatCannotBeStartedIsAFailedProvisioning) {
  proves("LAUNCH-7");
  _sandbox.children().failToStart(launcher());

  EXPECT_FALSE(install());

  EXPECT_THAT(linesAt(LogLevel::error),
              ElementsAre("Not able to start " + launcher() + ": No such file or directory."));
}

}  // namespace
}  // namespace installer::test
