#include <gmock/gmock.h>

#include "cli/Fixtures.h"
#include "support/Proves.h"

namespace installer::cli {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

// What a run does about files that fail it, and what it tells of them.
class FailureTest : public InstallerTest {
 protected:
  static std::string told(const std::string& path, const std::string& rest) {
    return "\"" + path + "\" cannot be " + rest;
  }

  std::vector<std::string> errors() const { return _sandbox.texts("Error"); }

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

}  // namespace
}  // namespace installer::cli
