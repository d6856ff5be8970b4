#include <gmock/gmock.h>

#include "cli/Fixtures.h"
#include "support/Proves.h"

namespace installer::cli {
namespace {

using ::testing::AllOf;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::SizeIs;

constexpr const char* kCompleted = "The provisioning operations have completed successfully.\n";
constexpr const char* kUnexpected =
    "Unexpected results have occurred during the provisioning operation. For additional "
    "information, please refer to the logs.";

// The removal of the installed hotfix, before the new one comes.
class UninstallTest : public InstallerTest {
 protected:
  void SetUp() override {
    InstallerTest::SetUp();
    recordHotfix("1.4");
  }

  std::vector<ChildRecord> launches() const { return _sandbox.children("rcplauncher"); }

  std::string notFound(const std::string& verb, const std::string& file) const {
    return "File " + file + " " + verb +
           "not found. Provisioning process failed to launch or was terminated before status could "
           "be determined.";
  }

  ChildScript watching(const std::vector<std::string>& paths) const {
    ChildScript script;
    for (const std::string& path : paths) script.snapshot(path);
    script.write(_instance.result(), "rc=0\n");
    return script;
  }

  void failRemoval() {
    for (const int start : {1, 2})
      _sandbox.script("rcplauncher", start, ChildScript().write(_instance.result(), "rc=1\n"));
  }
};

TEST_F(UninstallTest, PrintsOneLineOnSuccess) {
  proves("RUN-2", "REMOVE-4");
  const RunResult result = install();

  EXPECT_EQ(0, result.status);
  EXPECT_EQ(kCompleted, result.out);
  EXPECT_EQ("", result.err);
}

TEST_F(UninstallTest, ManifestBecomesTheProvisioningManifestUnresolvedAndIsConsumed) {
  proves("REMOVE-1");
  _sandbox.script(
      "rcplauncher", 1,
      watching({_instance.deploy("install.update.xml"), _instance.deploy("uninstall.hotfix.xml")}));

  ASSERT_EQ(0, install().status);

  const ChildRecord first = launches().at(0);
  EXPECT_EQ(kUninstallManifest, first.fileAt(_instance.deploy("install.update.xml")));
  EXPECT_EQ("A", first.snapshots.at(_instance.deploy("uninstall.hotfix.xml")));
}

TEST_F(UninstallTest, OldProvisioningManifestIsReplaced) {
  proves("REMOVE-1");
  _sandbox.writeFile(_instance.deploy("install.update.xml"), "<old/>");
  _sandbox.script("rcplauncher", 1, watching({_instance.deploy("install.update.xml")}));

  ASSERT_EQ(0, install().status);

  EXPECT_EQ(kUninstallManifest, launches().at(0).fileAt(_instance.deploy("install.update.xml")));
}

TEST_F(UninstallTest, InstallManifestIsBackedUpUnderTheOldVersionBeforeTheNewStamp) {
  proves("REMOVE-2");
  const StampWatch watch;
  _sandbox.script("rcplauncher", 1,
                  watching({_instance.deploy("install.0101200000.xml"),
                            _instance.launcherProperties(), _instance.info()}));

  ASSERT_EQ(0, install().status);

  const ChildRecord first = launches().at(0);
  EXPECT_EQ(kInstanceManifest, first.fileAt(_instance.deploy("install.0101200000.xml")));
  const auto lines = sortedLines(*first.fileAt(_instance.launcherProperties()));
  ASSERT_THAT(lines, SizeIs(3));
  const std::string key = "provisioning.manifest.version=";
  ASSERT_EQ(key, lines[0].substr(0, key.size()));
  EXPECT_TRUE(watch.covers(lines[0].substr(key.size()))) << lines[0];
  EXPECT_EQ("1.4", readXmlList(*first.fileAt(_instance.info()))->stringAt("hotfixVersion"))
      << "cleared after the runs";
}

TEST_F(UninstallTest, RecordsAreGoneBeforeTheUntouchedInstancesRun) {
  proves("REMOVE-4");
  _sandbox.script("rcplauncher", 3, watching({_instance.info()}));

  ASSERT_EQ(0, install().status);

  const auto info = readXmlList(*launches().at(2).fileAt(_instance.info()));
  EXPECT_THAT(info->keys(), ElementsAre("version"));
}

TEST_F(UninstallTest, ReceiptOfTheRecordedIdentifierIsForgotten) {
  proves("RECEIPT-1");
  _sandbox.installChild("/usr/sbin/pkgutil");

  ASSERT_EQ(0, install().status);

  const auto calls = _sandbox.children("pkgutil");
  ASSERT_THAT(calls, SizeIs(1));
  EXPECT_THAT(calls[0].arguments, ElementsAre("--forget", "com.kiv.hotfix.old"));
  EXPECT_EQ("/usr/sbin/pkgutil", calls[0].executable);
  EXPECT_EQ("/dev/null", calls[0].descriptors.at(1));
  EXPECT_EQ("/dev/null", calls[0].descriptors.at(2));
}

TEST_F(UninstallTest, ReceiptIsForgottenBetweenTheRemovalRunsAndTheUpdateRun) {
  proves("RECEIPT-1");
  _sandbox.installChild("/usr/sbin/pkgutil");

  ASSERT_EQ(0, install().status);

  std::vector<std::string> roles;
  for (const ChildRecord& child : _sandbox.children()) roles.push_back(child.role);
  EXPECT_THAT(roles,
              ElementsAre("rcplauncher", "rcplauncher", "pkgutil", "rcplauncher", "rcplauncher"));
}

TEST_F(UninstallTest, ReceiptIsForgottenWhileTheIdentifierIsStillRecorded) {
  proves("REMOVE-4");
  _sandbox.installChild("/usr/sbin/pkgutil");
  _sandbox.script("pkgutil", ChildScript().snapshot(_instance.info()).snapshot(_instance.result()));

  ASSERT_EQ(0, install().status);

  const ChildRecord call = _sandbox.children("pkgutil").at(0);
  const auto info = readXmlList(*call.fileAt(_instance.info()));
  EXPECT_EQ("com.kiv.hotfix.old", info->stringAt("installedHotfixBundleID"));
  EXPECT_EQ(std::nullopt, info->stringAt("hotfixVersion"));
  EXPECT_EQ("A", call.snapshots.at(_instance.result()));
}

TEST_F(UninstallTest, ReceiptToolsChatterAndStatusAreIgnored) {
  proves("RECEIPT-2");
  _sandbox.installChild("/usr/sbin/pkgutil");
  _sandbox.script("pkgutil", ChildScript().print("noise").printError("noise").exit(1));

  const RunResult result = install();

  EXPECT_EQ(0, result.status);
  EXPECT_EQ(kCompleted, result.out);
  EXPECT_EQ("", result.err);
}

TEST_F(UninstallTest, MissingReceiptToolIsNoErrorAndNoLine) {
  proves("RECEIPT-2");
  ASSERT_EQ(0, install().status);

  EXPECT_THAT(_sandbox.texts("Error"), IsEmpty());
}

TEST_F(UninstallTest, WithoutRecordedIdentifierNothingIsForgotten) {
  proves("RECEIPT-1");
  _sandbox.installChild("/usr/sbin/pkgutil");
  writeInfo({{"hotfixVersion", ListValue::string("1.4")}});

  ASSERT_EQ(0, install().status);

  EXPECT_THAT(_sandbox.children("pkgutil"), IsEmpty());
}

TEST_F(UninstallTest, IdentifierIsPassedAsItStands) {
  proves("RECEIPT-1");
  _sandbox.installChild("/usr/sbin/pkgutil");
  writeInfo({{"hotfixVersion", ListValue::string("1.4")},
             {"installedHotfixBundleID", ListValue::string("--all; rm \"x\" $(y)")}});

  ASSERT_EQ(0, install().status);

  EXPECT_THAT(_sandbox.children("pkgutil").at(0).arguments,
              ElementsAre("--forget", "--all; rm \"x\" $(y)"));
}

// --- Permissions ---------------------------------------------------------------------------------

TEST_F(UninstallTest, SuccessRestoresTheDataFolderOnly) {
  _sandbox.setMode(_instance.customization(), 0600);
  _sandbox.writeFile(_instance.data() + "/log.txt", "x", 0600);
  // The workflow, which would restore everything, stops at once.
  _sandbox.remove(_package.deployFile("install.hotfix.xml"));

  EXPECT_EQ(1, install().status);

  EXPECT_EQ(0600u, _sandbox.mode(_instance.customization()));
  EXPECT_EQ(0775u, _sandbox.mode(_instance.data() + "/log.txt"));
}

TEST_F(UninstallTest, SuccessRestoresGivenDataAndLeavesTheOther) {
  proves("REMOVE-6");
  _sandbox.writeFile("/Users/alice/ws/log.txt", "x", 0600);
  _sandbox.writeFile(_instance.data() + "/log.txt", "x", 0600);
  _sandbox.remove(_package.deployFile("install.hotfix.xml"));

  EXPECT_EQ(1, installWithData("/Users/alice/ws").status);

  EXPECT_EQ(0775u, _sandbox.mode("/Users/alice/ws/log.txt"));
  EXPECT_EQ(0600u, _sandbox.mode(_instance.data() + "/log.txt"));
}

TEST_F(UninstallTest, FailureRestoresNothing) {
  proves("REMOVE-6");
  failRemoval();
  _sandbox.writeFile(_instance.data() + "/log.txt", "x", 0600);
  _sandbox.remove(_package.deployFile("install.hotfix.xml"));

  EXPECT_EQ(1, install().status);

  EXPECT_EQ(0600u, _sandbox.mode(_instance.data() + "/log.txt"));
}

// --- Failures ------------------------------------------------------------------------------------

TEST_F(UninstallTest, MissingManifestIsToldTwiceAndTheInstallGoesOn) {
  proves("REMOVE-9");
  _sandbox.remove(_instance.deploy("uninstall.hotfix.xml"));

  const RunResult result = install();

  const std::string text = notFound("was ", _instance.deploy("uninstall.hotfix.xml"));
  EXPECT_EQ(0, result.status);
  EXPECT_EQ(text + "\n", result.out);
  EXPECT_THAT(_sandbox.texts("Error"), ElementsAre(text));
  EXPECT_THAT(launches(), SizeIs(2));
  EXPECT_EQ("1.5", recorded("hotfixVersion"));
}

TEST_F(UninstallTest, MissingManifestKeepsEveryRecord) {
  _sandbox.installChild("/usr/sbin/pkgutil");
  _sandbox.remove(_instance.deploy("uninstall.hotfix.xml"));
  _sandbox.remove(_package.deployFile("install.hotfix.xml"));

  EXPECT_EQ(1, install().status);

  EXPECT_EQ("1.4", recorded("hotfixVersion"));
  EXPECT_EQ("false", recorded("SKIPRUNNINGCHECK"));
  EXPECT_EQ("com.kiv.hotfix.old", recorded("installedHotfixBundleID"));
  EXPECT_THAT(_sandbox.children("pkgutil"), IsEmpty());
  EXPECT_FALSE(_sandbox.exists(_instance.deploy("install.0101200000.xml")));
}

TEST_F(UninstallTest, ManifestThatCannotBeCopiedIsToldInBothForms) {
  proves("REMOVE-10");
  _sandbox.remove(_instance.deploy("uninstall.hotfix.xml"));
  _sandbox.makePipe(_instance.deploy("uninstall.hotfix.xml"));

  const RunResult result = install();

  EXPECT_EQ(notFound("was ", "install.update.xml") + "\n", result.out);
  EXPECT_THAT(_sandbox.texts("Error"), Contains(notFound("", "install.update.xml")));
  EXPECT_THAT(_sandbox.texts("Error"), Not(Contains(notFound("was ", "install.update.xml"))));
}

TEST_F(UninstallTest, ManifestThatCannotBeCopiedStaysAndTheInstallGoesOn) {
  proves("REMOVE-10");
  _sandbox.remove(_instance.deploy("uninstall.hotfix.xml"));
  _sandbox.makePipe(_instance.deploy("uninstall.hotfix.xml"));
  _sandbox.remove(_package.deployFile("uninstall.hotfix.xml"));

  EXPECT_EQ(0, install().status);

  EXPECT_TRUE(_sandbox.exists(_instance.deploy("uninstall.hotfix.xml")));
  EXPECT_EQ("1.5", recorded("hotfixVersion"));
}

TEST_F(UninstallTest, FailedRunIsToldAndClearsTheVersionAlone) {
  proves("REMOVE-8");
  _sandbox.installChild("/usr/sbin/pkgutil");
  failRemoval();
  _sandbox.remove(_package.deployFile("install.hotfix.xml"));
  _sandbox.script("rcplauncher", 3, ChildScript());

  const RunResult result = install();

  EXPECT_EQ(1, result.status);
  EXPECT_EQ(std::string(kUnexpected) + "\n", result.out);
  EXPECT_THAT(_sandbox.texts("Error"), Contains(kUnexpected));
  EXPECT_EQ(std::nullopt, recorded("hotfixVersion"));
  EXPECT_EQ("false", recorded("SKIPRUNNINGCHECK"));
  EXPECT_EQ("com.kiv.hotfix.old", recorded("installedHotfixBundleID"));
  EXPECT_THAT(_sandbox.children("pkgutil"), IsEmpty());
  EXPECT_EQ("rc=1\n", _sandbox.readFile(_instance.result()));
  EXPECT_FALSE(_sandbox.exists(_instance.deploy("uninstall.hotfix.xml")));
}

TEST_F(UninstallTest, FailedRunSendsNoRecordAndDoesNotStopTheInstall) {
  proves("REMOVE-8");
  failRemoval();

  EXPECT_EQ(0, install().status);

  EXPECT_EQ((ErrorRecord{0, {}}), errorRecord());
  EXPECT_EQ("1.5", recorded("hotfixVersion"));
}

TEST_F(UninstallTest, SecondRunsResultCounts) {
  proves("REMOVE-3");
  _sandbox.script("rcplauncher", 1, ChildScript().write(_instance.result(), "rc=1\n"));

  EXPECT_EQ(kCompleted, install().out);
}

TEST_F(UninstallTest, FirstRunsResultCountsWhenTheSecondLeavesNone) {
  proves("REMOVE-3");
  _sandbox.script("rcplauncher", 2, ChildScript());

  EXPECT_EQ(kCompleted, install().out);
}

TEST_F(UninstallTest, MissingLauncherPropertiesDoNotStopTheRemoval) {
  proves("REMOVE-2");
  _sandbox.remove(_instance.launcherProperties());

  EXPECT_EQ(kCompleted, install().out);

  EXPECT_FALSE(_sandbox.exists(_instance.launcherProperties()));
  EXPECT_FALSE(_sandbox.exists(_instance.deploy("install.old.xml")));
}

TEST_F(UninstallTest, OtherRecordsAreKept) {
  proves("REMOVE-5");
  writeInfo({{"version", ListValue::string("8.5.2")},
             {"hotfixVersion", ListValue::string("1.4")},
             {"extra", ListValue::integer(3)}});
  _sandbox.remove(_package.deployFile("install.hotfix.xml"));

  EXPECT_EQ(1, install().status);

  const ListValue info = listAt(_instance.info());
  EXPECT_THAT(info.keys(), ElementsAre("version", "extra"));
}

TEST_F(UninstallTest, RefusedPackageRemovesNothing) {
  proves("VERSION-7");
  recordHotfix("1.6");

  const RunResult result = install();

  EXPECT_EQ(1, result.status);
  EXPECT_EQ("", result.out);
  EXPECT_EQ("1.6", recorded("hotfixVersion"));
  EXPECT_TRUE(_sandbox.exists(_instance.deploy("uninstall.hotfix.xml")));
}

}  // namespace
}  // namespace installer::cli
