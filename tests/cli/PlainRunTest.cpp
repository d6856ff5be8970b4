#include <gmock/gmock.h>

#include <algorithm>

#include "cli/Fixtures.h"
#include "support/Proves.h"

namespace installer::cli {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::SizeIs;

using Lines = std::vector<TraceLine>;
using Tree = std::map<std::string, std::string>;

const std::string kRcp = "/Contents/MacOS/rcp/";

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

  // --- The bundle's entries, as CliSandbox::tree() tells them ------------------------------------

  static std::string given(const std::string& kind, const std::string& content) {
    return kind + (CliSandbox::hasManyUsers() ? " 775 1000:80 " : " 775 0:0 ") + content;
  }

  // The entry with the mode and owner that a run gives it. A link has no mode of its own.
  static std::string givenToTheUser(const std::string& entry) {
    const std::string kind = entry.substr(0, entry.find(' '));
    const std::size_t content = entry.find(' ', entry.find(':')) + 1;
    std::string text = given(kind, entry.substr(content));
    if (kind == "link") text.replace(text.find("775"), 3, "777");
    return text;
  }

  static Tree givenToTheUser(Tree entries) {
    for (auto& [path, entry] : entries)
      if (path.starts_with(kRcp) || path.starts_with("/Contents/MacOS/shared/"))
        entry = givenToTheUser(entry);
    return entries;
  }

  // The bundle's entries, the record among them in the tests' own layout.
  Tree bundle() const {
    Tree entries = _sandbox.tree(_instance.bundle);
    const auto info = entries.find(kRcp + "installInfo.plist");
    if (info != entries.end())
      info->second.replace(info->second.find("<?xml"), std::string::npos,
                           xmlList(listAt(_instance.info())));
    return entries;
  }

  // The value of that line of rcplauncher.properties.
  std::string property(const std::string& key) const {
    const std::string text = _sandbox.readFile(_instance.launcherProperties()).value_or("");
    const std::size_t start = text.find(key + "=") + key.size() + 1;
    return text.substr(start, text.find('\n', start) - start);
  }

  Tree changedByTheHotfix(const Tree& before, const std::string& stamp) const {
    const std::string folder = given("folder", "");
    Tree entries = givenToTheUser(before);
    entries["/Contents/MacOS/.provisioning_rc"] = "file 644 0:0 rc=0\n";
    entries[kRcp + "deploy/.keystore"] = given("file", "new key\n");
    entries[kRcp + "deploy/extras"] = folder;
    entries[kRcp + "deploy/extras/readme.txt"] = given("file", "extra\n");
    entries[kRcp + "deploy/install.0101200000.xml"] = given("file", kInstanceManifest);
    entries[kRcp + "deploy/install.update.xml"] = given("file", resolvedManifest());
    entries[kRcp + "deploy/uninstall.hotfix.xml"] = given("file", kUninstallManifest);
    entries[kRcp + "installInfo.plist"] = given("file", hotfixInfo());
    entries[kRcp + "plugin_customization.ini"] = given("file", "a=1\nb=3\nc=4\n");
    entries[kRcp + "rcplauncher.properties"] =
        given("file", "provisioning.manifest.version=" + stamp +
                          "\nrcp.install.id=0101200000\nrcp.data=${env.HOME}/workspace\n");
    return entries;
  }

  std::string resolvedManifest() const {
    std::string text = kSimpleManifest;
    const std::string variable = "${installer.root}";
    return text.replace(text.find(variable), variable.size(), "file:" + _package.folder);
  }

  static std::string hotfixInfo() {
    return xmlList(ListValue::dictionary(
        {{"hotfixVersion", ListValue::string("1.5")},
         {"SKIPRUNNINGCHECK", ListValue::string("false")},
         {"installedHotfixBundleID", ListValue::string("com.kiv.hotfix.fifteen")}}));
  }
};

TEST_F(PlainRunTest, SuccessLogsEveryStepInOrder) {
  proves("RUN-3");
  installJava();

  const RunResult result = install();

  EXPECT_EQ(0, result.status) << result.err;
  const Lines services = serviceLines();
  const Lines expected = opening() + gate("(null)") + Lines{{"Info", "Success"}} + services +
                         services + services + workflow() + collection();
  EXPECT_EQ(expected, _sandbox.traceWithoutProcesses());
}

TEST_F(PlainRunTest, SuccessMakesSixServices) {
  proves("SUCCESS-8");
  ASSERT_EQ(0, install().status);

  const auto texts = _sandbox.texts();
  EXPECT_EQ(
      6, std::count(texts.begin(), texts.end(), "The pathToRcphome is: " + _instance.home() + "."));
}

