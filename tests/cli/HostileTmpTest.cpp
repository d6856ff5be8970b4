#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "cli/Fixtures.h"
#include "support/Proves.h"

namespace installer::cli {
namespace {

using ::testing::AnyOf;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::SizeIs;

constexpr const char* kPrecious = "/Users/alice/precious";

// Anybody may prepare names in /tmp before the installer comes as root.
class HostileTmpTest : public InstallerTest {
 protected:
  void SetUp() override {
    InstallerTest::SetUp();
    _sandbox.writeFile(kPrecious, "precious", 0640);
  }

  void TearDown() override {
    EXPECT_EQ("precious", _sandbox.readFile(kPrecious));
    EXPECT_EQ(0640u, _sandbox.mode(kPrecious));
    EXPECT_EQ(geteuid(), _sandbox.ownership(kPrecious).owner);
    EXPECT_EQ(getegid(), _sandbox.ownership(kPrecious).group);
    EXPECT_FALSE(_sandbox.exists("/Users/alice/new"));
  }

  void makeHardLink(const std::string& path) {
    std::filesystem::create_hard_link(_sandbox.host(kPrecious), _sandbox.host(path));
  }

  void failCheck() { _sandbox.remove(_instance.deploy("install.xml")); }

  void writeConfiguration(const std::string& path) {
    _sandbox.writeFile(
        path,
        xmlList(ListValue::dictionary({{"newInstallLocation", ListValue::string("/opt/planted")},
                                       {"planted", ListValue::string("yes")}})));
    _sandbox.makeFolder("/opt");
    _sandbox.writeFile("/tmp/qlmcore2/x", "x");
  }
};

// --- Trace file ----------------------------------------------------------------------------------

TEST_F(HostileTmpTest, LinkInTheTracesPlaceIsReplaced) {
  proves("TMP-1");
  _sandbox.makeLink(kTrace, kPrecious);

  EXPECT_EQ(0, install().status);

  EXPECT_TRUE(_sandbox.isRegular(kTrace));
  EXPECT_THAT(_sandbox.texts(), Contains("Success"));
}

TEST_F(HostileTmpTest, DanglingLinkInTheTracesPlaceIsReplaced) {
  _sandbox.makeLink(kTrace, "/Users/alice/new");

  EXPECT_EQ(0, install().status);

  EXPECT_TRUE(_sandbox.isRegular(kTrace));
}

TEST_F(HostileTmpTest, SecondNameOfAFileInTheTracesPlaceIsReplaced) {
  makeHardLink(kTrace);

  EXPECT_EQ(0, install().status);

  EXPECT_THAT(_sandbox.texts(), Contains("Success"));
}

TEST_F(HostileTmpTest, ForeignTraceFileIsReplacedByOurs) {
  if (!CliSandbox::hasManyUsers()) GTEST_SKIP() << "needs the machine's root";
  _sandbox.writeFile(kTrace, "foreign", 0666);
  _sandbox.giveTo(kTrace, CliSandbox::kBob, CliSandbox::kBob);

  EXPECT_EQ(0, install().status);

  EXPECT_EQ(0u, _sandbox.ownership(kTrace).owner);
  EXPECT_EQ(0644u, _sandbox.mode(kTrace));
  EXPECT_THAT(_sandbox.texts(), Contains("Success"));
}

TEST_F(HostileTmpTest, PipeInTheTracesPlaceIsReplaced) {
  _sandbox.makePipe(kTrace);

  EXPECT_EQ(0, install().status);

  EXPECT_TRUE(_sandbox.isRegular(kTrace));
}

// --- Marker --------------------------------------------------------------------------------------

TEST_F(HostileTmpTest, LinkInTheMarkersPlaceIsReplaced) {
  proves("TMP-1");
  failCheck();
  _sandbox.makeLink(kMarker, kPrecious);

  EXPECT_EQ(1, install().status);

  EXPECT_EQ("", _sandbox.readFile(kMarker));
  EXPECT_EQ(0777u, _sandbox.mode(kMarker));
}

TEST_F(HostileTmpTest, DanglingLinkInTheMarkersPlaceIsReplaced) {
  failCheck();
  _sandbox.makeLink(kMarker, "/Users/alice/new");

  EXPECT_EQ(1, install().status);

  EXPECT_EQ("", _sandbox.readFile(kMarker));
}

TEST_F(HostileTmpTest, SecondNameOfAFileInTheMarkersPlaceIsReplaced) {
  proves("TMP-1");
  failCheck();
  makeHardLink(kMarker);

  EXPECT_EQ(1, install().status);

  EXPECT_EQ("", _sandbox.readFile(kMarker));
}

TEST_F(HostileTmpTest, ForeignMarkerIsReplacedByTheConsoleUsers) {
  proves("TMP-1");
  if (!CliSandbox::hasManyUsers()) GTEST_SKIP() << "needs the machine's root";
  failCheck();
  _sandbox.writeFile(kMarker, "foreign", 0600);
  _sandbox.giveTo(kMarker, CliSandbox::kBob, CliSandbox::kBob);

  EXPECT_EQ(1, install().status);

  EXPECT_EQ(CliSandbox::kAlice, _sandbox.ownership(kMarker).owner);
  EXPECT_EQ("", _sandbox.readFile(kMarker));
}

TEST_F(HostileTmpTest, PipeInTheMarkersPlaceIsReplaced) {
  proves("TMP-1");
  failCheck();
  _sandbox.makePipe(kMarker);

  EXPECT_EQ(1, install().status);

  EXPECT_TRUE(_sandbox.isRegular(kMarker));
}

// --- Pasteboard ----------------------------------------------------------------------------------

TEST_F(HostileTmpTest, LinkInThePasteboardsPlaceIsReplaced) {
  proves("TMP-1");
  _sandbox.makeLink(kPasteboard, kPrecious);

  EXPECT_EQ(0, install().status);

  EXPECT_EQ((ErrorRecord{0, {}}), errorRecord());
}

TEST_F(HostileTmpTest, SecondNameOfAFileInThePasteboardsPlaceIsReplaced) {
  makeHardLink(kPasteboard);

  EXPECT_EQ(0, install().status);

  EXPECT_EQ((ErrorRecord{0, {}}), errorRecord());
}

TEST_F(HostileTmpTest, ForeignPasteboardIsReplacedByOurs) {
  if (!CliSandbox::hasManyUsers()) GTEST_SKIP() << "needs the machine's root";
  _sandbox.writeFile(kPasteboard, "foreign", 0666);
  _sandbox.giveTo(kPasteboard, CliSandbox::kBob, CliSandbox::kBob);

  EXPECT_EQ(0, install().status);

  EXPECT_EQ(0u, _sandbox.ownership(kPasteboard).owner);
  EXPECT_EQ((ErrorRecord{0, {}}), errorRecord());
}

// --- Configuration -------------------------------------------------------------------------------

TEST_F(HostileTmpTest, ConfigurationOfRootCounts) {
  writeConfiguration(kConfiguration);

  EXPECT_EQ(0, install().status);

  EXPECT_EQ("x", _sandbox.readFile("/opt/planted/x"));
  EXPECT_EQ("yes", listAt(kConfiguration).stringAt("planted"));
}

TEST_F(HostileTmpTest, ConfigurationOfTheConsoleUserCounts) {
  if (!CliSandbox::hasManyUsers()) GTEST_SKIP() << "needs the machine's root";
  writeConfiguration(kConfiguration);
  _sandbox.giveTo(kConfiguration, CliSandbox::kAlice, CliSandbox::kAlice);

  EXPECT_EQ(0, install().status);

  EXPECT_EQ("x", _sandbox.readFile("/opt/planted/x"));
}

TEST_F(HostileTmpTest, ConfigurationOfAnybodyElseReadsAsAbsentWithOneWarning) {
  proves("TMP-4");
  if (!CliSandbox::hasManyUsers()) GTEST_SKIP() << "needs the machine's root";
  writeConfiguration(kConfiguration);
  _sandbox.giveTo(kConfiguration, CliSandbox::kBob, CliSandbox::kBob);

  EXPECT_EQ(0, install().status);

  EXPECT_FALSE(_sandbox.exists("/opt/planted"));
  std::vector<std::string> warnings;
  for (const std::string& text : _sandbox.texts("Warning"))
    if (text != "Can not copy to newInstallLocation because its nil!") warnings.push_back(text);
  EXPECT_THAT(warnings, ElementsAre(HasSubstr(kConfiguration)));
  EXPECT_THAT(listAt(kConfiguration).keys(), ElementsAre("P_RCPDATA", "pathToRcpHome"));
  EXPECT_EQ(0u, _sandbox.ownership(kConfiguration).owner);
}

TEST_F(HostileTmpTest, LinkInTheConfigurationsPlaceReadsAsAbsentAndIsReplaced) {
  proves("TMP-1");
  writeConfiguration("/Users/alice/planted.plist");
  const auto before = _sandbox.readFile("/Users/alice/planted.plist");
  _sandbox.makeLink(kConfiguration, "/Users/alice/planted.plist");

  EXPECT_EQ(0, install().status);

  EXPECT_FALSE(_sandbox.exists("/opt/planted"));
  EXPECT_TRUE(_sandbox.isRegular(kConfiguration));
  EXPECT_EQ(before, _sandbox.readFile("/Users/alice/planted.plist"));
}

TEST_F(HostileTmpTest, SecondNameOfAFileInTheConfigurationsPlaceReadsAsAbsentAndIsReplaced) {
  proves("TMP-4");
  writeConfiguration("/Users/alice/planted.plist");
  const auto planted = _sandbox.readFile("/Users/alice/planted.plist");
  std::filesystem::create_hard_link(_sandbox.host("/Users/alice/planted.plist"),
                                    _sandbox.host(kConfiguration));

  EXPECT_EQ(0, install().status);

  EXPECT_FALSE(_sandbox.exists("/opt/planted"));
  EXPECT_THAT(listAt(kConfiguration).keys(), ElementsAre("P_RCPDATA", "pathToRcpHome"));
  EXPECT_EQ(planted, _sandbox.readFile("/Users/alice/planted.plist"));
}

TEST_F(HostileTmpTest, ConfigurationIsReadableForEverybody) {
  proves("CONFIG-3");
  RunOptions options;
  options.mask = 077;

  EXPECT_EQ(0, install(options).status);

  EXPECT_EQ(0644u, _sandbox.mode(kConfiguration));
}

TEST_F(HostileTmpTest, DamagedConfigurationIsKept) {
  proves("CONFIG-4");
  _sandbox.writeFile(kConfiguration, "damaged");

  EXPECT_EQ(0, install().status);

  EXPECT_EQ("damaged", _sandbox.readFile(kConfiguration));
}

// --- The rest ------------------------------------------------------------------------------------

TEST_F(HostileTmpTest, StalePanelFileThatIsALinkIsRemovedAsALink) {
  proves("ODD-9");
  _sandbox.makeLink("/tmp/qlm.config", kPrecious);

  EXPECT_EQ(0, install().status);

  EXPECT_FALSE(_sandbox.exists("/tmp/qlm.config"));
}

TEST_F(HostileTmpTest, TmpThatIsALinkIsUsed) {
  _sandbox.remove("/tmp");
  _sandbox.makeFolder("/private/tmp", 01777);
  _sandbox.makeLink("/tmp", "private/tmp");

  EXPECT_EQ(0, install().status);

  EXPECT_TRUE(_sandbox.isRegular("/private/tmp/install_trace.log"));
  EXPECT_TRUE(_sandbox.isRegular("/private/tmp/INSTALLATION_INTERNAL_PASTEBOARD"));
}

TEST_F(HostileTmpTest, MissingTmpIsSurvived) {
  proves("FILES-19");
  _sandbox.remove("/tmp");

  EXPECT_EQ(0, install().status);

  EXPECT_EQ("1.5", recorded("hotfixVersion"));
  EXPECT_FALSE(_sandbox.exists("/tmp"));
}

// --- The instance, which its user can write ------------------------------------------------------

TEST_F(HostileTmpTest, LinksInTheInstanceAreReplacedNotWrittenThrough) {
  proves("ODD-9");
  for (const std::string& path :
       {_instance.deploy("install.update.xml"), _instance.deploy("uninstall.hotfix.xml"),
        _instance.deploy("install.0101200000.xml")})
    _sandbox.makeLink(path, kPrecious);

  EXPECT_EQ(0, install().status);

  EXPECT_TRUE(_sandbox.isRegular(_instance.deploy("install.update.xml")));
  EXPECT_EQ(kUninstallManifest, _sandbox.readFile(_instance.deploy("uninstall.hotfix.xml")));
  EXPECT_EQ(kPrecious, _sandbox.linkTarget(_instance.deploy("install.0101200000.xml")));
}

TEST_F(HostileTmpTest, CustomizationLinkDoesNotPublishItsTarget) {
  proves("ODD-9");
  _sandbox.remove(_instance.customization());
  _sandbox.makeLink(_instance.customization(), kPrecious);

  EXPECT_EQ(0, install().status);

  EXPECT_TRUE(_sandbox.isLink(_instance.customization()));
}

TEST_F(HostileTmpTest, RecordsThroughALinkDoNotReachItsTarget) {
  proves("ODD-9");
  _sandbox.makeLink(_instance.info(), kPrecious);

  EXPECT_EQ(0, install().status);

  EXPECT_EQ(kPrecious, _sandbox.linkTarget(_instance.info()));
}

TEST_F(HostileTmpTest, DeployThatIsALinkElsewhereStillGivesNothingAway) {
  proves("ODD-9");
  _sandbox.makeFolder("/Users/bob/deploy", 0750);
  _sandbox.writeFile("/Users/bob/deploy/install.xml", "x", 0600);
  _sandbox.writeFile("/Users/bob/deploy/private", "x", 0600);
  _sandbox.remove(_instance.home() + "/deploy");
  _sandbox.makeLink(_instance.home() + "/deploy", "/Users/bob/deploy");

  EXPECT_THAT(install().status, AnyOf(0, 1));

  EXPECT_EQ("x", _sandbox.readFile("/Users/bob/deploy/private"));
  EXPECT_EQ(0750u, _sandbox.mode("/Users/bob/deploy"));
  EXPECT_EQ(0600u, _sandbox.mode("/Users/bob/deploy/private"));
  EXPECT_EQ(0u, _sandbox.ownership("/Users/bob/deploy/private").owner);
}

}  // namespace
}  // namespace installer::cli
