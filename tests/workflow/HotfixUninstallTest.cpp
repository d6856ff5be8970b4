#include "hotfix/workflow/HotfixUninstall.h"

#include <gmock/gmock.h>

#include <cerrno>
#include <fstream>
#include <iterator>

#include "hotfix/instance/InstanceService.h"
#include "instance/ProvisioningCommand.h"
#include "support/PackageFixture.h"
#include "support/Proves.h"
#include "support/TreeSnapshot.h"

namespace installer::test {
namespace {

using PropertyList::Dictionary;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class HotfixUninstallTest : public PackageFixture {
 protected:
  HotfixUninstallTest() {
    _sandbox.clock().set(2013, 3, 5, 9, 7);
    _sandbox.write(inHome("deploy/uninstall.hotfix.xml"), "uninstall ${installer.root}");
    writeInfo({{"version", "6"},
               {"hotfixVersion", "6.1"},
               {"SKIPRUNNINGCHECK", "true"},
               {"installedHotfixBundleID", "com.old"}});
    _sandbox.write(_sandbox.paths().receiptTool, "");
  }

  // The answer; standard output goes to _output.
  bool uninstall(const std::optional<std::string>& dataFolder) {
    HotfixUninstall workflow(home(), dataFolder);
    _sandbox.clearLog();
    ::testing::internal::CaptureStdout();
    const bool removed = workflow.uninstallOldHotfix();
    _output = ::testing::internal::GetCapturedStdout();
    return removed;
  }
  bool uninstall() { return uninstall(data()); }
  // What has left the process so far for the standard output that uninstall() catches.
  static std::string told() {
    std::ifstream caught("/dev/fd/1");
    return {std::istreambuf_iterator<char>(caught), std::istreambuf_iterator<char>()};
  }
  Command run() const {
    return {launcher(), ProvisioningCommand::arguments("update", "en_US", data())};
  }

  std::string _output;
};

constexpr const char* kCompleted = "The provisioning operations have completed successfully.\n";
constexpr const char* kUnexpected =
    "Unexpected results have occurred during the provisioning operation. For additional "
    "information, please refer to the logs.";
constexpr const char* kUndetermined =
    "Provisioning process failed to launch or was terminated before status could be determined.";

TEST_F(HotfixUninstallTest, RunsTheLauncherTwiceAndClearsAllRecords) {
  proves("REMOVE-1");
  EXPECT_TRUE(uninstall());

  EXPECT_THAT(
      _sandbox.children().started(),
      ElementsAre(run(), run(), Command{_sandbox.paths().receiptTool, {"--forget", "com.old"}}));
  EXPECT_EQ(info(), (Dictionary{{"version", "6"}}));
  EXPECT_FALSE(_sandbox.exists(inHome("../.provisioning_rc")));
  EXPECT_FALSE(_sandbox.exists(inHome("deploy/uninstall.hotfix.xml")));
  EXPECT_EQ(_sandbox.read(inHome("deploy/install.update.xml")), "uninstall ${installer.root}");
  EXPECT_EQ(_output, kCompleted);
  EXPECT_THAT(
      numberedLines(),
      ElementsAre("6 Copy install manifest to " + homePath("deploy/install.update.xml") + ".",
                  "6 Launch platform to uninstall provisioned features..."));
}

TEST_F(HotfixUninstallTest, WhatTheLauncherRemovedIsFlushedBeforeTheVersionIsForgotten) {
  proves("INSTALL-15");
  std::size_t before = 0;
  _sandbox.children().onStart([&](const Command& command) {
    if (command != run()) return;
    _sandbox.write(inHome("../.provisioning_rc"), "rc=0\n");
    before = _sandbox.files().operations().size();
  });

  EXPECT_TRUE(uninstall());

  const auto& operations = _sandbox.files().operations();
  ASSERT_LT(before + 1, operations.size());
  EXPECT_EQ(operations[before], FileOperation::kSync);
  EXPECT_EQ(operations[before + 1], FileOperation::kCreateTemporary) << "the record";
}

TEST_F(HotfixUninstallTest, BacksUpAndStampsBeforeTheRuns) {
  proves("REMOVE-2");
  EXPECT_TRUE(uninstall());

  EXPECT_TRUE(_sandbox.exists(inHome("deploy/install.0101130000.xml")));
  EXPECT_EQ(_sandbox.read(inHome("rcplauncher.properties")),
            "provisioning.manifest.version=0503130907\nrcp.install.id=0101130000\n");
}

TEST_F(HotfixUninstallTest, OldResultIsRemovedOnceBeforeBothRuns) {
  std::vector<bool> hadResult;
  _sandbox.write(inHome("../.provisioning_rc"), "rc=0\n");
  _sandbox.children().onStart([&](const Command& command) {
    if (command.executable != launcher()) return;
    hadResult.push_back(_sandbox.exists(inHome("../.provisioning_rc")));
    _sandbox.write(inHome("../.provisioning_rc"), "rc=0\n");
  });

  EXPECT_TRUE(uninstall());

  EXPECT_THAT(hadResult, ElementsAre(false, true));
}

TEST_F(HotfixUninstallTest, ReceiptIsForgottenAfterVersionAndResultAndBeforeTheRest) {
  proves("REMOVE-4");
  Dictionary infoThen;
  bool resultThen = true;
  _sandbox.children().onStart([&](const Command& command) {
    if (command.executable == launcher()) {
      _sandbox.write(inHome("../.provisioning_rc"), "rc=0\n");
      return;
    }
    infoThen = info();
    resultThen = _sandbox.exists(inHome("../.provisioning_rc"));
  });

  EXPECT_TRUE(uninstall());

  EXPECT_EQ(infoThen, (Dictionary{{"version", "6"},
                                  {"SKIPRUNNINGCHECK", "true"},
                                  {"installedHotfixBundleID", "com.old"}}));
  EXPECT_FALSE(resultThen);
}

TEST_F(HotfixUninstallTest, SuccessIsToldBeforeTheReceiptIsForgottenAndPermissionsChangeAfterIt) {
  proves("REMOVE-4");
  _sandbox.write("data/file", "", 0600);
  std::string toldThen;
  mode_t modeThen = 0;
  _sandbox.children().onStart([&](const Command& command) {
    if (command.executable == launcher()) {
      _sandbox.write(inHome("../.provisioning_rc"), "rc=0\n");
      return;
    }
    toldThen = told();
    modeThen = _sandbox.mode("data/file");
  });

  EXPECT_TRUE(uninstall());

  EXPECT_EQ(toldThen, kCompleted);
  EXPECT_EQ(modeThen, 0600U);
  EXPECT_EQ(_sandbox.mode("data/file"), 0775U);
}

TEST_F(HotfixUninstallTest, ManifestIsConsumedBackedUpAndStampedWhenTheLauncherRuns) {
  bool consumed = false;
  bool backedUp = false;
  std::string properties;
  Dictionary infoThen;
  _sandbox.children().onStart([&](const Command&) {
    consumed = !_sandbox.exists(inHome("deploy/uninstall.hotfix.xml"));
    backedUp = _sandbox.exists(inHome("deploy/install.0101130000.xml"));
    properties = _sandbox.read(inHome("rcplauncher.properties"));
    infoThen = info();
  });

  EXPECT_FALSE(uninstall());

  EXPECT_TRUE(consumed);
  EXPECT_TRUE(backedUp);
  EXPECT_THAT(properties, ::testing::StartsWith("provisioning.manifest.version=0503130907\n"));
  EXPECT_EQ(infoThen.size(), 4U) << "every record is still there";
}

TEST_F(HotfixUninstallTest, PermissionsChangeBelowTheDataOnly) {
  proves("REMOVE-6");
  _sandbox.write(inHome("file"), "", 0600);
  _sandbox.write("data/file", "", 0600);

  EXPECT_TRUE(uninstall());

  EXPECT_EQ(_sandbox.mode(inHome("file")), 0600U);
  EXPECT_EQ(_sandbox.mode("data/file"), 0775U);
}

TEST_F(HotfixUninstallTest, HomeThatCannotBeLookedAtIsTold) {
  proves("FILES-21");
  _sandbox.files().failReading(home(), EIO);

  EXPECT_FALSE(HotfixUninstall(home(), data()).uninstallOldHotfix());

  EXPECT_THAT(linesAt(LogLevel::error),
              ElementsAre("\"" + home() + "\" cannot be looked at: Input/output error"));
}

TEST_F(HotfixUninstallTest, UnreadableRecordIsToldOnce) {
  proves("FILES-21", "LIBRARY-11");
  _sandbox.write(inHome("installInfo.plist"), "half an edit <dict>");
  const std::string line = "\"" + homePath("installInfo.plist") +
                           "\" cannot be read: No property list with a dictionary";

  EXPECT_TRUE(uninstall());

  EXPECT_THAT(linesAt(LogLevel::error), ElementsAre(line));
}

TEST_F(HotfixUninstallTest, FailedProvisioningClearsTheVersionOnly) {
  proves("REMOVE-8");
  launcherAnswers("rc=13\n");
  _sandbox.write("data/file", "", 0600);

  EXPECT_FALSE(uninstall());

  EXPECT_EQ(info(), (Dictionary{{"version", "6"},
                                {"SKIPRUNNINGCHECK", "true"},
                                {"installedHotfixBundleID", "com.old"}}));
  EXPECT_TRUE(_sandbox.exists(inHome("../.provisioning_rc")));
  EXPECT_EQ(_sandbox.mode("data/file"), 0600U);
  EXPECT_THAT(_sandbox.children().started(), ElementsAre(run(), run()));
  EXPECT_THAT(linesAt(LogLevel::error),
              ElementsAre("The provisioning answered 13; the logs of the launcher are in " +
                              home() + " and in " + data() + "/.metadata/.log.",
                          kUnexpected));
  EXPECT_EQ(_output, std::string(kUnexpected) + "\n");
}

TEST_F(HotfixUninstallTest, MissingManifestEndsItBeforeAnyChange) {
  proves("REMOVE-9");
  _sandbox.remove(inHome("deploy/uninstall.hotfix.xml"));
  const TreeSnapshot before = snapshotOf(_sandbox.path(kBundle));

  EXPECT_FALSE(uninstall());

  const std::string text =
      "File " + homePath("deploy/uninstall.hotfix.xml") + " was not found. " + kUndetermined;
  EXPECT_THAT(numberedLines(), ElementsAre("3 " + text));
  EXPECT_EQ(_output, text + "\n");
  EXPECT_TRUE(TreeDiff(before, snapshotOf(_sandbox.path(kBundle))).empty());
  EXPECT_THAT(_sandbox.children().started(), IsEmpty());
}

TEST_F(HotfixUninstallTest, ManifestThatCannotBeCopiedStaysAndIsToldInTwoTexts) {
  proves("REMOVE-10");
  _sandbox.remove(inHome("deploy/uninstall.hotfix.xml"));
  _sandbox.makePipe(inHome("deploy/uninstall.hotfix.xml"));
  const TreeSnapshot before = snapshotOf(_sandbox.path(kBundle));

  EXPECT_FALSE(uninstall());

  EXPECT_THAT(linesAt(LogLevel::error),
              ElementsAre("\"" + homePath("deploy/uninstall.hotfix.xml") +
                              "\" cannot be copied to \"" + homePath("deploy/install.update.xml") +
                              "\": is not a regular file, folder or link",
                          std::string("File install.update.xml not found. ") + kUndetermined));
  EXPECT_EQ(_output, std::string("File install.update.xml was not found. ") + kUndetermined + "\n");
  EXPECT_TRUE(TreeDiff(before, snapshotOf(_sandbox.path(kBundle))).empty());
  EXPECT_THAT(_sandbox.children().started(), IsEmpty());
}

TEST_F(HotfixUninstallTest, ManifestInTheWayThatStaysKeepsEverything) {
  proves("REMOVE-10");
  _sandbox.write(inHome("deploy/install.update.xml/file"), "in the way");
  const TreeSnapshot before = snapshotOf(_sandbox.path(kBundle));
  _sandbox.files().failAlways(FileOperation::kUnlink, EBUSY);

  EXPECT_FALSE(uninstall());

  _sandbox.files().stopFailing();
  EXPECT_TRUE(TreeDiff(before, snapshotOf(_sandbox.path(kBundle))).empty());
  EXPECT_THAT(_sandbox.children().started(), IsEmpty());
  EXPECT_THAT(linesAt(LogLevel::error),
              ElementsAre(::testing::HasSubstr("Device or resource busy"),
                          std::string("File install.update.xml not found. ") + kUndetermined));
}

TEST_F(HotfixUninstallTest, ConsumedManifestThatStaysIsToldAndStopsNothing) {
  InstanceService(home()).removeProvisionRCFile();
  _sandbox.files().failNext(FileOperation::kUnlink, EPERM);

  EXPECT_TRUE(uninstall());

  EXPECT_THAT(linesAt(LogLevel::error),
              ElementsAre("\"" + homePath("deploy/uninstall.hotfix.xml") +
                          "\" cannot be removed: Operation not permitted"));
}

TEST_F(HotfixUninstallTest, MissingOrAbsentHomeRemovesNothingSilently) {
  proves("REMOVE-11");
  for (const std::optional<std::string>& rcpHome :
       {std::optional<std::string>(), std::optional<std::string>(_sandbox.path("none"))}) {
    HotfixUninstall workflow(rcpHome, data());

    EXPECT_FALSE(workflow.uninstallOldHotfix());
  }
  EXPECT_THAT(_sandbox.log(), IsEmpty());
  EXPECT_FALSE(_sandbox.exists("none"));
}

TEST_F(HotfixUninstallTest, AbsentDataFolderIsTheHomesOwn) {
  proves("REMOVE-11");
  EXPECT_TRUE(uninstall(std::nullopt));

  EXPECT_EQ(_sandbox.children().started()[0].arguments.back(), homePath("systemdata"));
}

TEST_F(HotfixUninstallTest, LocaleIsReadOnceForBothRuns) {
  const std::string preferences = "Users/tester/Library/Preferences/.GlobalPreferences.plist";
  _sandbox.writePlist(preferences, {{"AppleLocale", "de_DE"}});
  _sandbox.children().onStart([&](const Command&) {
    _sandbox.writePlist(preferences, {{"AppleLocale", "fr_FR"}});
  });

  EXPECT_FALSE(uninstall());

  const Command run{launcher(), ProvisioningCommand::arguments("update", "de_DE", data())};
  EXPECT_THAT(_sandbox.children().started(), ElementsAre(run, run));
}

TEST_F(HotfixUninstallTest, SecondRemovalFindsNothing) {
  proves("REMOVE-7");
  EXPECT_TRUE(uninstall());
  const auto starts = _sandbox.children().started();

  EXPECT_FALSE(uninstall());

  EXPECT_EQ(_sandbox.children().started(), starts);
}

}  // namespace
}  // namespace installer::test
