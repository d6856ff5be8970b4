#include <gmock/gmock.h>

#include <algorithm>

#include "cli/Fixtures.h"

namespace installer::cli {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::SizeIs;

using Lines = std::vector<TraceLine>;

// A whole run from beginning to end: every log line in its place, and what is left behind.
class PlainRunTest : public InstallerTest {
 protected:
  Lines opening() const {
    return Lines{{"Info", "Begin to install hotfix."},
                 {"Info", "Caller didn't specify rcpdata, use rcp/systemdata"},
                 {"Info", "Check whether the unsupported characters are contained."},
                 {"Info", "Check whether the target platform is installed."},
                 {"Info", "Check the target platform under " + _instance.home() + "."}} +
           serviceLines() + Lines{{"Info", "Check whether platform is running."}};
  }

  Lines gate(const std::string& installed) const {
    return Lines{{"Info", "Check the version of hotfix"}} + serviceLines() +
           Lines{{"Info", "Current hotfix version: 1.5."},
                 {"Info", "Installed hotfix version: " + installed + "."}};
  }

  // One installNewHotfix; a first one finds the old key store file.
  Lines workflow() const {
    const std::string deploy = "/Volumes/HF/install/Fix.pkg/../deploy";
    return Lines{
        {"Info", "Copy install manifest to " + _instance.deploy("install.update.xml") + "."},
        {"Info", "Update ${installer.root}."},
        {"Info", "Get ${installer.root} : file:/Volumes/HF/install/Fix.pkg."},
        {"Info", "Save install manifest."},
        {"Info", "Copy install manifest."},
        {"Info", "Begin to backup install manifest."},
        {"Info", "Process plugin_customization.ini. "},
        {"Info", "Copy .keystore file."},
        {"Info", ".keystore source files are in " + deploy + "."},
        {"Info",
         "Delete existing keystore files '.keystore' from " + _instance.deploy(".keystore") + "."},
        {"Info", "Copy keystore file '.keystore' from " + deploy + "/.keystore to " +
                     _instance.deploy(".keystore") + "."},
        {"Info", "Copy extras file."},
        {"Info",
         "Begin to copy files from " + deploy + "/extras to " + _instance.deploy("extras") + " "},
        {"Info", "Start provisioning system. "},
        {"Info", "Begin to start provisoning sytem to install features."},
        {"Info", "Begin to update new hotfix version."},
        {"Info", "workspace is " + _instance.data()}};
  }

