#include <gmock/gmock.h>

#include "hotfix/instance/InstanceService.h"
#include "support/InstanceFixture.h"
#include "support/Proves.h"

namespace installer::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class LogCollectionTest : public InstanceFixture {
 protected:
  LogCollectionTest() {
    _sandbox.write(inHome("collectionutility.jar"), "jar");
    _sandbox.writePlist(std::string(kBundle) + "/Contents/Info.plist",
                        {{"CFBundleShortVersionString", "6.2.3"}});
    _sandbox.clock().set(2013, 3, 5, 9, 7);
    _sandbox.children().print(javaHomeTool(), "/Library/Java/Home");
  }

  std::string javaHomeTool() const { return _sandbox.paths().javaHomeTool; }
  std::string plugin(const std::string& relative) const {
    return _sandbox.paths().javaAppletPlugin + relative;
  }
  void collect(const std::optional<std::string>& data = "/data") {
    InstanceService service(home(), data);
    _sandbox.clearLog();
    service.collectLogFiles("Quillmere", "HOTFIX_INSTALL", "/tmp/trace.log");
  }
  std::vector<std::string> arguments(const std::string& version,
                                     const std::string& workspace) const {
    return {"-jar",
            homePath("collectionutility.jar"),
            "-productName",
            "Quillmere",
            "-productVersion",
            version,
            "-action",
            "HOTFIX_INSTALL",
            "-workspace",
            workspace,
            "-logLocation",
            "/tmp/trace.log",
            "-s"};
  }
  std::string startedJava() {
    const auto& started = _sandbox.children().started();
    return started.size() == 1 ? started[0].executable : "";
  }

  const std::string _begin =
      "5 Begin to call collection utility to gather log files for the HOTFIX_INSTALL operaton of "
      "Quillmere project.";
};

TEST_F(LogCollectionTest, ToolIsStartedWithItsFourteenArgumentsAndWaitedFor) {
  collect();

  EXPECT_THAT(_sandbox.children().started(),
              ElementsAre(Command{"/Library/Java/Home/bin/java", arguments("6.2.3", "/data")}));
  EXPECT_EQ(_sandbox.children().running(), 0U);
  EXPECT_THAT(_sandbox.children().asked(), ElementsAre(Command{javaHomeTool(), {}}));
  EXPECT_THAT(
      numberedLines(),
      ElementsAre(_begin, "6 _pathToRcphome is " + home() + ".", "6 productVersion is 6.2.3.",
                  "5 Successfully collect the log files and place them under " +
                      homePath("deploy/installHistory") +
                      " for the HOTFIX_INSTALL operaton of Quillmere project."));
}

TEST_F(LogCollectionTest, SuccessIsToldWhileTheToolStillRuns) {
  std::size_t linesAtStart = 0;
  _sandbox.children().onStart([&](const Command&) { linesAtStart = _sandbox.log().size(); });

  collect();

  EXPECT_EQ(linesAtStart + 1, _sandbox.log().size());
}

TEST_F(LogCollectionTest, WithoutTargetVersionAFreshStampIsPassed) {
  _sandbox.remove(std::string(kBundle) + "/Contents/Info.plist");

  collect();

  EXPECT_THAT(
      _sandbox.children().started(),
      ElementsAre(Command{"/Library/Java/Home/bin/java", arguments("0503130907", "/data")}));
}

TEST_F(LogCollectionTest, WorkspaceGivenWinsOverTheInstances) {
  proves("COLLECT-5");
  InstanceService(home(), "/data")
      .collectLogFiles("Quillmere", "HOTFIX_INSTALL", "/tmp/trace.log", "/ws");

  EXPECT_THAT(_sandbox.children().started(),
              ElementsAre(Command{"/Library/Java/Home/bin/java", arguments("6.2.3", "/ws")}));
}

TEST_F(LogCollectionTest, WorkspaceOfTheLauncherPropertiesIsTheLastResort) {
  proves("COLLECT-5");
  _sandbox.write(inHome("rcplauncher.properties"), "rcp.data=/from/file\n");

  collect(std::nullopt);

  EXPECT_THAT(
      _sandbox.children().started(),
      ElementsAre(Command{"/Library/Java/Home/bin/java", arguments("6.2.3", "/from/file")}));
}

TEST_F(LogCollectionTest, UnknownWorkspaceSkipsTheRunWithALine) {
  proves("COLLECT-6");
  collect(std::nullopt);

  EXPECT_THAT(_sandbox.children().started(), IsEmpty());
  EXPECT_THAT(
      numberedLines(),
      ElementsAre(_begin, "6 _pathToRcphome is " + home() + ".", "6 productVersion is 6.2.3.",
                  "4 No log files are gathered as the workspace is unknown."));
}

