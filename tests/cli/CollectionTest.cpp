#include <gmock/gmock.h>

#include "cli/Fixtures.h"
#include "support/Proves.h"

namespace installer::cli {
namespace {

using ::testing::AllOf;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::IsSupersetOf;
using ::testing::Not;
using ::testing::SizeIs;
using ::testing::StartsWith;

// The platform's own collection of the run's logs, at the end of every run.
class CollectionTest : public InstallerTest {
 protected:
  static constexpr const char* kPlugin = "/Library/Internet Plug-Ins/JavaAppletPlugin.plugin";

  void installPlugin(const std::string& identifier) {
    _sandbox.writeFile(
        std::string(kPlugin) + "/Contents/Info.plist",
        xmlList(ListValue::dictionary({{"CFBundleIdentifier", ListValue::string(identifier)}})));
    _sandbox.installChild(std::string(kPlugin) + "/Contents/Home/bin/java");
  }

  ChildRecord java() const {
    const auto calls = _sandbox.children("java");
    EXPECT_THAT(calls, SizeIs(1));
    return calls.empty() ? ChildRecord{} : calls[0];
  }

  std::vector<std::string> arguments(const std::string& version,
                                     const std::string& workspace) const {
    return {"-jar",      _instance.tool(),  "-productName",
            "Quillmere", "-productVersion", version,
            "-action",   "HOTFIX_INSTALL",  "-workspace",
            workspace,   "-logLocation",    "/tmp/install_trace.log",
            "-s"};
  }