  Lines collection() const {
    return serviceLines() +
           Lines{{"Notice",
                  "Begin to call collection utility to gather log files for the HOTFIX_INSTALL "
                  "operaton of Quillmere project."},
                 {"Info", "_pathToRcphome is " + _instance.home() + "."},
                 {"Info", "productVersion is 8.5.2."},
                 {"Notice", "Successfully collect the log files and place them under " +
                                _instance.deploy("installHistory") +
                                " for the HOTFIX_INSTALL operaton of Quillmere project."}};
  }
};

TEST_F(PlainRunTest, SuccessLogsEveryStepInOrder) {
  installJava();

  const RunResult result = install();

  EXPECT_EQ(0, result.status) << result.err;
  const Lines services = serviceLines();
  const Lines expected = opening() + gate("(null)") + Lines{{"Info", "Success"}} + services +
                         services + services + workflow() + collection();
  EXPECT_EQ(expected, _sandbox.traceWithoutProcesses());
}

TEST_F(PlainRunTest, SuccessMakesSixServices) {
  ASSERT_EQ(0, install().status);

  const auto texts = _sandbox.texts();
  EXPECT_EQ(
      6, std::count(texts.begin(), texts.end(), "The pathToRcphome is: " + _instance.home() + "."));
}

TEST_F(PlainRunTest, SuccessPrintsNothing) {
  const RunResult result = install();

  EXPECT_EQ("", result.out);
  EXPECT_EQ("", result.err);
}

TEST_F(PlainRunTest, SuccessLeavesCodeZeroAndNoMarker) {
  ASSERT_EQ(0, install().status);

  EXPECT_EQ((ErrorRecord{0, {}}), errorRecord());
  EXPECT_FALSE(_sandbox.exists(kMarker));
}

TEST_F(PlainRunTest, SuccessStartsTheLauncherTwiceThenTheCollectionTool) {
  installJava();

  ASSERT_EQ(0, install().status);

  std::vector<std::string> roles;
  for (const ChildRecord& child : _sandbox.children()) roles.push_back(child.role);
  EXPECT_THAT(roles, ElementsAre("rcplauncher", "rcplauncher", "java_home", "java"));
}

TEST_F(PlainRunTest, UninstallLogsEveryStepInOrder) {
  installJava();
  recordHotfix("1.4");

  const RunResult result = install();

  EXPECT_EQ(0, result.status) << result.err;
  const Lines services = serviceLines();
  const Lines expected =
      opening() + gate("1.4") + Lines{{"Info", "Success"}} + services +
      Lines{{"Info", "Found another hot fix, uninstall it before installing the new hot fix"}} +
      services +
      Lines{{"Info", "Copy install manifest to " + _instance.deploy("install.update.xml") + "."},
            {"Info", "Launch platform to uninstall provisioned features..."}} +
      services + services + workflow() + collection();
  EXPECT_EQ(expected, _sandbox.traceWithoutProcesses());
}

TEST_F(PlainRunTest, UninstallMakesSevenServices) {
  recordHotfix("1.4");

  ASSERT_EQ(0, install().status);

  const auto texts = _sandbox.texts();
  EXPECT_EQ(
      7, std::count(texts.begin(), texts.end(), "The pathToRcphome is: " + _instance.home() + "."));
}

TEST_F(PlainRunTest, MissingWorkspaceFlagDoublesTheWorkflowAndItsLines) {
  installJava();
  _sandbox.remove(_instance.data() + "/.config");

  const RunResult result = install();

  EXPECT_EQ(0, result.status) << result.err;
  const Lines services = serviceLines();
  const Lines expected =
      opening() + gate("(null)") + Lines{{"Info", "Success"}} + services + services + services +
      Lines{{"Info",
             "Hot fix workspace flag file is missing, launching install new hotfix "
             "twice"}} +
      workflow() + workflow() + collection();
  EXPECT_EQ(expected, _sandbox.traceWithoutProcesses());
  EXPECT_THAT(_sandbox.children("rcplauncher"), SizeIs(3));
}

TEST_F(PlainRunTest, UnsupportedCharacterLogsTheWholeFailurePath) {
  installJava();
  _sandbox.makeFolder("/Applications/A=B");

  const RunResult result = _sandbox.run({_package.folder, "/Applications/A=B"});

  EXPECT_EQ(1, result.status);
  const std::string home = "/Applications/A=B/Quillmere.app/Contents/MacOS/rcp";
  const Lines service{{"Info", "The pathToRcphome is: " + home + "."},
                      {"Info", "newInstallLocation : (null)."},
                      {"Warning", "Can not copy to newInstallLocation because its nil!"}};
  const TraceLine noLauncher{
      "Error", "Not able to start " + home + "/rcplauncher: No such file or directory."};
  const Lines expected = Lines{{"Info", "Begin to install hotfix."},
                               {"Info", "Caller didn't specify rcpdata, use rcp/systemdata"},
                               {"Info", "Check whether the unsupported characters are contained."},
                               {"Info", "Not success"}} +
                         service + Lines{noLauncher, noLauncher} + service +
                         Lines{{"Notice",
                                "Begin to call collection utility to gather log files for the "
                                "HOTFIX_INSTALL operaton of Quillmere project."},
                               {"Info", "_pathToRcphome is " + home + "."},
                               {"Info",
                                "No log files are gathered as there is no collectionutility.jar "
                                "under " +
                                    home + ". "}};
  EXPECT_EQ(expected, _sandbox.traceWithoutProcesses());
}

TEST_F(PlainRunTest, MissingInstanceLogsTheWholeFailurePath) {
  installJava();
  _sandbox.remove(_instance.deploy("install.xml"));

  const RunResult result = install();

  EXPECT_EQ(1, result.status);
  const Lines services = serviceLines();
  const Lines expected =
      (Lines{{"Info", "Begin to install hotfix."},
             {"Info", "Caller didn't specify rcpdata, use rcp/systemdata"},
             {"Info", "Check whether the unsupported characters are contained."},
             {"Info", "Check whether the target platform is installed."},
             {"Info", "Check the target platform under " + _instance.home() + "."}}) +
      services + Lines{{"Info", "Not success"}} + services + collection();
  EXPECT_EQ(expected, _sandbox.traceWithoutProcesses());
}

TEST_F(PlainRunTest, RunningApplicationLogsTheWholeFailurePath) {
  installJava();
  const std::string program = _instance.bundle + "/Contents/MacOS/Quillmere";
  _sandbox.copyChildProgram(program);
  RunOptions options;
  options.background = {{program, "--idle"}};

  const RunResult result = install(options);

  EXPECT_EQ(1, result.status);
  const Lines expected =
      opening() +
      Lines{{"Info", "The target platform Quillmere is running."}, {"Info", "Not success"}} +
      serviceLines() + collection();
  EXPECT_EQ(expected, _sandbox.traceWithoutProcesses());
}

TEST_F(PlainRunTest, HigherHotfixLogsTheWholeFailurePath) {
  installJava();
  recordHotfix("1.6");

  const RunResult result = install();

  EXPECT_EQ(1, result.status);
  const Lines expected =
      opening() + gate("1.6") +
      Lines{{"Error", "Higher version hotfix has been installed."}, {"Info", "Not success"}} +
      serviceLines() + collection();
  EXPECT_EQ(expected, _sandbox.traceWithoutProcesses());
}

TEST_F(PlainRunTest, FailurePathMakesOneServiceForItselfAndOneForTheCollection) {
  _sandbox.remove(_instance.deploy("install.xml"));

  ASSERT_EQ(1, install().status);

  const auto texts = _sandbox.texts();
  EXPECT_EQ(
      3, std::count(texts.begin(), texts.end(), "The pathToRcphome is: " + _instance.home() + "."));
}

TEST_F(PlainRunTest, SecondRunUninstallsAndInstallsTheSameHotfixAgain) {
  ASSERT_EQ(0, install().status);

  const RunResult second = install();

  EXPECT_EQ(0, second.status);
  EXPECT_EQ("The provisioning operations have completed successfully.\n", second.out);
  EXPECT_EQ("1.5", recorded("hotfixVersion"));
}

TEST_F(PlainRunTest, SuccessLeavesOnlyItsOwnFilesInTmp) {
  ASSERT_EQ(0, install().status);

  EXPECT_THAT(_sandbox.list("/tmp"),
              ElementsAre("INSTALLATION_INTERNAL_PASTEBOARD",
                          "com.kiv.rcp.platform.internal.configuration", "install_trace.log"));
}

TEST_F(PlainRunTest, FailureLeavesOnlyItsOwnFilesInTmp) {
  _sandbox.remove(_instance.deploy("install.xml"));

  ASSERT_EQ(1, install().status);

  EXPECT_THAT(_sandbox.list("/tmp"), ElementsAre("INSTALLATION_INTERNAL_PASTEBOARD",
                                                 "install_trace.log", "quillmere.hotfix.error"));
}

TEST_F(PlainRunTest, SuccessChangesTheInstanceInTheseEntriesOnly) {
  ASSERT_EQ(0, install().status);

  EXPECT_THAT(_sandbox.list(_instance.home()),
              ElementsAre("collectionutility.jar", "deploy", "eclipse", "installInfo.plist",
                          "plugin_customization.ini", "rcplauncher", "rcplauncher.properties",
                          "systemdata"));
  EXPECT_THAT(_sandbox.list(_instance.deploy("")),
              ElementsAre(".keystore", "extras", "install.0101200000.xml", "install.update.xml",
                          "install.xml", "uninstall.hotfix.xml"));
  EXPECT_THAT(_sandbox.list(_instance.bundle + "/Contents/MacOS"),
              ElementsAre(".provisioning_rc", "rcp", "shared"));
}

TEST_F(PlainRunTest, PackageIsLeftUntouched) {
  const auto before = _sandbox.tree("/Volumes");

  ASSERT_EQ(0, install().status);

  EXPECT_EQ(before, _sandbox.tree("/Volumes"));
}

TEST_F(PlainRunTest, LibraryIsLeftUntouched) {
  registerProduct("Quillmere", ListValue::dictionary({{"pathToProduct", ListValue::string("/x")}}));
  const auto before = _sandbox.tree("/Library");

  ASSERT_EQ(0, install().status);

  EXPECT_EQ(before, _sandbox.tree("/Library"));
}

TEST_F(PlainRunTest, SystemLogReceivesTheSameLines) {
  RunOptions options;
  options.systemLog = true;

  const RunResult result = install(options);

  const auto& received = result.systemLog;
  const auto trace = _sandbox.trace();
  ASSERT_EQ(trace.size(), received.size());
  for (std::size_t i = 0; i < trace.size(); ++i) {
    EXPECT_THAT(received[i], ::testing::HasSubstr("HotfixInstaller"));
    EXPECT_THAT(received[i], ::testing::EndsWith(trace[i].text));
  }
}

}  // namespace
}  // namespace installer::cli