TEST_F(PlainRunTest, SuccessPrintsNothing) {
  proves("RUN-2");
  const RunResult result = install();

  EXPECT_EQ("", result.out);
  EXPECT_EQ("", result.err);
}

TEST_F(PlainRunTest, SuccessLeavesCodeZeroAndNoMarker) {
  proves("RECORD-4");
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
  proves("SUCCESS-8");
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
  proves("FAILURE-1");
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
  proves("FAILURE-1");
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
  proves("FAILURE-1");
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
  proves("FAILURE-1");
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
  proves("FAILURE-5");
  _sandbox.remove(_instance.deploy("install.xml"));

  ASSERT_EQ(1, install().status);

  const auto texts = _sandbox.texts();
  EXPECT_EQ(
      3, std::count(texts.begin(), texts.end(), "The pathToRcphome is: " + _instance.home() + "."));
}

TEST_F(PlainRunTest, SecondRunUninstallsAndInstallsTheSameHotfixAgain) {
  proves("SUCCESS-3");
  ASSERT_EQ(0, install().status);

  const RunResult second = install();

  EXPECT_EQ(0, second.status);
  EXPECT_EQ("The provisioning operations have completed successfully.\n", second.out);
  EXPECT_EQ("1.5", recorded("hotfixVersion"));
}

TEST_F(PlainRunTest, SuccessLeavesOnlyItsOwnFilesInTmp) {
  proves("RUN-4");
  ASSERT_EQ(0, install().status);

  EXPECT_THAT(_sandbox.list("/tmp"),
              ElementsAre("INSTALLATION_INTERNAL_PASTEBOARD",
                          "com.kiv.rcp.platform.internal.configuration", "install_trace.log"));
}

TEST_F(PlainRunTest, FailureLeavesOnlyItsOwnFilesInTmp) {
  proves("RUN-4");
  _sandbox.remove(_instance.deploy("install.xml"));

  ASSERT_EQ(1, install().status);

  EXPECT_THAT(_sandbox.list("/tmp"), ElementsAre("INSTALLATION_INTERNAL_PASTEBOARD",
                                                 "install_trace.log", "quillmere.hotfix.error"));
}

TEST_F(PlainRunTest, SuccessChangesTheInstanceInTheseEntriesOnly) {
  proves("RUN-5");
  _sandbox.makeLink(_instance.home() + "/link", "rcplauncher");
  const auto before = bundle();
  const StampWatch watch;

  ASSERT_EQ(0, install().status);

  const std::string stamp = property("provisioning.manifest.version");
  const auto after = bundle();
  EXPECT_THAT(after, ::testing::ContainerEq(changedByTheHotfix(before, stamp)));
  EXPECT_TRUE(watch.covers(stamp));
}

TEST_F(PlainRunTest, FailureChangesTheInstanceInTheseEntriesOnly) {
  proves("FAILURE-4");
  recordHotfix("1.6");
  const auto before = bundle();

  ASSERT_EQ(1, install().status);

  const auto after = bundle();
  Tree expected = givenToTheUser(before);
  expected[kRcp + "rcplauncher.properties"] =
      given("file", "provisioning.manifest.version=0101200000\nrcp.install.id=" +
                        property("rcp.install.id") + "\nrcp.data=${env.HOME}/workspace\n");
  expected["/Contents/MacOS/.provisioning_rc"] = "file 644 0:0 rc=0\n";
  EXPECT_THAT(after, ::testing::ContainerEq(expected));
}

TEST_F(PlainRunTest, PackageIsLeftUntouched) {
  proves("RUN-4");
  const auto before = _sandbox.tree("/Volumes");

  ASSERT_EQ(0, install().status);

  EXPECT_EQ(before, _sandbox.tree("/Volumes"));
}

TEST_F(PlainRunTest, LibraryIsLeftUntouched) {
  proves("RUN-4");
  registerProduct("Quillmere", ListValue::dictionary({{"pathToProduct", ListValue::string("/x")}}));
  const auto before = _sandbox.tree("/Library");

  ASSERT_EQ(0, install().status);

  EXPECT_EQ(before, _sandbox.tree("/Library"));
}

TEST_F(PlainRunTest, SystemLogReceivesTheSameLines) {
  proves("LOG-2");
  RunOptions options;
  options.systemLog = true;

  const RunResult result = install(options);

  const auto& received = result.systemLog;
  const auto trace = _sandbox.trace();
  ASSERT_EQ(trace.size(), received.size());
  for (std::size_t i = 0; i < trace.size(); ++i) {
    EXPECT_THAT(received[i], ::testing::HasSubstr(" HotfixInstaller["));
    EXPECT_THAT(received[i], ::testing::EndsWith(trace[i].text));
  }
}

}  // namespace
}  // namespace installer::cli
