#include <gmock/gmock.h>

#include <csignal>

#include "cli/Fixtures.h"
#include "support/Proves.h"

namespace installer::cli {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

// What a run does about files that fail it, and what it tells of them.
class FailureTest : public InstallerTest {
 protected:
  static std::string told(const std::string& path, const std::string& rest) {
    return "\"" + path + "\" cannot be " + rest;
  }
  static std::string copyTold(const std::string& from, const std::string& to,
                              const std::string& reason) {
    return told(from, "copied to \"" + to + "\": " + reason);
  }

  std::vector<std::string> errors() const { return _sandbox.texts("Error"); }

  // From now on the folder, or the file that was there, can be neither removed nor replaced.
  void pinDown(const std::string& path) {
    _sandbox.remove(path);
    _sandbox.makeFolder(path);
    _sandbox.limitSpace(path, 64 << 10);
  }

  // The home on a disk of its own that has room for the instance and little more.
  void putHomeOnASmallDisk() {
    _sandbox.remove(_instance.bundle);
    _sandbox.makeFolder(_instance.home());
    _sandbox.limitSpace(_instance.home(), 256 << 10);
    buildInstance(_instance);
  }

  // What the launcher does when it installs the hotfix: the second start of a plain run.
  void hotfixRun(const ChildScript& script) { _sandbox.script("rcplauncher", 2, script); }
};

TEST_F(FailureTest, PlainRunTellsOfNone) {
  proves("FILES-21");
  recordHotfix("1.4");

  EXPECT_EQ(0, install().status);

  EXPECT_THAT(errors(), IsEmpty());
}

// --- A record that cannot be read ----------------------------------------------------------------

TEST_F(FailureTest, RecordThatCannotBeLookedAtStaysAndIsToldOnce) {
  proves("INFO-6", "FILES-21");
  _sandbox.makeLink(_instance.info(), _instance.info());

  EXPECT_EQ(0, install().status);

  EXPECT_TRUE(_sandbox.isLink(_instance.info()));
  EXPECT_THAT(errors(),
              ElementsAre(told(_instance.info(), "read: Too many levels of symbolic links")));
}

TEST_F(FailureTest, DamagedRecordStaysAndIsToldOnce) {
  proves("INFO-6", "FILES-21");
  _sandbox.writeFile(_instance.info(), "half an edit <dict>");

  EXPECT_EQ(0, install().status);

  EXPECT_EQ("half an edit <dict>", _sandbox.readFile(_instance.info()));
  EXPECT_THAT(errors(),
              ElementsAre(told(_instance.info(), "read: No property list with a dictionary")));
}

TEST_F(FailureTest, SettingsThatCannotBeReadStayAndAreToldOnce) {
  proves("STAMP-6", "FILES-21");
  _sandbox.remove(_instance.launcherProperties());
  _sandbox.makeFolder(_instance.launcherProperties());

  EXPECT_EQ(0, install().status);

  EXPECT_TRUE(_sandbox.isFolder(_instance.launcherProperties()));
  EXPECT_THAT(errors(), ElementsAre(told(_instance.launcherProperties(), "read: Is a directory")));
}

// --- A manifest that cannot be replaced ----------------------------------------------------------

TEST_F(FailureTest, ManifestThatStaysInTheWayStopsTheInstallationWithItsReason) {
  proves("MANIFEST-13", "INSTALL-7");
  const std::string target = _instance.deploy("install.update.xml");
  pinDown(target);

  EXPECT_EQ(1, install().status);

  EXPECT_EQ((ErrorRecord{4, {"install.hotfix.xml"}}), errorRecord());
  EXPECT_EQ(std::nullopt, recorded("hotfixVersion"));
  EXPECT_EQ(1U, _sandbox.children("rcplauncher").size()) << "the update before the installation";
  EXPECT_THAT(errors(), ElementsAre(copyTold(_package.deploy("install.hotfix.xml"), target,
                                             "Device or resource busy")));
}

TEST_F(FailureTest, RemovalThatCannotStartConsumesNothing) {
  proves("REMOVE-10");
  const std::string target = _instance.deploy("install.update.xml");
  recordHotfix("1.4");
  pinDown(target);

  EXPECT_EQ(1, install().status);

  EXPECT_EQ("1.4", recorded("hotfixVersion"));
  EXPECT_EQ(kUninstallManifest, _sandbox.readFile(_instance.deploy("uninstall.hotfix.xml")));
  EXPECT_EQ(1U, _sandbox.children("rcplauncher").size()) << "the update before the installation";
  EXPECT_THAT(errors(), Contains(copyTold(_instance.deploy("uninstall.hotfix.xml"), target,
                                          "Device or resource busy")));
}

TEST_F(FailureTest, UninstallManifestThatStaysInTheWayIsNotTakenForTheNewOne) {
  proves("INSTALL-9", "MANIFEST-12");
  pinDown(_instance.deploy("uninstall.hotfix.xml"));

  EXPECT_EQ(0, install().status);

  EXPECT_THAT(_sandbox.texts("Warning"), Contains("Not able to copy hotfix uninstall manifest."));
  EXPECT_THAT(errors(), IsEmpty());
}

// --- A disk that takes nothing -------------------------------------------------------------------

TEST_F(FailureTest, RecordThatCannotBeWrittenIsToldOnce) {
  proves("INFO-6", "FILES-21");
  putHomeOnASmallDisk();
  hotfixRun(ChildScript()
                .write(_instance.home() + "/filler", std::string(512 << 10, 'x'))
                .write(_instance.result(), "rc=0\n"));

  EXPECT_EQ(0, install().status);

  EXPECT_FALSE(_sandbox.exists(_instance.info()));
  EXPECT_THAT(errors(), ElementsAre(told(_instance.info(), "written: No space left on device")));
}

TEST_F(FailureTest, ManifestThatCannotBeWrittenIsToldWithThePathsAndTheReason) {
  proves("MANIFEST-8", "FILES-21");
  putHomeOnASmallDisk();
  _sandbox.fillSpace(_instance.home());

  EXPECT_EQ(1, install().status);

  EXPECT_THAT(errors(), Contains(copyTold(_package.deploy("install.hotfix.xml"),
                                          _instance.deploy("install.update.xml"),
                                          "No space left on device")));
}

TEST_F(FailureTest, CustomizationKeyStoresAndExtrasThatCannotBeWrittenAreNotTold) {
  proves("FILES-21", "SETTINGS-5");
  putHomeOnASmallDisk();
  // The manifests still fit; then the launcher's own settings and all that follows do not.
  _sandbox.writeFile(_package.deployFile("plugin_customization.ini"),
                     "x=" + std::string(512 << 10, 'x') + "\n");
  _sandbox.writeFile(_package.deployFile(".keystore"), std::string(512 << 10, 'x'));
  _sandbox.writeFile(_package.deployFile("extras/large"), std::string(512 << 10, 'x'));

  EXPECT_EQ(0, install().status);

  EXPECT_EQ("a=1\nb=2\n", _sandbox.readFile(_instance.customization()));
  EXPECT_THAT(errors(), IsEmpty());
}

// --- A launcher that fails -----------------------------------------------------------------------

TEST_F(FailureTest, AnswerOfTheLauncherIsToldWithThePlaceOfItsLog) {
  proves("RESULT-8");
  hotfixRun(ChildScript().write(_instance.result(), "rc=13\n"));

  EXPECT_EQ(1, install().status);

  EXPECT_THAT(errors(),
              ElementsAre("The provisioning answered 13; the logs of the launcher are in " +
                          _instance.home() + " and in " + _instance.data() + "/.metadata/.log."));
}

TEST_F(FailureTest, AnswerToARemovalIsToldBeforeTheRemovalFails) {
  proves("RESULT-8");
  recordHotfix("1.4");
  _sandbox.script("rcplauncher", 2, ChildScript().write(_instance.result(), "rc=-7\n"));

  EXPECT_EQ(0, install().status);

  EXPECT_THAT(errors(), ElementsAre(HasSubstr("The provisioning answered -7; "),
                                    HasSubstr("Unexpected results have occurred")));
}

TEST_F(FailureTest, ResultFileWithoutAnAnswerIsTold) {
  proves("RESULT-8");
  hotfixRun(ChildScript().write(_instance.result(), "code=0\n"));

  EXPECT_EQ(1, install().status);

  EXPECT_THAT(
      errors(),
      ElementsAre("\"" + _instance.result() + "\" holds no rc; the logs of the launcher are in " +
                  _instance.home() + " and in " + _instance.data() + "/.metadata/.log."));
}

TEST_F(FailureTest, FolderInThePlaceOfTheResultFileIsTold) {
  proves("RESULT-4", "RESULT-8");
  hotfixRun(ChildScript().folder(_instance.result()));

  EXPECT_EQ(1, install().status);

  EXPECT_THAT(errors(),
              ElementsAre("\"" + _instance.result() + "\" cannot be read: Is a directory"));
}

TEST_F(FailureTest, LauncherEndedByASignalIsTold) {
  proves("LAUNCH-10");
  hotfixRun(ChildScript().kill(SIGKILL));

  EXPECT_EQ(1, install().status);

  EXPECT_THAT(errors(), ElementsAre(_instance.launcher() + " was ended by signal 9 (Killed)."));
}

TEST_F(FailureTest, LauncherThatEndsByItselfIsNotTold) {
  proves("LAUNCH-10");
  hotfixRun(ChildScript().write(_instance.result(), "rc=0\n").exit(9));

  EXPECT_EQ(0, install().status);

  EXPECT_THAT(errors(), IsEmpty());
}

}  // namespace
}  // namespace installer::cli