TEST_F(LogCollectionTest, UnknownProductSkipsTheRunWithALine) {
  proves("COLLECT-6");
  InstanceService(home(), "/data").collectLogFiles(std::nullopt, "A", "/l");

  EXPECT_THAT(_sandbox.children().started(), IsEmpty());
  EXPECT_EQ(numberedLines().back(), "4 No log files are gathered as the product is unknown.");
  EXPECT_THAT(linesAt(LogLevel::notice),
              ElementsAre("Begin to call collection utility to gather log files for the A operaton "
                          "of (null) project."));
}

TEST_F(LogCollectionTest, AppletPluginsHomeComesFirst) {
  _sandbox.writePlist(plugin("Contents/Info.plist"),
                      {{"CFBundleIdentifier", "COM.ORACLE.JAVA.javaappletplugin"}});

  collect();

  EXPECT_EQ(startedJava(), plugin("Contents/Home/bin/java"));
  EXPECT_THAT(_sandbox.children().asked(), IsEmpty());
}

TEST_F(LogCollectionTest, AppletPluginOfAnotherIdentifierDoesNotCount) {
  _sandbox.writePlist(plugin("Contents/Info.plist"), {{"CFBundleIdentifier", "com.other"}});

  collect();

  EXPECT_EQ(startedJava(), "/Library/Java/Home/bin/java");
}

TEST_F(LogCollectionTest, AppletPluginWithoutIdentifierDoesNotCount) {
  _sandbox.writePlist(plugin("Contents/Info.plist"), {{"CFBundleName", "Java"}});

  collect();

  EXPECT_EQ(startedJava(), "/Library/Java/Home/bin/java");
}

TEST_F(LogCollectionTest, JavaOfTheHostComesLast) {
  _sandbox.users().variables["JAVA_HOME"] = "/jdk";
  collect();
  EXPECT_EQ(startedJava(), "/Library/Java/Home/bin/java");

  _sandbox.children().printNothing(javaHomeTool());
  collect();
  EXPECT_EQ(_sandbox.children().started().back().executable, "/jdk/bin/java");
}

TEST_F(LogCollectionTest, EmptyFirstLineIsARelativeExecutable) {
  _sandbox.children().print(javaHomeTool(), "");

  collect();

  EXPECT_EQ(startedJava(), "bin/java");
}

TEST_F(LogCollectionTest, WithoutJavaTheCollectionIsSkipped) {
  _sandbox.children().printNothing(javaHomeTool());

  collect();

  EXPECT_THAT(_sandbox.children().started(), IsEmpty());
  EXPECT_THAT(numberedLines(), ElementsAre(_begin,
                                           "5 Can't find java home, skip log collection for the "
                                           "HOTFIX_INSTALL operaton of Quillmere project."));
}

TEST_F(LogCollectionTest, WithoutToolTheCollectionIsSkipped) {
  _sandbox.remove(inHome("collectionutility.jar"));

  collect();

  EXPECT_THAT(_sandbox.children().started(), IsEmpty());
  EXPECT_THAT(
      numberedLines(),
      ElementsAre(_begin, "6 _pathToRcphome is " + home() + ".",
                  "6 No log files are gathered as there is no collectionutility.jar under " +
                      home() + ". "));
}

TEST_F(LogCollectionTest, WithoutHomeTheSkipIsStillTold) {
  proves("COLLECT-8");
  InstanceService service(std::nullopt, "/data");
  _sandbox.clearLog();

  service.collectLogFiles("Quillmere", "HOTFIX_INSTALL", "/l");

  EXPECT_THAT(numberedLines(),
              ElementsAre(_begin, "6 _pathToRcphome is (null).",
                          "6 No log files are gathered as there is no collectionutility.jar under "
                          "(null). "));
}

TEST_F(LogCollectionTest, ToolThatCannotBeStartedIsAnErrorAndNoSuccess) {
  _sandbox.children().failToStart("/Library/Java/Home/bin/java");

  collect();

  EXPECT_EQ(numberedLines().back(),
            "3 Not able to start /Library/Java/Home/bin/java: No such file or directory.");
}

TEST_F(LogCollectionTest, AddonLogFileIsNamedAfterAddonAndAction) {
  proves("COLLECT-9");
  InstanceService service(home());
  _sandbox.clearLog();
  const std::string folder = _sandbox.paths().addonLogFolder;

  EXPECT_EQ(service.getAddonLogFile("Spelling", "UPDATE"), folder + "/rcp_Spelling_UPDATE.log");
  EXPECT_EQ(service.getAddonLogFile(std::nullopt, "INSTALL"), folder + "/rcp_addon_INSTALL.log");
  EXPECT_EQ(service.getAddonLogFile("a", std::nullopt), folder + "/rcp_a_.log");
  EXPECT_THAT(numberedLines(),
              ElementsAre("6 Addon Log Fie is " + folder + "/rcp_Spelling_UPDATE.log",
                          "6 Addon Log Fie is " + folder + "/rcp_addon_INSTALL.log",
                          "6 Addon Log Fie is " + folder + "/rcp_a_.log"));
  EXPECT_FALSE(_sandbox.exists(folder + "/rcp_Spelling_UPDATE.log"));
}

}  // namespace
}  // namespace installer::test
