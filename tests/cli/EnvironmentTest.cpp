#include <gmock/gmock.h>
#include <signal.h>
#include <unistd.h>

#include <csignal>
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
using ::testing::Key;
using ::testing::Not;
using ::testing::SizeIs;

// The program started in odd surroundings.
class EnvironmentTest : public InstallerTest {
 protected:
  void failCheck() { _sandbox.remove(_instance.deploy("install.xml")); }
};

struct Surroundings {
  const char* name;
  RunOptions options;
};
void PrintTo(const Surroundings& surroundings, std::ostream* stream) {
  *stream << surroundings.name;
}

RunOptions with(const std::string& variable, const std::string& value) {
  RunOptions options;
  return options.set(variable, value);
}
RunOptions without(const std::vector<std::string>& variables) {
  RunOptions options;
  for (const std::string& variable : variables) options.unset(variable);
  return options;
}
RunOptions masked(mode_t mask) {
  RunOptions options;
  options.mask = mask;
  return options;
}
RunOptions closing(std::vector<int> descriptors) {
  RunOptions options;
  options.closedDescriptors = std::move(descriptors);
  return options;
}
RunOptions in(const std::string& directory) {
  RunOptions options;
  options.directory = directory;
  return options;
}

class SurroundingsTest : public EnvironmentTest,
                         public ::testing::WithParamInterface<Surroundings> {};

TEST_P(SurroundingsTest, DoNotKeepTheInstallFromSucceeding) {
  proves("ODD-7");
  recordHotfix("1.4");
  installJava();

  EXPECT_EQ(0, install(GetParam().options).status);

  EXPECT_EQ("1.5", recorded("hotfixVersion"));
  EXPECT_EQ((ErrorRecord{0, {}}), errorRecord());
  EXPECT_THAT(_sandbox.texts(), Contains("Success"));
  EXPECT_THAT(_sandbox.children("java"), SizeIs(1));
}

TEST_P(SurroundingsTest, DoNotKeepTheFailurePathFromItsEnd) {
  proves("ODD-7");
  failCheck();

  EXPECT_EQ(1, install(GetParam().options).status);

  EXPECT_EQ((ErrorRecord{8, {"/Applications", "Quillmere.app"}}), errorRecord());
  EXPECT_EQ(0777u, _sandbox.mode(kMarker));
  EXPECT_THAT(_sandbox.texts(), Contains("Not success"));
}

TEST_P(SurroundingsTest, DoNotLetTextsEndInAnyFile) {
  proves("ODD-7");
  recordHotfix("1.4");

  EXPECT_EQ(0, install(GetParam().options).status);

  for (const std::string& text : _sandbox.texts())
    EXPECT_THAT(text, Not(HasSubstr("The provisioning operations")));
  EXPECT_THAT(*_sandbox.readFile(_instance.info()), Not(HasSubstr("The provisioning")));
  EXPECT_THAT(*_sandbox.readFile(kPasteboard), Not(HasSubstr("The provisioning")));
}

TEST_P(SurroundingsTest, GiveChildrenThreeDescriptorsAndNoMore) {
  proves("ODD-7");
  installJava();

  EXPECT_EQ(0, install(GetParam().options).status);

  for (const ChildRecord& child : _sandbox.children()) {
    EXPECT_THAT(child.descriptors, ElementsAre(Key(0), Key(1), Key(2))) << child.role;
    EXPECT_EQ("/dev/null", child.descriptors.at(2)) << child.role;
  }
}