  std::string skipped() const {
    return "Can't find java home, skip log collection for the HOTFIX_INSTALL operaton of Quillmere "
           "project.";
  }
  std::string placed() const {
    return "Successfully collect the log files and place them under " +
           _instance.deploy("installHistory") +
           " for the HOTFIX_INSTALL operaton of Quillmere project.";
  }
};

TEST_F(CollectionTest, ToolIsStartedWithThirteenArguments) {
  proves("COLLECT-2");
  installJava();

  ASSERT_EQ(0, install().status);

  EXPECT_EQ(arguments("8.5.2", _instance.data()), java().arguments);
  EXPECT_THAT(java().arguments, SizeIs(13));
  EXPECT_EQ("/java/bin/java", java().executable);
}

TEST_F(CollectionTest, ToolsOutputIsDiscardedAndItsStatusIgnored) {
  proves("COLLECT-1");
  installJava();
  _sandbox.script("java", ChildScript().print("noise").printError("noise").exit(9));

  const RunResult result = install();

  EXPECT_EQ(0, result.status);
  EXPECT_EQ("", result.out);
  EXPECT_EQ("", result.err);
  EXPECT_EQ("/dev/null", java().descriptors.at(1));
  EXPECT_EQ("/dev/null", java().descriptors.at(2));
  EXPECT_THAT(java().descriptors, SizeIs(3));
}

TEST_F(CollectionTest, ToolReadsTheWholeTraceBeforeTheLastLine) {
  proves("COLLECT-3");
  installJava();
  _sandbox.script("java", ChildScript().snapshot("/tmp/install_trace.log"));

  ASSERT_EQ(0, install().status);

  const auto seen = java().fileAt("/tmp/install_trace.log");
  ASSERT_TRUE(seen.has_value());
  EXPECT_THAT(*seen, HasSubstr("productVersion is 8.5.2."));
}

TEST_F(CollectionTest, SuccessIsToldBeforeTheToolEnds) {
  proves("COLLECT-3");
  installJava();
  // Waits for a file that only the test makes, after it has seen the line.
  _sandbox.script("java", ChildScript().await("/tmp/go"));
  RunningProgram run = _sandbox.start({_package.folder, _destination});

  EXPECT_TRUE(comesTrue(
      [&] { return _sandbox.readFile(kTrace).value_or("").find(placed()) != std::string::npos; }));
  _sandbox.writeFile("/tmp/go", "");

  EXPECT_EQ(0, run.finish().status);
}

TEST_F(CollectionTest, InstallerWaitsForTheTool) {
  proves("COLLECT-1");
  installJava();
  _sandbox.script("java", ChildScript().await("/tmp/go").write("/tmp/done", "").exit(0));
  RunningProgram run = _sandbox.start({_package.folder, _destination});

  EXPECT_TRUE(comesTrue([&] { return _sandbox.children("java").size() == 1; }));
  _sandbox.writeFile("/tmp/go", "");

  EXPECT_EQ(0, run.finish().status);
  EXPECT_TRUE(_sandbox.exists("/tmp/done")) << "ended although the tool was still at work";
}

TEST_F(CollectionTest, GivenDataIsTheWorkspace) {
  installJava();
  _sandbox.makeFolder("/Users/alice/ws/.config");

  ASSERT_EQ(0, installWithData("/Users/alice/ws").status);

  EXPECT_EQ(arguments("8.5.2", "/Users/alice/ws"), java().arguments);
}

TEST_F(CollectionTest, FailedRunCollectsToo) {
  proves("FAILURE-7", "COLLECT-1");
  installJava();
  _sandbox.remove(_instance.deploy("install.xml"));

  ASSERT_EQ(1, install().status);

  EXPECT_EQ(arguments("8.5.2", _instance.data()), java().arguments);
}

TEST_F(CollectionTest, CollectionComesLast) {
  proves("COLLECT-1");
  installJava();
  _sandbox.remove(_instance.deploy("install.xml"));
  _sandbox.script("java", ChildScript().snapshot(kMarker));

  ASSERT_EQ(1, install().status);

  EXPECT_EQ("F", java().snapshots.at(kMarker));
  EXPECT_EQ("java", _sandbox.children().back().role);
}

// --- Product version -----------------------------------------------------------------------------

TEST_F(CollectionTest, WithoutApplicationVersionAStampStandsIn) {
  proves("COLLECT-4");
  installJava();
  const StampWatch watch;
  _sandbox.remove(_instance.bundle + "/Contents/Info.plist");

  ASSERT_EQ(0, install().status);

  const auto given = java().arguments;
  ASSERT_THAT(given, SizeIs(13));
  EXPECT_TRUE(watch.covers(given[5])) << given[5];
  EXPECT_THAT(_sandbox.texts(), Contains("productVersion is " + given[5] + "."));
}

TEST_F(CollectionTest, VersionThatIsNoTextIsAbsent) {
  proves("COLLECT-4");
  installJava();
  const StampWatch watch;
  _sandbox.writeFile(
      _instance.bundle + "/Contents/Info.plist",
      xmlList(ListValue::dictionary({{"CFBundleShortVersionString", ListValue::integer(8)}})));

  ASSERT_EQ(0, install().status);

  EXPECT_TRUE(watch.covers(java().arguments.at(5)));
}

TEST_F(CollectionTest, HomeOutsideContentsMacOSHasNoVersion) {
  proves("COLLECT-4");
  installJava();
  const StampWatch watch;
  _package.set("frameworkPath", "Contents/Frameworks");
  writePreferences();
  const std::string home = _instance.bundle + "/Contents/Frameworks/rcp";
  _sandbox.writeFile(home + "/deploy/install.xml", "x");
  _sandbox.writeFile(home + "/collectionutility.jar", "jar");

  (void)install();  // what it leaves is looked at

  EXPECT_TRUE(watch.covers(java().arguments.at(5)));
  EXPECT_EQ(home + "/collectionutility.jar", java().arguments.at(1));
}

TEST_F(CollectionTest, InnermostBundleGivesTheVersion) {
  proves("COLLECT-4");
  installJava();
  Instance inner{_instance.bundle + "/Contents/MacOS/Inner.app"};
  buildInstance(inner);
  _sandbox.writeFile(inner.bundle + "/Contents/Info.plist",
                     xmlList(ListValue::dictionary(
                         {{"CFBundleShortVersionString", ListValue::string("inner 3")}})));
  _package.set("bundleName", "Inner");
  writePreferences();

  EXPECT_EQ(0, _sandbox.run({_package.folder, _instance.bundle + "/Contents/MacOS"}).status);

  EXPECT_EQ("inner 3", java().arguments.at(5));
}

TEST_F(CollectionTest, EmptyVersionIsPassedOn) {
  proves("COLLECT-4");
  installJava();
  _sandbox.writeFile(
      _instance.bundle + "/Contents/Info.plist",
      xmlList(ListValue::dictionary({{"CFBundleShortVersionString", ListValue::string("")}})));

  ASSERT_EQ(0, install().status);

  EXPECT_EQ("", java().arguments.at(5));
}

// --- Missing tool --------------------------------------------------------------------------------

TEST_F(CollectionTest, MissingToolIsOneInfoLineAndNoLaunch) {
  proves("COLLECT-7");
  installJava();
  _sandbox.remove(_instance.tool());

  ASSERT_EQ(0, install().status);

  EXPECT_THAT(_sandbox.children("java"), IsEmpty());
  EXPECT_EQ((TraceLine{"Info",
                       "No log files are gathered as there is no collectionutility.jar "
                       "under " +
                           _instance.home() + ". "}),
            _sandbox.trace().back());
  EXPECT_THAT(_sandbox.texts(), Not(Contains(placed())));
}

TEST_F(CollectionTest, UnknownHomeIsToldAsNull) {
  proves("COLLECT-8");
  installJava();

  EXPECT_EQ(1, _sandbox.run({"/no/package", "/Applications"}).status);

  EXPECT_THAT(_sandbox.texts("Notice"),
              Contains("Begin to call collection utility to gather log files for the "
                       "HOTFIX_INSTALL operaton of (null) project."));
  EXPECT_THAT(_sandbox.texts("Info"), Contains("_pathToRcphome is (null)."));
  EXPECT_THAT(_sandbox.children("java"), IsEmpty());
}

// --- Finding Java --------------------------------------------------------------------------------

TEST_F(CollectionTest, PluginComesBeforeTheTool) {
  proves("JAVA-1");
  installJava();
  installPlugin("com.oracle.java.JavaAppletPlugin");

  ASSERT_EQ(0, install().status);

  EXPECT_EQ(std::string(kPlugin) + "/Contents/Home/bin/java", java().executable);
  EXPECT_THAT(_sandbox.children("java_home"), IsEmpty());
}

TEST_F(CollectionTest, PluginsIdentifierCountsWithoutCase) {
  proves("JAVA-1");
  installPlugin("COM.ORACLE.JAVA.JAVAAPPLETPLUGIN");

  ASSERT_EQ(0, install().status);

  EXPECT_EQ(std::string(kPlugin) + "/Contents/Home/bin/java", java().executable);
}

TEST_F(CollectionTest, PluginOfAnotherIdentifierIsPassedOver) {
  proves("JAVA-1");
  installJava();
  installPlugin("com.oracle.java.JavaAppletPlugin2");

  ASSERT_EQ(0, install().status);

  EXPECT_EQ("/java/bin/java", java().executable);
}

TEST_F(CollectionTest, PluginWithoutIdentifierIsPassedOver) {
  proves("JAVA-1");
  installJava();
  _sandbox.writeFile(std::string(kPlugin) + "/Contents/Info.plist", "damaged");

  ASSERT_EQ(0, install().status);

  EXPECT_EQ("/java/bin/java", java().executable);
}

TEST_F(CollectionTest, FirstLineOfTheToolCounts) {
  proves("JAVA-2");
  installJava();
  _sandbox.script("java_home", ChildScript().print("/java\n/other\n").printError("noise"));

  const RunResult result = install();

  EXPECT_EQ("/java/bin/java", java().executable);
  EXPECT_EQ("", result.err);
  EXPECT_THAT(_sandbox.children("java_home").at(0).arguments, IsEmpty());
}

TEST_F(CollectionTest, LineWithoutLineFeedCounts) {
  proves("JAVA-2");
  installJava();
  _sandbox.script("java_home", ChildScript().print("/java"));

  ASSERT_EQ(0, install().status);

  EXPECT_EQ("/java/bin/java", java().executable);
}

TEST_F(CollectionTest, LineOfAFailedToolCounts) {
  proves("JAVA-2");
  installJava();
  _sandbox.script("java_home", ChildScript().print("/java\n").exit(1));

  ASSERT_EQ(0, install().status);

  EXPECT_EQ("/java/bin/java", java().executable);
}

TEST_F(CollectionTest, BlanksOfTheLineStay) {
  proves("JAVA-2");
  installJava();
  _sandbox.installChild("/ja va /bin/java");
  _sandbox.script("java_home", ChildScript().print("/ja va \n"));

  ASSERT_EQ(0, install().status);

  EXPECT_EQ("/ja va /bin/java", java().executable);
}

TEST_F(CollectionTest, EmptyLineGivesARelativeExecutable) {
  proves("JAVA-2");
  installJava();
  _sandbox.script("java_home", ChildScript().print("\n"));
  _sandbox.installChild("/Users/alice/bin/java");
  RunOptions options;
  options.directory = "/Users/alice";

  ASSERT_EQ(0, install(options).status);

  EXPECT_EQ("bin/java", java().executable);
}

TEST_F(CollectionTest, LongLineIsCutAt1022Characters) {
  proves("JAVA-2");
  installJava();
  std::string home = "/";
  while (home.size() < 1022) home += home.size() % 200 == 0 ? "/" : "j";
  _sandbox.installChild(home + "/bin/java");
  _sandbox.script("java_home", ChildScript().print(home + "tail that is cut\n"));

  ASSERT_EQ(0, install().status);

  EXPECT_EQ(home + "/bin/java", java().executable);
}

TEST_F(CollectionTest, NoJavaAnywhereIsTheSkipNotice) {
  proves("COLLECT-7");
  ASSERT_EQ(0, install().status);

  EXPECT_EQ((TraceLine{"Notice", skipped()}), _sandbox.trace().back());
  EXPECT_THAT(_sandbox.texts(), Not(Contains(StartsWith("_pathToRcphome is "))));
}

TEST_F(CollectionTest, SilentToolAndNoOtherJavaIsTheSkipNotice) {
  proves("COLLECT-7");
  _sandbox.installChild("/usr/libexec/java_home");

  ASSERT_EQ(0, install().status);

  EXPECT_EQ((TraceLine{"Notice", skipped()}), _sandbox.trace().back());
}

TEST_F(CollectionTest, JavaHomeOfTheEnvironmentIsTheThirdChoice) {
  _sandbox.installChild("/jdk/bin/java");
  RunOptions options;
  options.set("JAVA_HOME", "/jdk");

  ASSERT_EQ(0, install(options).status);

  EXPECT_EQ("/jdk/bin/java", java().executable);
}

TEST_F(CollectionTest, ToolComesBeforeTheEnvironment) {
  proves("JAVA-3");
  installJava();
  _sandbox.installChild("/jdk/bin/java");
  RunOptions options;
  options.set("JAVA_HOME", "/jdk");

  ASSERT_EQ(0, install(options).status);

  EXPECT_EQ("/java/bin/java", java().executable);
}

TEST_F(CollectionTest, JavaOnThePathIsTheLastChoiceWithLinksResolved) {
  proves("JAVA-4");
  _sandbox.installChild("/opt/jdk/bin/java");
  _sandbox.makeLink("/usr/bin/java", "/opt/jdk/bin/java");

  ASSERT_EQ(0, install().status);

  EXPECT_EQ("/opt/jdk/bin/java", java().executable);
}

TEST_F(CollectionTest, JavaThatOthersCouldExchangeIsNotStarted) {
  proves("JAVA-5");
  for (const char* home : {"/open", "/tmp/open", "/here/relative", "/opt/jdk"})
    _sandbox.installChild(std::string(home) + "/bin/java");
  _sandbox.setMode("/open", 0777);
  _sandbox.setMode("/tmp/open/bin/java", 0775);
  _sandbox.makeFolder("/tmp/empty", 01777);
  RunOptions options;
  options.directory = "/here";
  options.set("JAVA_HOME", "relative");
  options.set("PATH", "/tmp/empty:relative/bin:/open/bin:/tmp/open/bin:/opt/jdk/bin");

  ASSERT_EQ(0, install(options).status);

  EXPECT_EQ("/opt/jdk/bin/java", java().executable);
  const std::string passedOver = " is passed over: ";
  EXPECT_THAT(_sandbox.texts("Warning"),
              IsSupersetOf({"The Java at relative/bin/java" + passedOver + "the path is relative.",
                            "The Java at /open/bin/java" + passedOver + "others can write /open.",
                            "The Java at /tmp/open/bin/java" + passedOver +
                                "others can write /tmp/open/bin/java."}));
}

TEST_F(CollectionTest, JavaOfRootInAStickyFolderIsRoots) {
  proves("JAVA-5");
  _sandbox.installChild("/tmp/jdk/bin/java");
  RunOptions options;
  options.set("JAVA_HOME", "/tmp/jdk");

  ASSERT_EQ(0, install(options).status);

  EXPECT_EQ("/tmp/jdk/bin/java", java().executable);
}

TEST_F(CollectionTest, JavaOfTheConsoleUserIsNotStartedByRoot) {
  proves("JAVA-5");
  if (!CliSandbox::hasManyUsers()) GTEST_SKIP() << "needs the machine's root";
  _sandbox.installChild("/Users/alice/jdk/bin/java");
  RunOptions options;
  options.set("JAVA_HOME", "/Users/alice/jdk");

  ASSERT_EQ(0, install(options).status);

  EXPECT_THAT(_sandbox.children("java"), IsEmpty());
  EXPECT_THAT(_sandbox.texts("Warning"),
              Contains("The Java at /Users/alice/jdk/bin/java is passed over: /Users/alice belongs "
                       "to the user 1000."));
  EXPECT_EQ((TraceLine{"Notice", skipped()}), _sandbox.trace().back());
}

TEST_F(CollectionTest, JavaThatCannotBeStartedIsLoggedAndChangesNothing) {
  proves("COLLECT-7");
  installJava();
  _sandbox.remove("/java/bin/java");

  EXPECT_EQ(0, install().status);

  EXPECT_THAT(_sandbox.texts("Error"), ElementsAre(HasSubstr("/java/bin/java")));
}

// --- Workspace without given data ----------------------------------------------------------------

// With an unknown product the collection has a data folder neither given nor derived.
TEST_F(CollectionTest, WorkspaceOfAServiceWithDataIsNeverTheLaunchers) {
  proves("COLLECT-5");
  installJava();
  _sandbox.writeFile(_instance.launcherProperties(), "rcp.data=/elsewhere\n");

  ASSERT_EQ(0, install().status);

  EXPECT_EQ(_instance.data(), java().arguments.at(9));
}

}  // namespace
}  // namespace installer::cli
