#include <gmock/gmock.h>

#include <algorithm>

#include "cli/Fixtures.h"
#include "support/Proves.h"

namespace installer::cli {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::SizeIs;
using ::testing::StartsWith;

// The install workflow: its steps, their order, their defaults and failures.
class WorkflowTest : public InstallerTest {
 protected:
  std::vector<ChildRecord> launches() const { return _sandbox.children("rcplauncher"); }

  ChildScript watching(const std::vector<std::string>& paths) const {
    ChildScript script;
    for (const std::string& path : paths) script.snapshot(path);
    script.write(_instance.result(), "rc=0\n");
    return script;
  }
};

// --- Order ---------------------------------------------------------------------------------------

TEST_F(WorkflowTest, NothingOfTheHotfixIsThereBeforeTheUntouchedInstancesRun) {
  proves("SUCCESS-2");
  const auto before = _sandbox.tree(_instance.home());
  _sandbox.script("rcplauncher", 1,
                  watching({_instance.deploy(""), _instance.deploy(".keystore"),
                            _instance.customization(), _instance.launcherProperties()}));

  ASSERT_EQ(0, install().status);

  const ChildRecord first = launches().at(0);
  EXPECT_EQ("D.keystore\ninstall.xml\n", first.snapshots.at(_instance.deploy("")));
  EXPECT_EQ("old key\n", first.fileAt(_instance.deploy(".keystore")));
  EXPECT_EQ("a=1\nb=2\n", first.fileAt(_instance.customization()));
  EXPECT_THAT(*first.fileAt(_instance.launcherProperties()), StartsWith("# launcher\n"));
}

TEST_F(WorkflowTest, EverythingButTheRecordsIsThereBeforeTheHotfixRun) {
  proves("INSTALL-1");
  const StampWatch watch;
  _sandbox.script(
      "rcplauncher", 2,
      watching({_instance.deploy(""), _instance.deploy(".keystore"),
                _instance.deploy("install.update.xml"), _instance.deploy("uninstall.hotfix.xml"),
                _instance.deploy("install.0101200000.xml"), _instance.deploy("extras/readme.txt"),
                _instance.customization(), _instance.launcherProperties(), _instance.info(),
                kConfiguration}));

  ASSERT_EQ(0, install().status);

  const ChildRecord run = launches().at(1);
  EXPECT_EQ("new key\n", run.fileAt(_instance.deploy(".keystore")));
  EXPECT_THAT(*run.fileAt(_instance.deploy("install.update.xml")),
              HasSubstr("file:/Volumes/HF/install/Fix.pkg/updates"));
  EXPECT_EQ(kUninstallManifest, run.fileAt(_instance.deploy("uninstall.hotfix.xml")));
  EXPECT_EQ(kInstanceManifest, run.fileAt(_instance.deploy("install.0101200000.xml")));
  EXPECT_EQ("extra\n", run.fileAt(_instance.deploy("extras/readme.txt")));
  EXPECT_EQ("a=1\nb=3\nc=4\n", run.fileAt(_instance.customization()));
  EXPECT_THAT(*run.fileAt(_instance.launcherProperties()),
              Not(HasSubstr("provisioning.manifest.version=0101200000")));
  EXPECT_EQ("A", run.snapshots.at(_instance.info()));
  EXPECT_EQ("A", run.snapshots.at(kConfiguration));
}

TEST_F(WorkflowTest, RecordsOfTheInstallComeAfterTheHotfixRun) {
  proves("INSTALL-1");
  ASSERT_EQ(0, install().status);

  const ListValue info = listAt(_instance.info());
  EXPECT_THAT(info.keys(),
              ElementsAre("hotfixVersion", "SKIPRUNNINGCHECK", "installedHotfixBundleID"));
  EXPECT_EQ("1.5", info.stringAt("hotfixVersion"));
  EXPECT_EQ("false", info.stringAt("SKIPRUNNINGCHECK"));
  EXPECT_EQ("com.kiv.hotfix.fifteen", info.stringAt("installedHotfixBundleID"));
}

// --- Defaults and variables ----------------------------------------------------------------------

TEST_F(WorkflowTest, OwnManifestMovesKeyStoreAndExtrasAlong) {
  proves("PACKAGE-7");
  _package.set("pathToHotfixManifest", "/x/y/install.hotfix.xml");
  writePreferences();
  _sandbox.writeFile("/x/y/install.hotfix.xml", kSimpleManifest);
  _sandbox.writeFile("/x/y/.keystore", "moved key\n");
  _sandbox.writeFile("/x/y/extras/moved.txt", "moved\n");

  ASSERT_EQ(0, install().status);

  EXPECT_EQ("moved key\n", _sandbox.readFile(_instance.deploy(".keystore")));
  EXPECT_THAT(_sandbox.list(_instance.deploy("extras")), ElementsAre("moved.txt"));
  EXPECT_THAT(_sandbox.texts(), Contains(".keystore source files are in /x/y."));
  EXPECT_THAT(_sandbox.texts(), Contains("Begin to copy files from /x/y/extras to " +
                                         _instance.deploy("extras") + " "));
}

TEST_F(WorkflowTest, OwnKeyStoreAndExtrasStayWhereTheyAreNamed) {
  proves("PACKAGE-7");
  _package.set("keystore", "/k").set("extras", "${package}/more");
  writePreferences();
  _sandbox.writeFile("/k/.keystore", "named key\n");
  _sandbox.writeFile(_package.folder + "/more/named.txt", "named\n");

  ASSERT_EQ(0, install().status);

  EXPECT_EQ("named key\n", _sandbox.readFile(_instance.deploy(".keystore")));
  EXPECT_THAT(_sandbox.list(_instance.deploy("extras")), ElementsAre("named.txt"));
}

class EmptyPreferenceTest : public InstallerTest,
                            public ::testing::WithParamInterface<std::string> {
 protected:
  void expectDefaults() const {
    EXPECT_EQ("a=1\nb=3\nc=4\n", _sandbox.readFile(_instance.customization()));
    EXPECT_EQ("new key\n", _sandbox.readFile(_instance.deploy(".keystore")));
    EXPECT_EQ("extra\n", _sandbox.readFile(_instance.deploy("extras/readme.txt")));
    EXPECT_EQ(kUninstallManifest, _sandbox.readFile(_instance.deploy("uninstall.hotfix.xml")));
    EXPECT_THAT(_sandbox.readFile(_instance.deploy("install.update.xml")).value_or(""),
                HasSubstr("file:" + _package.folder + "/updates"));
    EXPECT_THAT(_sandbox.children("rcplauncher").at(1).arguments,
                Contains("-DprovUpdateSiteListOverride=file:" + _package.folder +
                         "/../../updates/platform"));
  }
};

TEST_P(EmptyPreferenceTest, GetsItsDefault) {
  proves("PACKAGE-5", "PACKAGE-6");
  _package.set(GetParam(), "");
  writePreferences();

  ASSERT_EQ(0, install().status);

  expectDefaults();
}

TEST_P(EmptyPreferenceTest, OfAnotherTypeGetsItsDefaultToo) {
  proves("PACKAGE-6");
  _package.set(GetParam(), ListValue::integer(3));
  writePreferences();

  ASSERT_EQ(0, install().status);

  expectDefaults();
}

INSTANTIATE_TEST_SUITE_P(Keys, EmptyPreferenceTest,
                         ::testing::Values("pathToHotfixManifest", "pathToHotfixUninstallManifest",
                                           "pathToPluginCustomization", "updateSiteList",
                                           "keystore", "extras"),
                         [](const auto& given) { return given.param; });

TEST_F(WorkflowTest, EveryOccurrenceOfThePackageVariableIsReplaced) {
  proves("PACKAGE-8");
  _package.set("pathToPluginCustomization", "${package}/a${package}/b.ini");
  writePreferences();
  _sandbox.writeFile(_package.folder + "/a" + _package.folder + "/b.ini", "z=9\n");

  ASSERT_EQ(0, install().status);

  EXPECT_EQ("a=1\nb=2\nz=9\n", _sandbox.readFile(_instance.customization()));
}

TEST_F(WorkflowTest, VariableInTheVersionIsReplacedInTheRecord) {
  proves("PACKAGE-8");
  _package.set("version", "${package}");
  writePreferences();

  ASSERT_EQ(0, install().status);

  EXPECT_EQ(_package.folder, recorded("hotfixVersion"));
}

TEST_F(WorkflowTest, OtherVariablesAndCapitalsAreLeft) {
  proves("PACKAGE-8");
  _package.set("pathToPluginCustomization", "${PACKAGE}/b.ini");
  writePreferences();

  ASSERT_EQ(0, install().status);

  EXPECT_EQ("a=1\nb=2\n", _sandbox.readFile(_instance.customization()));
}

TEST_F(WorkflowTest, PackagePathWithATrailingSlashWorks) {
  proves("PACKAGE-8");
  EXPECT_EQ(0, _sandbox.run({_package.folder + "/", _destination}).status);

  EXPECT_EQ("new key\n", _sandbox.readFile(_instance.deploy(".keystore")));
  EXPECT_EQ("com.kiv.hotfix.fifteen", recorded("installedHotfixBundleID"));
}

// --- Failures ------------------------------------------------------------------------------------

TEST_F(WorkflowTest, MissingManifestStopsBeforeAnythingElse) {
  proves("INSTALL-8");
  _sandbox.remove(_package.deployFile("install.hotfix.xml"));

  EXPECT_EQ(1, install().status);

  EXPECT_EQ((ErrorRecord{4, {"/Volumes/HF/install/Fix.pkg/../deploy/install.hotfix.xml"}}),
            errorRecord());
  EXPECT_THAT(_sandbox.texts(), Not(Contains("Copy install manifest.")));
  EXPECT_EQ("old key\n", _sandbox.readFile(_instance.deploy(".keystore")));
  EXPECT_THAT(launches(), SizeIs(1));
  EXPECT_FALSE(_sandbox.exists(kConfiguration));
  EXPECT_FALSE(_sandbox.exists(_instance.info()));
}

TEST_F(WorkflowTest, FailedWorkflowStillCollectsTheLogs) {
  proves("SUCCESS-7");
  installJava();
  _sandbox.remove(_package.deployFile("install.hotfix.xml"));

  EXPECT_EQ(1, install().status);

  EXPECT_THAT(_sandbox.children("java"), SizeIs(1));
}

TEST_F(WorkflowTest, FailedWorkflowCleansNothingUp) {
  proves("SUCCESS-7");
  _sandbox.remove(_package.deployFile("install.hotfix.xml"));

  EXPECT_EQ(1, install().status);

  for (const ChildRecord& launch : launches())
    EXPECT_THAT(launch.arguments, Not(Contains("cleanup")));
  EXPECT_FALSE(_sandbox.exists(kMarker));
}

TEST_F(WorkflowTest, MalformedManifestIsCopiedAndStopsTheWorkflow) {
  proves("INSTALL-8");
  _sandbox.writeFile(_package.deployFile("install.hotfix.xml"), "<a url='${installer.root}'>");

  EXPECT_EQ(1, install().status);

  EXPECT_EQ((ErrorRecord{4, {"install.hotfix.xml"}}), errorRecord());
  EXPECT_EQ("<a url='${installer.root}'>",
            _sandbox.readFile(_instance.deploy("install.update.xml")));
}

TEST_F(WorkflowTest, MissingOptionalFilesDoNotStopTheInstall) {
  proves("INSTALL-10");
  for (const char* name :
       {"uninstall.hotfix.xml", "plugin_customization.ini", ".keystore", "extras"})
    _sandbox.remove(_package.deployFile(name));

  EXPECT_EQ(0, install().status);

  EXPECT_FALSE(_sandbox.exists(_instance.deploy("uninstall.hotfix.xml")));
  EXPECT_EQ("a=1\nb=2\n", _sandbox.readFile(_instance.customization()));
  EXPECT_FALSE(_sandbox.exists(_instance.deploy(".keystore")));
  EXPECT_FALSE(_sandbox.exists(_instance.deploy("extras")));
  EXPECT_THAT(_sandbox.texts("Warning"),
              Not(Contains("Not able to copy hotfix uninstall manifest.")));
}

TEST_F(WorkflowTest, UninstallManifestThatCannotBeCopiedIsAWarning) {
  proves("INSTALL-9");
  _sandbox.remove(_package.deployFile("uninstall.hotfix.xml"));
  _sandbox.makePipe(_package.deployFile("uninstall.hotfix.xml"));

  EXPECT_EQ(0, install().status);

  EXPECT_THAT(_sandbox.texts("Warning"), Contains("Not able to copy hotfix uninstall manifest."));
}

TEST_F(WorkflowTest, FailedProvisioningStillStoresPolicyBundleAndConfiguration) {
  proves("INSTALL-3");
  writeInfo({{"version", ListValue::string("8.5.2")}});
  _sandbox.script("rcplauncher", ChildScript().write(_instance.result(), "rc=1\n"));

  EXPECT_EQ(1, install().status);

  EXPECT_EQ(std::nullopt, recorded("hotfixVersion"));
  EXPECT_EQ("false", recorded("SKIPRUNNINGCHECK"));
  EXPECT_EQ("com.kiv.hotfix.fifteen", recorded("installedHotfixBundleID"));
  EXPECT_EQ(_instance.home(), listAt(kConfiguration).stringAt("pathToRcpHome"));
  EXPECT_THAT(_sandbox.texts(), Not(Contains("Begin to update new hotfix version.")));
}

TEST_F(WorkflowTest, FailedProvisioningStillRestoresPermissions) {
  proves("INSTALL-3");
  _sandbox.setMode(_instance.customization(), 0600);
  _sandbox.script("rcplauncher", ChildScript().write(_instance.result(), "rc=1\n"));

  EXPECT_EQ(1, install().status);

  EXPECT_EQ(0775u, _sandbox.mode(_instance.customization()));
}

// --- The doubled run -----------------------------------------------------------------------------

class DoubledRunTest : public WorkflowTest {
 protected:
  void SetUp() override {
    WorkflowTest::SetUp();
    _sandbox.remove(_instance.data() + "/.config");
  }
};

TEST_F(DoubledRunTest, SecondAnswerDecidesForFailure) {
  proves("SUCCESS-4");
  _sandbox.script("rcplauncher", 3, ChildScript().write(_instance.result(), "rc=1\n"));

  EXPECT_EQ(1, install().status);

  EXPECT_EQ("1.5", recorded("hotfixVersion")) << "recorded by the first";
}

TEST_F(DoubledRunTest, SecondAnswerDecidesForSuccess) {
  proves("SUCCESS-4");
  _sandbox.script("rcplauncher", 2, ChildScript().write(_instance.result(), "rc=1\n"));

  EXPECT_EQ(0, install().status);

  EXPECT_EQ("1.5", recorded("hotfixVersion"));
}

TEST_F(DoubledRunTest, StopsAtAMissingManifestAndSaysThatItIsToInstallTwice) {
  proves("INSTALL-6");
  _sandbox.remove(_package.deployFile("install.hotfix.xml"));
  const auto before = _sandbox.tree(_instance.deploy(""));

  EXPECT_EQ(1, install().status);

  EXPECT_THAT(launches(), SizeIs(1));
  EXPECT_EQ((ErrorRecord{4, {_package.deploy("install.hotfix.xml")}}), errorRecord());
  EXPECT_EQ(before, _sandbox.tree(_instance.deploy("")));
  EXPECT_THAT(
      _sandbox.texts(),
      Contains("Hot fix workspace flag file is missing, launching install new hotfix twice"));
}

TEST_F(DoubledRunTest, StopsTwiceAtAManifestThatIsNone) {
  proves("INSTALL-7");
  _sandbox.writeFile(_package.deployFile("install.hotfix.xml"), "<open>");

  EXPECT_EQ(1, install().status);

  EXPECT_THAT(launches(), SizeIs(1));
  EXPECT_EQ((ErrorRecord{4, {"install.hotfix.xml"}}), errorRecord());
  const auto texts = _sandbox.texts();
  EXPECT_EQ(2,
            std::count(texts.begin(), texts.end(),
                       "Copy install manifest to " + _instance.deploy("install.update.xml") + "."));
}

TEST_F(DoubledRunTest, MakesOneServiceForBoth) {
  proves("SUCCESS-6");
  ASSERT_EQ(0, install().status);

  const auto texts = _sandbox.texts();
  EXPECT_EQ(
      6, std::count(texts.begin(), texts.end(), "The pathToRcphome is: " + _instance.home() + "."));
}

TEST_F(DoubledRunTest, FlagMadeByTheUntouchedInstancesRunPreventsIt) {
  proves("SUCCESS-5");
  _sandbox.makeFolder(_instance.data());
  _sandbox.script("rcplauncher", 1, ChildScript().folder(_instance.data() + "/.config"));

  EXPECT_EQ(0, install().status);

  EXPECT_THAT(launches(), SizeIs(2));
}

TEST_F(DoubledRunTest, FlagMadeByTheFirstWorkflowDoesNotPreventTheSecond) {
  proves("SUCCESS-5");
  _sandbox.makeFolder(_instance.data());
  _sandbox.script(
      "rcplauncher", 2,
      ChildScript().folder(_instance.data() + "/.config").write(_instance.result(), "rc=0\n"));

  EXPECT_EQ(0, install().status);

  EXPECT_THAT(launches(), SizeIs(3));
}

TEST_F(DoubledRunTest, FileAsFlagCounts) {
  proves("SUCCESS-5");
  _sandbox.writeFile(_instance.data() + "/.config", "");

  EXPECT_EQ(0, install().status);

  EXPECT_THAT(launches(), SizeIs(2));
}

TEST_F(DoubledRunTest, FlagIsLookedForInTheGivenData) {
  proves("SUCCESS-5");
  _sandbox.makeFolder("/Users/alice/ws/.config");

  EXPECT_EQ(0, installWithData("/Users/alice/ws").status);

  EXPECT_THAT(launches(), SizeIs(2));
}

TEST_F(DoubledRunTest, FlagBelowTheHomeDoesNotCountForGivenData) {
  proves("SUCCESS-5");
  _sandbox.makeFolder(_instance.data() + "/.config");

  EXPECT_EQ(0, installWithData("/Users/alice/ws").status);

  EXPECT_THAT(launches(), SizeIs(3));
}

TEST_F(DoubledRunTest, LeavesTheSameInstanceAsASingleOne) {
  proves("SUCCESS-6");
  ASSERT_EQ(0, install().status);

  EXPECT_EQ("a=1\nb=3\nc=4\n", _sandbox.readFile(_instance.customization()));
  EXPECT_EQ("new key\n", _sandbox.readFile(_instance.deploy(".keystore")));
  EXPECT_EQ("1.5", recorded("hotfixVersion"));
  EXPECT_EQ("com.kiv.hotfix.fifteen", recorded("installedHotfixBundleID"));
}

// --- Result panel --------------------------------------------------------------------------------

TEST_F(WorkflowTest, ConfigurationNamesDataAndHome) {
  proves("INSTALL-14");
  ASSERT_EQ(0, installWithData("/Users/alice/ws").status);

  const ListValue configuration = listAt(kConfiguration);
  EXPECT_THAT(configuration.keys(), ElementsAre("P_RCPDATA", "pathToRcpHome"));
  EXPECT_EQ("/Users/alice/ws", configuration.stringAt("P_RCPDATA"));
  EXPECT_EQ(_instance.home(), configuration.stringAt("pathToRcpHome"));
}

TEST_F(WorkflowTest, ConfigurationKeepsWhatOthersLeft) {
  proves("INSTALL-14");
  _sandbox.writeFile(
      kConfiguration,
      xmlList(ListValue::dictionary({{"productName", ListValue::string("Quillmere")},
                                     {"P_RCPDATA", ListValue::string("/old")},
                                     {"flags", ListValue::array({ListValue::boolean(true)})}})));

  ASSERT_EQ(0, install().status);

  const ListValue configuration = listAt(kConfiguration);
  EXPECT_THAT(configuration.keys(),
              ElementsAre("productName", "P_RCPDATA", "flags", "pathToRcpHome"));
  EXPECT_EQ("Quillmere", configuration.stringAt("productName"));
  EXPECT_EQ(_instance.data(), configuration.stringAt("P_RCPDATA"));
  EXPECT_EQ(ListValue::array({ListValue::boolean(true)}), *configuration.find("flags"));
}

TEST_F(WorkflowTest, StalePanelFileIsRemoved) {
  proves("INSTALL-14");
  _sandbox.writeFile("/tmp/qlm.config", "old");

  ASSERT_EQ(0, install().status);

  EXPECT_FALSE(_sandbox.exists("/tmp/qlm.config"));
}

TEST_F(WorkflowTest, StalePanelFileStaysWhenTheWorkflowStops) {
  proves("INSTALL-8");
  _sandbox.writeFile("/tmp/qlm.config", "old");
  _sandbox.remove(_package.deployFile("install.hotfix.xml"));

  EXPECT_EQ(1, install().status);

  EXPECT_EQ("old", _sandbox.readFile("/tmp/qlm.config"));
}

TEST_F(WorkflowTest, StalePanelFileStaysWhenACheckFails) {
  proves("INSTALL-14");
  _sandbox.writeFile("/tmp/qlm.config", "old");
  _sandbox.remove(_instance.deploy("install.xml"));

  EXPECT_EQ(1, install().status);

  EXPECT_EQ("old", _sandbox.readFile("/tmp/qlm.config"));
}

// --- Recorded bundle identifier ------------------------------------------------------------------

TEST_F(WorkflowTest, PackageWithoutInfoListRecordsNoIdentifier) {
  proves("INSTALL-12");
  _sandbox.remove(_package.folder + "/Contents/Info.plist");

  ASSERT_EQ(0, install().status);

  EXPECT_EQ(std::nullopt, recorded("installedHotfixBundleID"));
}

TEST_F(WorkflowTest, PackageWithoutIdentifierDropsAnOlderOne) {
  proves("INSTALL-12");
  writeInfo({{"installedHotfixBundleID", ListValue::string("old")}});
  _sandbox.writeFile(_package.folder + "/Contents/Info.plist", xmlList(ListValue::dictionary({})));

  ASSERT_EQ(0, install().status);

  EXPECT_EQ(std::nullopt, recorded("installedHotfixBundleID"));
}

TEST_F(WorkflowTest, BinaryInfoListOfThePackageIsRead) {
  proves("INSTALL-12");
  _sandbox.writeFile(_package.folder + "/Contents/Info.plist",
                     binaryList(ListValue::dictionary(
                         {{"CFBundleIdentifier", ListValue::string("com.kiv.binary")}})));

  ASSERT_EQ(0, install().status);

  EXPECT_EQ("com.kiv.binary", recorded("installedHotfixBundleID"));
}

TEST_F(WorkflowTest, OtherRecordsSurviveInValueAndOrder) {
  proves("INFO-2");
  writeInfo({{"z", ListValue::integer(-5)},
             {"version", ListValue::string("8.5.2")},
             {"when", ListValue::other("date", "2012-11-15T12:00:00Z")},
             {"bytes", ListValue::other("data", "AAEC")},
             {"share", ListValue::other("real", "0.5")},
             {"nested", ListValue::dictionary({{"list", ListValue::array({ListValue::string("x"),
                                                                          ListValue::integer(1)})},
                                               {"a<b", ListValue::string("&\"'")}})},
             {"yes", ListValue::boolean(true)}});

  ASSERT_EQ(0, install().status);

  const ListValue info = listAt(_instance.info());
  EXPECT_THAT(info.keys(),
              ElementsAre("z", "version", "when", "bytes", "share", "nested", "yes",
                          "hotfixVersion", "SKIPRUNNINGCHECK", "installedHotfixBundleID"));
  EXPECT_EQ("-5", info.find("z")->text);
  EXPECT_EQ("2012-11-15T12:00:00Z", info.find("when")->text);
  EXPECT_THAT(info.find("bytes")->text, HasSubstr("AAEC"));
  EXPECT_EQ("0.5", info.find("share")->text);
  const ListValue* nested = info.find("nested");
  EXPECT_EQ("&\"'", nested->stringAt("a<b"));
  EXPECT_EQ(ListValue::array({ListValue::string("x"), ListValue::integer(1)}),
            *nested->find("list"));
}

}  // namespace
}  // namespace installer::cli