INSTANTIATE_TEST_SUITE_P(
    Cases, SurroundingsTest,
    ::testing::Values(
        Surroundings{"Usual", {}}, Surroundings{"UserUnset", without({"USER"})},
        Surroundings{"UserEmpty", with("USER", "")}, Surroundings{"UserRoot", with("USER", "root")},
        Surroundings{"UserUnknown", with("USER", "nobody-here")},
        Surroundings{"UserNumber", with("USER", "1000")},
        Surroundings{"UserPath", with("USER", "../../etc")},
        Surroundings{"UserLong", with("USER", std::string(100'000, 'u'))},
        Surroundings{"HomeUnset", without({"HOME"})}, Surroundings{"HomeEmpty", with("HOME", "")},
        Surroundings{"HomeRelative", with("HOME", "somewhere")},
        Surroundings{"UserAndHomeUnset", without({"USER", "HOME"})},
        Surroundings{"Nothing", without({"USER", "HOME", "PATH", "TZ"})},
        Surroundings{"PathUnset", without({"PATH"})},
        Surroundings{"OddTimeZone", with("TZ", "No/Such/Zone")},
        Surroundings{"OddLocale", with("LC_ALL", "tr_TR.UTF-8")},
        Surroundings{"TemporaryFolder", with("TMPDIR", "/nowhere")},
        Surroundings{"MaskStrict", masked(077)}, Surroundings{"MaskAll", masked(0777)},
        Surroundings{"MaskNone", masked(0)}, Surroundings{"NoInput", closing({0})},
        Surroundings{"NoOutput", closing({1})}, Surroundings{"NoErrors", closing({2})},
        Surroundings{"NoInputAndOutput", closing({0, 1})},
        Surroundings{"NoOutputAndErrors", closing({1, 2})},
        Surroundings{"NoDescriptors", closing({0, 1, 2})},
        Surroundings{"OtherFolder", in("/Users/alice")}),
    CaseName());

TEST_F(EnvironmentTest, UsageWithoutErrorOutputIsNoCrash) {
  proves("ODD-7");
  RunOptions options;
  options.closedDescriptors = {0, 1, 2};

  EXPECT_EQ(1, _sandbox.run({}, options).status);

  EXPECT_THAT(_sandbox.texts(), ElementsAre("Begin to install hotfix."));
}

TEST_F(EnvironmentTest, OutputThatNobodyReadsDoesNotEndTheRun) {
  proves("ODD-7");
  recordHotfix("1.4");
  RunOptions options;
  options.brokenOutput = true;

  EXPECT_EQ(0, install(options).status);

  EXPECT_EQ("1.5", recorded("hotfixVersion"));
}

// --- Another user than root ----------------------------------------------------------------------

class OrdinaryUserTest : public EnvironmentTest {
 protected:
  void SetUp() override {
    EnvironmentTest::SetUp();
    if (!CliSandbox::hasManyUsers()) GTEST_SKIP() << "needs the machine's root";
    _options.user = CliSandbox::kAlice;
  }

  void giveInstance() {
    namespace fs = std::filesystem;
    _sandbox.giveTo(_instance.bundle, CliSandbox::kAlice, CliSandbox::kAlice);
    for (const auto& entry : fs::recursive_directory_iterator(_sandbox.host(_instance.bundle)))
      EXPECT_EQ(0, lchown(entry.path().c_str(), CliSandbox::kAlice, CliSandbox::kAlice));
  }

  RunOptions _options;
};

TEST_F(OrdinaryUserTest, InstallsIntoAnInstanceOfItsOwn) {
  proves("ODD-8");
  giveInstance();

  EXPECT_EQ(0, install(_options).status);

  EXPECT_EQ("1.5", recorded("hotfixVersion"));
  EXPECT_EQ("a=1\nb=3\nc=4\n", _sandbox.readFile(_instance.customization()));
  EXPECT_EQ(0775u, _sandbox.mode(_instance.customization()));
  EXPECT_EQ(CliSandbox::kAlice, _sandbox.ownership(_instance.customization()).owner);
}

TEST_F(OrdinaryUserTest, FailsCleanlyOnAnInstanceOfRoot) {
  proves("ODD-8");
  const auto before = _sandbox.tree(_instance.bundle);

  EXPECT_EQ(1, install(_options).status);

  EXPECT_EQ(before, _sandbox.tree(_instance.bundle));
  EXPECT_EQ((ErrorRecord{4, {"install.hotfix.xml"}}), errorRecord());
}

TEST_F(OrdinaryUserTest, LeavesAMarkerOfItsOwn) {
  proves("ODD-8");
  giveInstance();
  failCheck();

  EXPECT_EQ(1, install(_options).status);

  EXPECT_EQ(0777u, _sandbox.mode(kMarker));
  EXPECT_EQ(CliSandbox::kAlice, _sandbox.ownership(kMarker).owner);
}

TEST_F(OrdinaryUserTest, RunsOnWithoutATraceThatBelongsToRoot) {
  proves("ODD-8");
  giveInstance();
  _sandbox.writeFile(kTrace, "root's", 0644);

  EXPECT_EQ(0, install(_options).status);

  EXPECT_EQ("root's", _sandbox.readFile(kTrace));
}

TEST_F(OrdinaryUserTest, ForAnotherConsoleUserItKeepsItsOwnIdentity) {
  proves("ODD-8");
  giveInstance();
  _options.set("USER", "bob");

  EXPECT_EQ(0, install(_options).status);

  for (const ChildRecord& launch : _sandbox.children("rcplauncher"))
    EXPECT_EQ(CliSandbox::kAlice, launch.user);
}

TEST_F(OrdinaryUserTest, ReadsItsOwnLocale) {
  proves("ODD-8");
  giveInstance();
  _sandbox.writeFile("/Users/alice/Library/Preferences/.GlobalPreferences.plist",
                     xmlList(ListValue::dictionary({{"AppleLocale", ListValue::string("de_DE")}})));

  EXPECT_EQ(0, install(_options).status);

  EXPECT_EQ("de_DE", _sandbox.children("rcplauncher").at(0).arguments.at(6));
}

// --- Two runs at once ----------------------------------------------------------------------------

class TwoRunsTest : public EnvironmentTest {
 protected:
  bool secondWaits() const {
    const auto trace = _sandbox.readFile(kTrace);
    return trace && trace->find("<Notice>: Another installation") != std::string::npos;
  }
  std::size_t launches() const { return _sandbox.children("rcplauncher").size(); }

  // Starts the second run beside a first one whose launcher is at work until "/tmp/go" exists. Each
  // sees the other's processes.
  RunningProgram startBesideAFirst(RunOptions options = {}) {
    _sandbox.script("rcplauncher", 1,
                    ChildScript().await("/tmp/go").write(_instance.result(), "rc=0\n"));
    options.background.insert(options.background.begin(),
                              {CliSandbox::kProgram, _package.folder, _destination});
    options.awaited = "/control/records/0001.rcplauncher";
    return _sandbox.start({_package.folder, _destination}, options);
  }

  // What a run of this package and one of the test's own answer. The second waits while the first
  // one's launcher is at work.
  std::pair<RunResult, RunResult> resultsAfterWaiting(const std::string& firstPackage) {
    _sandbox.script("rcplauncher", 1, ChildScript().await("/tmp/go"));
    RunningProgram first = _sandbox.start({firstPackage, _destination});
    EXPECT_TRUE(comesTrue([&] { return launches() == 1; }));
    RunningProgram second = _sandbox.start({_package.folder, _destination});
    EXPECT_TRUE(comesTrue([&] { return secondWaits(); }));
    EXPECT_EQ(1u, launches());
    _sandbox.writeFile("/tmp/go", "");
    return {first.finish(), second.finish()};
  }
};

TEST_F(TwoRunsTest, SecondTakesTheFirstsLauncherForNoRunningApplication) {
  proves("LOCK-1");
  // A compiled program inside the bundle; a script would be seen as its interpreter.
  _sandbox.remove(_instance.launcher());
  _sandbox.copyChildProgram(_instance.launcher());
  RunningProgram second = startBesideAFirst();

  EXPECT_TRUE(comesTrue([&] { return secondWaits(); }));
  EXPECT_EQ(1u, launches());
  _sandbox.writeFile("/tmp/go", "");

  const RunResult result = second.finish();
  EXPECT_EQ(0, result.status);
  EXPECT_EQ("The provisioning operations have completed successfully.\n", result.out)
      << "the second found the first's hotfix";
  EXPECT_EQ((ErrorRecord{0, {}}), errorRecord());
  EXPECT_FALSE(_sandbox.exists(kMarker));
  EXPECT_EQ(6u, launches());
}

TEST_F(TwoRunsTest, ApplicationStartedWhileTheSecondWaitsIsSeen) {
  proves("LOCK-1");
  const std::string application = _instance.bundle + "/Contents/MacOS/Quillmere";
  _sandbox.copyChildProgram(application);
  _sandbox.script("Quillmere", ChildScript().await("/never"));
  RunOptions options;
  options.background = {
      {"/usr/bin/sh", "-c", "until [ -e /tmp/start ]; do :; done; exec " + application}};
  RunningProgram second = startBesideAFirst(options);

  EXPECT_TRUE(comesTrue([&] { return secondWaits(); }));
  _sandbox.writeFile("/tmp/start", "");
  EXPECT_TRUE(comesTrue([&] { return _sandbox.children("Quillmere").size() == 1; }));
  _sandbox.writeFile("/tmp/go", "");

  EXPECT_EQ(1, second.finish().status);
  EXPECT_EQ((ErrorRecord{6, {"Quillmere"}}), errorRecord());
  EXPECT_TRUE(_sandbox.exists(kMarker));
  EXPECT_EQ("1.5", recorded("hotfixVersion")) << "the first is done";
  EXPECT_EQ("cleanup", _sandbox.children("rcplauncher").at(2).arguments.at(4));
}

TEST_F(TwoRunsTest, SecondWaitsForTheFirstsEnd) {
  proves("LOCK-1");
  const auto [first, second] = resultsAfterWaiting(_package.folder);

  EXPECT_EQ(0, first.status);
  EXPECT_EQ(0, second.status);
  EXPECT_EQ("The provisioning operations have completed successfully.\n", second.out)
      << "the second found the first's hotfix";
  EXPECT_EQ(6u, launches());
}

TEST_F(TwoRunsTest, SecondWaitsBeforeAFailurePathToo) {
  proves("LOCK-1");
  _package.folder = "/Volumes/low/in/Fix.pkg";
  _package.set("version", "1.0");
  buildPackage(_package);

  const auto [first, second] = resultsAfterWaiting("/Volumes/HF/install/Fix.pkg");

  EXPECT_EQ(0, first.status);
  EXPECT_EQ(1, second.status) << "a higher version came meanwhile";
  EXPECT_EQ(7, errorRecord().code);
  EXPECT_EQ("1.5", recorded("hotfixVersion"));
  EXPECT_EQ("cleanup", _sandbox.children("rcplauncher").at(2).arguments.at(4));
}

TEST_F(TwoRunsTest, RecordOfTheFirstDoesNotStandBesideTheSecondsStatus) {
  proves("LOCK-6");
  Package broken = _package;
  broken.folder = "/Volumes/broken/in/Fix.pkg";
  buildPackage(broken);
  _sandbox.remove(broken.deployFile("install.hotfix.xml"));

  const auto [first, second] = resultsAfterWaiting(broken.folder);

  EXPECT_EQ(1, first.status);
  EXPECT_EQ(0, second.status);
  EXPECT_EQ((ErrorRecord{0, {}}), errorRecord());
}

TEST_F(TwoRunsTest, AnotherInstanceIsNotWaitedFor) {
  proves("LOCK-3");
  Instance other{"/opt/Quillmere.app"};
  buildInstance(other);
  _sandbox.script("rcplauncher", 1,
                  ChildScript().await("/tmp/go").write(_instance.result(), "rc=0\n"));
  _sandbox.script(
      "rcplauncher",
      ChildScript().write(other.result(), "rc=0\n").write(_instance.result(), "rc=0\n"));
  RunningProgram first = _sandbox.start({_package.folder, _destination});
  ASSERT_TRUE(comesTrue([&] { return launches() == 1; }));

  EXPECT_EQ(0, _sandbox.run({_package.folder, "/opt"}).status);

  _sandbox.writeFile("/tmp/go", "");
  EXPECT_EQ(0, first.finish().status);
}

TEST_F(TwoRunsTest, KilledRunLeavesNoLockBehind) {
  proves("LOCK-3");
  _sandbox.script("rcplauncher", 1, ChildScript().await("/never"));
  RunningProgram first = _sandbox.start({_package.folder, _destination});
  EXPECT_TRUE(comesTrue([&] { return launches() == 1; }));
  first.kill();

  EXPECT_EQ(0, install().status);

  EXPECT_FALSE(secondWaits());
}

// What is compiled and lies in the bundle would count as the running application.
class LauncherLeftBehindTest : public TwoRunsTest, public ::testing::WithParamInterface<bool> {};

TEST_P(LauncherLeftBehindTest, IsWaitedForBeforeAnotherOneIsStarted) {
  proves("LOCK-3");
  proves("LOCK-7");
  if (GetParam()) {
    _sandbox.remove(_instance.launcher());
    _sandbox.copyChildProgram(_instance.launcher());
  }
  _sandbox.script("rcplauncher", 1,
                  ChildScript()
                      .signalParent(SIGKILL)
                      .write("/tmp/orphaned", "")
                      .await("/tmp/go")
                      .write(_instance.result(), "rc=0\n"));
  RunOptions options;
  options.background = {{CliSandbox::kProgram, _package.folder, _destination}};
  options.awaited = "/tmp/orphaned";
  RunningProgram second = _sandbox.start({_package.folder, _destination}, options);

  EXPECT_TRUE(comesTrue([&] {
    const auto trace = _sandbox.readFile(kTrace);
    return trace && trace->find(
                        "<Notice>: A launcher that an earlier installation left behind is "
                        "at work on this instance, waiting for its end.") != std::string::npos;
  }));
  EXPECT_EQ(1U, launches());
  _sandbox.writeFile("/tmp/go", "");

  EXPECT_EQ(0, second.finish().status);
  EXPECT_EQ((ErrorRecord{0, {}}), errorRecord());
  EXPECT_FALSE(secondWaits()) << "the lock went with the first";
  EXPECT_EQ(3U, launches());
}

INSTANTIATE_TEST_SUITE_P(Launchers, LauncherLeftBehindTest, ::testing::Bool(),
                         [](const auto& given) { return given.param ? "Compiled" : "Script"; });

TEST_F(TwoRunsTest, ChildThatOutlivesTheRunHoldsNoLock) {
  proves("LOCK-3");
  installJava();
  _sandbox.script("java", 1,
                  ChildScript().signalParent(SIGKILL).write("/tmp/orphaned", "").await("/never"));
  RunOptions options;
  options.background = {{CliSandbox::kProgram, _package.folder, _destination}};
  options.awaited = "/tmp/orphaned";
  RunningProgram second = _sandbox.start({_package.folder, _destination}, options);

  EXPECT_EQ(0, second.finish().status);

  EXPECT_FALSE(secondWaits());
  ASSERT_THAT(_sandbox.children("java"), SizeIs(2));
  for (const ChildRecord& child : _sandbox.children()) EXPECT_THAT(child.descriptors, SizeIs(3));
}

TEST_F(TwoRunsTest, LockLeavesNoFile) {
  proves("LOCK-3");
  EXPECT_EQ(0, install().status);

  EXPECT_THAT(_sandbox.entriesNamed(".hotfix-"), IsEmpty());
  for (const std::string& name : _sandbox.list(_instance.home()))
    EXPECT_THAT(name, Not(HasSubstr("lock")));
}

}  // namespace
}  // namespace installer::cli
