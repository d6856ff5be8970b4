#include <gmock/gmock.h>

#include <algorithm>

#include "cli/Fixtures.h"
#include "support/Proves.h"

namespace installer::cli {
namespace {

using ::testing::AllOf;
using ::testing::Contains;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::SizeIs;
using ::testing::StartsWith;

// What the making of a service does, and the files of an instance's manifests and stamps.
class InstanceTest : public InstallerTest {
 protected:
  void nameNewLocation(const std::string& location) {
    _sandbox.writeFile(
        kConfiguration,
        xmlList(ListValue::dictionary({{"newInstallLocation", ListValue::string(location)}})));
  }

  long count(const std::string& text) const {
    const auto texts = _sandbox.texts();
    return std::count(texts.begin(), texts.end(), text);
  }

  // The value under a key of a properties file without escapes.
  std::optional<std::string> property(const std::string& file, const std::string& key) const {
    for (const std::string& line : sortedLines(_sandbox.readFile(file).value_or("")))
      if (line.rfind(key + "=", 0) == 0) return line.substr(key.size() + 1);
    return std::nullopt;
  }
};

// --- Staging -------------------------------------------------------------------------------------

TEST_F(InstanceTest, StagingFolderIsCopiedToTheNewLocation) {
  proves("INSTANCE-4");
  nameNewLocation("/opt/new");
  _sandbox.makeFolder("/opt");
  _sandbox.writeFile("/tmp/qlmcore2/a/b.txt", "staged\n", 0640);
  _sandbox.makeLink("/tmp/qlmcore2/link", "a/b.txt");

  ASSERT_EQ(0, install().status);

  EXPECT_EQ("staged\n", _sandbox.readFile("/opt/new/a/b.txt"));
  EXPECT_EQ(0640u, _sandbox.mode("/opt/new/a/b.txt"));
  EXPECT_EQ("a/b.txt", _sandbox.linkTarget("/opt/new/link"));
  EXPECT_TRUE(_sandbox.exists("/tmp/qlmcore2/a/b.txt"));
}

TEST_F(InstanceTest, NewLocationIsLoggedAtEveryService) {
  nameNewLocation("/opt/new");
  _sandbox.makeFolder("/opt");
  _sandbox.writeFile("/tmp/qlmcore2/a.txt", "staged\n");

  ASSERT_EQ(0, install().status);

  EXPECT_EQ(6, count("newInstallLocation : /opt/new."));
  EXPECT_EQ(0, count("Can not copy to newInstallLocation because its nil!"));
  EXPECT_THAT(_sandbox.texts("Error"), IsEmpty());
}

TEST_F(InstanceTest, ExistingNewLocationIsLeftExactlyAsItIsWithoutALine) {
  proves("INSTANCE-6");
  nameNewLocation("/opt/new");
  _sandbox.writeFile("/opt/new/own.txt", "own\n");
  _sandbox.writeFile("/tmp/qlmcore2/a.txt", "staged\n");
  const auto before = _sandbox.tree("/opt");

  ASSERT_EQ(0, install().status);

  EXPECT_EQ(before, _sandbox.tree("/opt"));
  EXPECT_THAT(_sandbox.texts("Error"), IsEmpty());
}

TEST_F(InstanceTest, MissingStagingFolderIsAnErrorAtEveryServiceAndTheRunGoesOn) {
  proves("INSTANCE-7");
  nameNewLocation("/opt/new");
  _sandbox.makeFolder("/opt");

  ASSERT_EQ(0, install().status);

  const auto errors = _sandbox.texts("Error");
  ASSERT_THAT(errors, SizeIs(6));
  EXPECT_THAT(errors, Each(AllOf(StartsWith("Error copying files: "), ::testing::EndsWith("."))));
  EXPECT_FALSE(_sandbox.exists("/opt/new"));
}

TEST_F(InstanceTest, NewLocationBelowAMissingFolderIsAnError) {
  proves("INSTANCE-7");
  nameNewLocation("/nowhere/new");
  _sandbox.writeFile("/tmp/qlmcore2/a.txt", "staged\n");

  ASSERT_EQ(0, install().status);

  EXPECT_THAT(_sandbox.texts("Error"), Contains(StartsWith("Error copying files: ")));
}

TEST_F(InstanceTest, NewLocationThatIsNoTextCountsAsAbsent) {
  proves("INSTANCE-4");
  _sandbox.writeFile(
      kConfiguration,
      xmlList(ListValue::dictionary({{"newInstallLocation", ListValue::integer(1)}})));

  ASSERT_EQ(0, install().status);

  EXPECT_EQ(6, count("newInstallLocation : (null)."));
}

TEST_F(InstanceTest, HomeThatCannotBeMadeIsLoggedAndEveryQueryAnswersNo) {
  proves("INSTANCE-2");
  _sandbox.remove(_instance.home());
  _sandbox.writeFile(_instance.home().substr(0, _instance.home().rfind('/')) + "/rcp/x", "");
  _sandbox.remove(_instance.bundle + "/Contents/MacOS");
  _sandbox.writeFile(_instance.bundle + "/Contents/MacOS", "a file");

  EXPECT_EQ(1, install().status);

  EXPECT_THAT(_sandbox.texts("Error"), Contains("No file at: " + _instance.home() + "!"));
  EXPECT_TRUE(_sandbox.exists(kMarker));
  EXPECT_EQ((ErrorRecord{8, {"/Applications", "Quillmere.app"}}), errorRecord());
}

TEST_F(InstanceTest, UnknownHomeIsLoggedAsNull) {
  proves("INSTANCE-3");
  EXPECT_EQ(1, _sandbox.run({"/no/package", "/Applications"}).status);

  EXPECT_EQ(2, count("The pathToRcphome is: (null)."));
  EXPECT_EQ(2, count("No file at: (null)!"));
}

TEST_F(InstanceTest, UnknownHomeStillLogsTheStagingAttempt) {
  EXPECT_EQ(1, _sandbox.run({"/no/package", "/Applications"}).status);

  EXPECT_EQ(2, count("newInstallLocation : (null)."));
  EXPECT_EQ(2, count("Can not copy to newInstallLocation because its nil!"));
}

// --- Manifests -----------------------------------------------------------------------------------

TEST_F(InstanceTest, UpdateManifestIsResolvedAndRewritten) {
  ASSERT_EQ(0, install().status);

  EXPECT_THAT(*_sandbox.readFile(_instance.deploy("install.update.xml")),
              HasSubstr("url=\"file:/Volumes/HF/install/Fix.pkg/updates\""));
}

TEST_F(InstanceTest, OldUpdateManifestIsReplacedWhole) {
  proves("MANIFEST-5");
  _sandbox.writeFile(_instance.deploy("install.update.xml"), "<old/>", 0600);

  ASSERT_EQ(0, install().status);

  EXPECT_THAT(*_sandbox.readFile(_instance.deploy("install.update.xml")), Not(HasSubstr("old")));
}

TEST_F(InstanceTest, FolderInTheUpdateManifestsPlaceIsReplaced) {
  proves("MANIFEST-5");
  _sandbox.writeFile(_instance.deploy("install.update.xml") + "/deep/x", "old");

  ASSERT_EQ(0, install().status);

  EXPECT_TRUE(_sandbox.isRegular(_instance.deploy("install.update.xml")));
}

TEST_F(InstanceTest, LinkInTheUpdateManifestsPlaceIsReplacedNotFollowed) {
  proves("MANIFEST-7");
  _sandbox.writeFile("/Users/alice/precious", "precious");
  _sandbox.makeLink(_instance.deploy("install.update.xml"), "/Users/alice/precious");

  ASSERT_EQ(0, install().status);

  EXPECT_EQ("precious", _sandbox.readFile("/Users/alice/precious"));
  EXPECT_TRUE(_sandbox.isRegular(_instance.deploy("install.update.xml")));
}

TEST_F(InstanceTest, UninstallManifestIsCopiedByteForByte) {
  const std::string bytes = "no xml ${installer.root} \xFF\x01\n\n";
  _sandbox.writeFile(_package.deployFile("uninstall.hotfix.xml"), bytes);

  ASSERT_EQ(0, install().status);

  EXPECT_EQ(bytes, _sandbox.readFile(_instance.deploy("uninstall.hotfix.xml")));
}

TEST_F(InstanceTest, OldUninstallManifestIsReplaced) {
  _sandbox.writeFile(_instance.deploy("uninstall.hotfix.xml"), "<old/>");

  ASSERT_EQ(0, install().status);

  EXPECT_EQ(kUninstallManifest, _sandbox.readFile(_instance.deploy("uninstall.hotfix.xml")));
}

TEST_F(InstanceTest, UninstallManifestThatIsAFolderIsCopiedWhole) {
  proves("MANIFEST-12");
  _sandbox.remove(_package.deployFile("uninstall.hotfix.xml"));
  _sandbox.writeFile(_package.deployFile("uninstall.hotfix.xml") + "/a", "x");

  ASSERT_EQ(0, install().status);

  EXPECT_EQ("x", _sandbox.readFile(_instance.deploy("uninstall.hotfix.xml") + "/a"));
}

TEST_F(InstanceTest, InstallManifestItselfIsNeverChanged) {
  proves("MANIFEST-4");
  ASSERT_EQ(0, install().status);

  EXPECT_EQ(kInstanceManifest, _sandbox.readFile(_instance.deploy("install.xml")));
}

TEST_F(InstanceTest, InstallManifestLostMeanwhileIsNotBackedUp) {
  proves("MANIFEST-2");
  _sandbox.script("rcplauncher", 1, ChildScript().remove(_instance.deploy("install.xml")));
  _sandbox.remove(_instance.deploy(".keystore"));

  EXPECT_EQ(0, install().status);

  EXPECT_FALSE(_sandbox.exists(_instance.deploy("install.0101200000.xml")));
}

// --- Backups -------------------------------------------------------------------------------------

TEST_F(InstanceTest, BackupIsNamedAfterTheVersionBeforeTheStamp) {
  proves("MANIFEST-1");
  ASSERT_EQ(0, install().status);

  EXPECT_EQ(kInstanceManifest, _sandbox.readFile(_instance.deploy("install.0101200000.xml")));
}

TEST_F(InstanceTest, BackupWithoutAVersionIsNamedOld) {
  _sandbox.writeFile(_instance.launcherProperties(), "x=1\n");

  ASSERT_EQ(0, install().status);

  EXPECT_EQ(kInstanceManifest, _sandbox.readFile(_instance.deploy("install.old.xml")));
}

TEST_F(InstanceTest, BackupWithAnEmptyVersionHasTwoDots) {
  _sandbox.writeFile(_instance.launcherProperties(), "provisioning.manifest.version=\n");

  ASSERT_EQ(0, install().status);

  EXPECT_EQ(kInstanceManifest, _sandbox.readFile(_instance.deploy("install..xml")));
}

TEST_F(InstanceTest, ExistingBackupIsKept) {
  _sandbox.writeFile(_instance.deploy("install.0101200000.xml"), "<older/>");

  ASSERT_EQ(0, install().status);

  EXPECT_EQ("<older/>", _sandbox.readFile(_instance.deploy("install.0101200000.xml")));
}

TEST_F(InstanceTest, DanglingLinkInTheBackupsPlaceIsKept) {
  proves("MANIFEST-1");
  _sandbox.makeLink(_instance.deploy("install.0101200000.xml"), "/nowhere");

  ASSERT_EQ(0, install().status);

  EXPECT_EQ("/nowhere", _sandbox.linkTarget(_instance.deploy("install.0101200000.xml")));
}

TEST_F(InstanceTest, WithoutLauncherPropertiesThereIsNoBackupAndNoStamp) {
  _sandbox.remove(_instance.launcherProperties());

  ASSERT_EQ(0, install().status);

  EXPECT_FALSE(_sandbox.exists(_instance.launcherProperties()));
  EXPECT_FALSE(_sandbox.exists(_instance.deploy("install.old.xml")));
  EXPECT_EQ("rcp.install.id=0101200000\n", _sandbox.readFile(_instance.installProperties()));
}

TEST_F(InstanceTest, DoubledRunBacksUpUnderTheFirstStampToo) {
  const StampWatch watch;
  _sandbox.remove(_instance.data() + "/.config");

  ASSERT_EQ(0, install().status);

  std::vector<std::string> stamps;
  for (const std::string& name : _sandbox.list(_instance.deploy("")))
    if (name.size() == 22 && name != "install.0101200000.xml") stamps.push_back(name.substr(8, 10));
  ASSERT_THAT(stamps, SizeIs(1));
  EXPECT_TRUE(watch.covers(stamps[0]));
}

// --- Stamps --------------------------------------------------------------------------------------

TEST_F(InstanceTest, NewManifestVersionIsStampedAndOthersAreKept) {
  proves("STAMP-3");
  const StampWatch watch;

  ASSERT_EQ(0, install().status);

  const auto version = property(_instance.launcherProperties(), "provisioning.manifest.version");
  ASSERT_TRUE(version.has_value());
  EXPECT_TRUE(watch.covers(*version)) << *version;
  EXPECT_EQ("0101200000", property(_instance.launcherProperties(), "rcp.install.id"));
  EXPECT_EQ("${env.HOME}/workspace", property(_instance.launcherProperties(), "rcp.data"));
}

TEST_F(InstanceTest, StampFollowsTheProcessesTimeZone) {
  proves("STAMP-1");
  // A zone more than a day's half away from the others' hour.
  RunOptions options;
  options.set("TZ", "XXX-9:30");
  const std::time_t before = std::time(nullptr);

  ASSERT_EQ(0, install(options).status);

  const auto version = property(_instance.launcherProperties(), "provisioning.manifest.version");
  const std::time_t shift = 9 * 3600 + 30 * 60;
  EXPECT_THAT(*version,
              ::testing::AnyOf(stampOf(before + shift), stampOf(std::time(nullptr) + shift)));
}

TEST_F(InstanceTest, InstallIdFollowsTheVersionThatTheUntouchedInstanceHad) {
  _sandbox.writeFile(_instance.launcherProperties(),
                     "provisioning.manifest.version=1234567890\nrcp.install.id=old\n");
  _sandbox.writeFile(_instance.installProperties(), "rcp.install.id=older\nk=v\n");

  ASSERT_EQ(0, install().status);

  EXPECT_EQ("1234567890", property(_instance.launcherProperties(), "rcp.install.id"));
  EXPECT_EQ("k=v\nrcp.install.id=1234567890\n", [&] {
    std::string text;
    for (const auto& line : sortedLines(*_sandbox.readFile(_instance.installProperties())))
      text += line + "\n";
    return text;
  }());
}

TEST_F(InstanceTest, InstallIdIsSetAfterTheUntouchedInstancesRun) {
  proves("SUCCESS-2");
  _sandbox.writeFile(_instance.installProperties(), "rcp.install.id=old\n");
  _sandbox.script(
      "rcplauncher", 1,
      ChildScript()
          .snapshot(_instance.installProperties())
          .write(_instance.launcherProperties(), "provisioning.manifest.version=7777777777\n"));

  ASSERT_EQ(0, install().status);

  EXPECT_EQ("rcp.install.id=old\n",
            _sandbox.children("rcplauncher").at(0).fileAt(_instance.installProperties()));
  EXPECT_EQ("rcp.install.id=7777777777\n", _sandbox.readFile(_instance.installProperties()));
}

TEST_F(InstanceTest, InstallIdInTheGivenDataIsSet) {
  proves("STAMP-4");
  _sandbox.writeFile("/Users/alice/ws/.config/rcpinstall.properties", "rcp.install.id=old\n");

  ASSERT_EQ(0, installWithData("/Users/alice/ws").status);

  EXPECT_EQ("rcp.install.id=0101200000\n",
            _sandbox.readFile("/Users/alice/ws/.config/rcpinstall.properties"));
}

TEST_F(InstanceTest, WithoutInstallPropertiesTheLaunchersIdStays) {
  _sandbox.remove(_instance.installProperties());
  _sandbox.makeFolder(_instance.data() + "/.config");
  _sandbox.writeFile(_instance.launcherProperties(),
                     "provisioning.manifest.version=1\nrcp.install.id=2\n");

  ASSERT_EQ(0, install().status);

  EXPECT_EQ("2", property(_instance.launcherProperties(), "rcp.install.id"));
  EXPECT_FALSE(_sandbox.exists(_instance.installProperties()));
}

TEST_F(InstanceTest, AbsentVersionIsRefusedAsAnIdAndBothFilesKeepTheirs) {
  proves("STAMP-5");
  _sandbox.writeFile(_instance.launcherProperties(), "rcp.install.id=2\n");
  _sandbox.writeFile(_instance.installProperties(), "rcp.install.id=3\n");

  ASSERT_EQ(0, install().status);

  EXPECT_EQ("2", property(_instance.launcherProperties(), "rcp.install.id"));
  EXPECT_EQ("rcp.install.id=3\n", _sandbox.readFile(_instance.installProperties()));
  EXPECT_THAT(_sandbox.texts("Error"), SizeIs(2)) << "one refusal for each file";
}

TEST_F(InstanceTest, FailurePathStampsTheLaunchersIdOnly) {
  proves("FAILURE-2");
  const StampWatch watch;
  _sandbox.remove(_instance.deploy("install.xml"));

  ASSERT_EQ(1, install().status);

  const auto id = property(_instance.launcherProperties(), "rcp.install.id");
  ASSERT_TRUE(id.has_value());
  EXPECT_TRUE(watch.covers(*id)) << *id;
  EXPECT_EQ("0101200000",
            property(_instance.launcherProperties(), "provisioning.manifest.version"));
  EXPECT_EQ("rcp.install.id=0101200000\n", _sandbox.readFile(_instance.installProperties()));
}

TEST_F(InstanceTest, FailurePathStampsBetweenCleanUpAndUpdate) {
  proves("FAILURE-2");
  _sandbox.remove(_instance.deploy("install.xml"));
  _sandbox.script("rcplauncher", ChildScript().snapshot(_instance.launcherProperties()));

  ASSERT_EQ(1, install().status);

  const auto launches = _sandbox.children("rcplauncher");
  EXPECT_THAT(*launches.at(0).fileAt(_instance.launcherProperties()),
              HasSubstr("rcp.install.id=0101200000\n"));
  EXPECT_THAT(*launches.at(1).fileAt(_instance.launcherProperties()),
              Not(HasSubstr("rcp.install.id=0101200000\n")));
}

TEST_F(InstanceTest, FailurePathWithoutLauncherPropertiesMakesNone) {
  proves("FAILURE-4");
  _sandbox.remove(_instance.deploy("install.xml"));
  _sandbox.remove(_instance.launcherProperties());

  ASSERT_EQ(1, install().status);

  EXPECT_FALSE(_sandbox.exists(_instance.launcherProperties()));
}

TEST_F(InstanceTest, FailurePathCopiesNothingOfTheHotfix) {
  proves("FAILURE-4");
  recordHotfix("9");

  ASSERT_EQ(1, install().status);

  EXPECT_EQ("old key\n", _sandbox.readFile(_instance.deploy(".keystore")));
  EXPECT_EQ("a=1\nb=2\n", _sandbox.readFile(_instance.customization()));
  EXPECT_FALSE(_sandbox.exists(_instance.deploy("extras")));
  EXPECT_EQ("9", recorded("hotfixVersion"));
}

}  // namespace
}  // namespace installer::cli
