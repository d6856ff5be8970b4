#include <gmock/gmock.h>
#include <signal.h>

#include "cli/Fixtures.h"
#include "support/Proves.h"

namespace installer::cli {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Key;
using ::testing::Not;
using ::testing::Pair;
using ::testing::SizeIs;

using Arguments = std::vector<std::string>;

// Every start of the launcher: arguments, surroundings, and how its result is judged.
class ProvisioningTest : public InstallerTest {
 protected:
  Arguments plainArguments(const std::string& operation, const std::string& data) const {
    Arguments arguments = {"-rcpLauncherWait",
                           "-provManifest",
                           "-noSplash",
                           "-provisioningOperation",
                           operation,
                           "-nl",
                           "en_US",
                           "-vmargs",
                           "-Dfile.encoding=UTF-8",
                           "-Xms32m",
                           "-Xmx256m"};
    if (!data.empty()) arguments.insert(arguments.end(), {"-data", data});
    return arguments;
  }

  Arguments hotfixArguments(const std::string& sites, const std::string& data) const {
    return {"-rcpLauncherWait",
            "-provManifest",
            "-noSplash",
            "-provisioningOperation",
            "update",
            "-nl",
            "en_US",
            "-vmargs",
            "-Dfile.encoding=UTF-8",
            "-DprovisioningOperation=update",
            "-DprovUpdateSiteListOverride=file:" + sites,
            "-Xms32m",
            "-Xmx256m",
            "-data",
            data};
  }

  std::vector<ChildRecord> launches() const { return _sandbox.children("rcplauncher"); }
};

TEST_F(ProvisioningTest, UntouchedInstanceIsUpdatedWithThirteenArguments) {
  proves("LAUNCH-2");
  ASSERT_EQ(0, install().status);

  ASSERT_THAT(launches(), SizeIs(2));
  EXPECT_EQ(plainArguments("update", _instance.data()), launches()[0].arguments);
  EXPECT_THAT(launches()[0].arguments, SizeIs(13));
}

TEST_F(ProvisioningTest, HotfixIsInstalledWithFifteenArguments) {
  proves("LAUNCH-1");
  ASSERT_EQ(0, install().status);

  ASSERT_THAT(launches(), SizeIs(2));
  EXPECT_EQ(hotfixArguments("/Volumes/HF/install/Fix.pkg/../../updates/platform", _instance.data()),
            launches()[1].arguments);
  EXPECT_THAT(launches()[1].arguments, SizeIs(15));
}

TEST_F(ProvisioningTest, UninstallStartsTwoEqualRunsOfThirteenArgumentsFirst) {
  proves("LAUNCH-2");
  recordHotfix("1.4");

  ASSERT_EQ(0, install().status);

  ASSERT_THAT(launches(), SizeIs(4));
  EXPECT_EQ(plainArguments("update", _instance.data()), launches()[0].arguments);
  EXPECT_EQ(launches()[0].arguments, launches()[1].arguments);
  EXPECT_EQ(plainArguments("update", _instance.data()), launches()[2].arguments);
  EXPECT_THAT(launches()[3].arguments, SizeIs(15));
}

TEST_F(ProvisioningTest, FailedCheckCleansUpThenUpdates) {
  proves("FAILURE-2", "LAUNCH-3");
  _sandbox.remove(_instance.deploy("install.xml"));

  ASSERT_EQ(1, install().status);

  ASSERT_THAT(launches(), SizeIs(2));
  EXPECT_EQ(plainArguments("cleanup", _instance.data()), launches()[0].arguments);
  EXPECT_EQ(plainArguments("update", _instance.data()), launches()[1].arguments);
}

TEST_F(ProvisioningTest, EveryStartUsesTheLauncherOfTheHome) {
  proves("LAUNCH-5");
  recordHotfix("1.4");

  ASSERT_EQ(0, install().status);

  for (const ChildRecord& launch : launches()) EXPECT_EQ(_instance.launcher(), launch.executable);
}

TEST_F(ProvisioningTest, GivenDataFolderReachesEveryStart) {
  proves("LAUNCH-5");
  recordHotfix("1.4");
  _sandbox.makeFolder("/Users/alice/my ws/.config");

  ASSERT_EQ(0, installWithData("/Users/alice/my ws").status);

  ASSERT_THAT(launches(), SizeIs(4));
  for (const ChildRecord& launch : launches()) {
    ASSERT_GE(launch.arguments.size(), 2u);
    EXPECT_EQ("-data", launch.arguments[launch.arguments.size() - 2]);
    EXPECT_EQ("/Users/alice/my ws", launch.arguments.back());
  }
}

struct Sites {
  const char* name;
  std::string value;
  std::string argument;
};
void PrintTo(const Sites& sites, std::ostream* stream) {
  *stream << sites.name;
}

class SitesTest : public ProvisioningTest, public ::testing::WithParamInterface<Sites> {};

TEST_P(SitesTest, BecomeOneArgument) {
  proves("LAUNCH-4");
  _package.set("updateSiteList", GetParam().value);
  writePreferences();

  ASSERT_EQ(0, install().status);

  ASSERT_THAT(launches(), SizeIs(2));
  EXPECT_EQ(hotfixArguments(GetParam().argument, _instance.data()), launches()[1].arguments);
}

INSTANTIATE_TEST_SUITE_P(
    Values, SitesTest,
    ::testing::Values(Sites{"Plain", "/Volumes/HF/updates/platform",
                            "/Volumes/HF/updates/platform"},
                      Sites{"Blanks", "/Volumes/My Fix/up dates", "/Volumes/My Fix/up dates"},
                      Sites{"Quotes", "/a\"b'c", "/a\"b'c"},
                      Sites{"List", "/a,file:/b;c", "/a,file:/b;c"},
                      Sites{"Package", "${package}/sites:${package}",
                            "/Volumes/HF/install/Fix.pkg/sites:/Volumes/HF/install/Fix.pkg"},
                      Sites{"OtherVariable", "${home}/x$PATH", "${home}/x$PATH"},
                      Sites{"Placeholder", "/x/{update.site}/y", "/x/{update.site}/y"},
                      Sites{"Empty", "", "/Volumes/HF/install/Fix.pkg/../../updates/platform"},
                      Sites{"Unicode", "/\xC3\xA9", "/\xC3\xA9"}, Sites{"Slash", "/", "/"}),
    CaseName());

// --- Locale --------------------------------------------------------------------------------------

class LocaleTest : public ProvisioningTest {
 protected:
  static std::string globals(const std::string& home) {
    return home + "/Library/Preferences/.GlobalPreferences.plist";
  }
  static std::string listWith(ListValue locale) {
    return xmlList(ListValue::dictionary({{"AppleLocale", std::move(locale)}}));
  }
  void expectLocale(const std::string& locale) const {
    for (const ChildRecord& launch : launches()) {
      ASSERT_GE(launch.arguments.size(), 7u);
      EXPECT_EQ("-nl", launch.arguments[5]);
      EXPECT_EQ(locale, launch.arguments[6]);
    }
  }
};

TEST_F(LocaleTest, OfTheConsoleUserReachesEveryStart) {
  proves("LAUNCH-5");
  recordHotfix("1.4");
  _sandbox.writeFile(globals("/Users/alice"), listWith(ListValue::string("de_DE")));

  ASSERT_EQ(0, install().status);

  ASSERT_THAT(launches(), SizeIs(4));
  expectLocale("de_DE");
}

TEST_F(LocaleTest, OfTheConsoleUserReachesTheFailurePath) {
  proves("LAUNCH-5");
  _sandbox.remove(_instance.deploy("install.xml"));
  _sandbox.writeFile(globals("/Users/alice"), listWith(ListValue::string("fr_CA")));

  ASSERT_EQ(1, install().status);

  ASSERT_THAT(launches(), SizeIs(2));
  expectLocale("fr_CA");
}

TEST_F(LocaleTest, IsReadFromABinaryList) {
  proves("USER-3");
  _sandbox.writeFile(
      globals("/Users/alice"),
      binaryList(ListValue::dictionary(
          {{"Other", ListValue::integer(1)}, {"AppleLocale", ListValue::string("pt_BR")}})));

  ASSERT_EQ(0, install().status);

  expectLocale("pt_BR");
}

TEST_F(LocaleTest, FollowsUserNotTheProcess) {
  proves("USER-1");
  _sandbox.writeFile(globals("/root"), listWith(ListValue::string("it_IT")));
  _sandbox.writeFile(globals("/Users/bob"), listWith(ListValue::string("ja_JP")));
  RunOptions options;
  options.set("USER", "bob");

  ASSERT_EQ(0, install(options).status);

  expectLocale("ja_JP");
}

TEST_F(LocaleTest, WithoutUserIsTheProcessUsers) {
  _sandbox.writeFile(globals("/root"), listWith(ListValue::string("it_IT")));
  RunOptions options;
  options.unset("USER");

  ASSERT_EQ(0, install(options).status);

  expectLocale("it_IT");
}

TEST_F(LocaleTest, HomeInTheEnvironmentDoesNotMoveAKnownUsersPreferences) {
  proves("USER-4");
  _sandbox.writeFile(globals("/elsewhere"), listWith(ListValue::string("it_IT")));
  _sandbox.writeFile(globals("/Users/alice"), listWith(ListValue::string("de_DE")));
  RunOptions options;
  options.set("HOME", "/elsewhere");

  ASSERT_EQ(0, install(options).status);

  expectLocale("de_DE");
}

TEST_F(LocaleTest, OfAnUnknownUserIsReadBelowHome) {
  _sandbox.writeFile(globals("/elsewhere"), listWith(ListValue::string("sv_SE")));
  RunOptions options;
  options.set("USER", "nobody-here").set("HOME", "/elsewhere");

  ASSERT_EQ(0, install(options).status);

  expectLocale("sv_SE");
}

TEST_F(LocaleTest, OfAnUnknownUserWithoutHomeIsTheDefault) {
  RunOptions options;
  options.set("USER", "nobody-here").unset("HOME");

  ASSERT_EQ(0, install(options).status);

  expectLocale("en_US");
}

TEST_F(LocaleTest, ThatIsNoTextIsTheDefault) {
  _sandbox.writeFile(globals("/Users/alice"), listWith(ListValue::integer(5)));

  ASSERT_EQ(0, install().status);

  expectLocale("en_US");
}

TEST_F(LocaleTest, FromADamagedListIsTheDefault) {
  proves("USER-3");
  _sandbox.writeFile(globals("/Users/alice"), "<plist><dict><key>AppleLocale</key>");

  ASSERT_EQ(0, install().status);

  expectLocale("en_US");
}

TEST_F(LocaleTest, FromAListOfAnotherShapeIsTheDefault) {
  _sandbox.writeFile(globals("/Users/alice"), xmlList(ListValue::array({})));

  ASSERT_EQ(0, install().status);

  expectLocale("en_US");
}

TEST_F(LocaleTest, OfTheEnvironmentDoesNotCount) {
  proves("USER-3");
  RunOptions options;
  options.set("LANG", "de_DE.UTF-8").set("LC_ALL", "de_DE.UTF-8");

  ASSERT_EQ(0, install(options).status);

  expectLocale("en_US");
}

TEST_F(LocaleTest, IsReadAsTheConsoleUser) {
  if (!CliSandbox::hasManyUsers()) GTEST_SKIP() << "needs the machine's root";
  const std::string list = globals("/Users/alice");
  _sandbox.writeFile(list, listWith(ListValue::string("de_DE")), 0600);
  _sandbox.giveTo(list, CliSandbox::kBob, CliSandbox::kBob);

  ASSERT_EQ(0, install().status);

  expectLocale("en_US");
}

// --- Surroundings of a start ---------------------------------------------------------------------

TEST_F(ProvisioningTest, OutputAndErrorsGoToTheNullDeviceInputIsInherited) {
  proves("CHILD-2");
  ASSERT_EQ(0, install().status);

  ASSERT_THAT(launches(), SizeIs(2));
  for (const ChildRecord& launch : launches()) {
    EXPECT_EQ("/dev/null", launch.descriptors.at(1));
    EXPECT_EQ("/dev/null", launch.descriptors.at(2));
    EXPECT_THAT(launch.descriptors.at(0), HasSubstr("pipe:"));
  }
}

TEST_F(ProvisioningTest, NoOtherDescriptorIsHandedOn) {
  proves("CHILD-2");
  ASSERT_EQ(0, install().status);

  for (const ChildRecord& launch : launches())
    EXPECT_THAT(launch.descriptors, ElementsAre(Key(0), Key(1), Key(2)));
}

TEST_F(ProvisioningTest, LauncherReadsTheInstallersInput) {
  proves("CHILD-2");
  _sandbox.script("rcplauncher", 1, ChildScript().input());
  RunOptions options;
  options.input = "typed\n";

  ASSERT_EQ(0, install(options).status);

  EXPECT_EQ("typed\n", launches().at(0).input);
}

TEST_F(ProvisioningTest, EnvironmentIsInherited) {
  proves("CHILD-3");
  RunOptions options;
  options.set("QUILLMERE_TRIAL", "a b=c");

  ASSERT_EQ(0, install(options).status);

  for (const ChildRecord& launch : launches()) EXPECT_EQ(options.environment, launch.environment);
}

TEST_F(ProvisioningTest, WorkingFolderAndMaskAreInherited) {
  proves("CHILD-3");
  RunOptions options;
  options.directory = "/Users/alice";
  options.mask = 027;

  ASSERT_EQ(0, install(options).status);

  for (const ChildRecord& launch : launches()) {
    EXPECT_EQ("/Users/alice", launch.directory);
    EXPECT_EQ(027u, launch.mask);
  }
}

TEST_F(ProvisioningTest, SignalsAreDefaultAndUnblocked) {
  proves("CHILD-4");
  ASSERT_EQ(0, install().status);

  for (const ChildRecord& launch : launches()) {
    EXPECT_THAT(launch.ignoredSignals, IsEmpty());
    EXPECT_THAT(launch.blockedSignals, IsEmpty());
  }
}

TEST_F(ProvisioningTest, LauncherRunsAsTheInstallersUser) {
  proves("CHILD-3");
  ASSERT_EQ(0, install().status);

  for (const ChildRecord& launch : launches()) EXPECT_EQ(0u, launch.user);
}

TEST_F(ProvisioningTest, LaunchersChatterIsDiscarded) {
  proves("LAUNCH-6");
  _sandbox.script("rcplauncher", ChildScript()
                                     .print("noise\n")
                                     .printError("more noise\n")
                                     .write(_instance.result(), "rc=0\n"));

  const RunResult result = install();

  EXPECT_EQ(0, result.status);
  EXPECT_EQ("", result.out);
  EXPECT_EQ("", result.err);
}

TEST_F(ProvisioningTest, LaunchersStatusIsIgnored) {
  proves("LAUNCH-6");
  _sandbox.script("rcplauncher", ChildScript().write(_instance.result(), "rc=0\n").exit(13));

  EXPECT_EQ(0, install().status);

  EXPECT_EQ("1.5", recorded("hotfixVersion"));
}

TEST_F(ProvisioningTest, KilledLauncherIsJudgedByItsResultFile) {
  proves("LAUNCH-6");
  _sandbox.script("rcplauncher", ChildScript().write(_instance.result(), "rc=0\n").kill(SIGSEGV));

  EXPECT_EQ(0, install().status);

  EXPECT_EQ("1.5", recorded("hotfixVersion"));
}

TEST_F(ProvisioningTest, RunsFollowOneAnother) {
  proves("LAUNCH-6");
  // The second start would miss the first one's file if they overlapped.
  _sandbox.script("rcplauncher", 1, ChildScript().write("/tmp/first", "done"));
  _sandbox.script("rcplauncher", 2,
                  ChildScript().snapshot("/tmp/first").write(_instance.result(), "rc=0\n"));

  ASSERT_EQ(0, install().status);

  EXPECT_EQ("done", launches().at(1).fileAt("/tmp/first"));
}

// --- The result file -----------------------------------------------------------------------------

struct Result {
  const char* name;
  std::string text;
  bool success;
};
void PrintTo(const Result& result, std::ostream* stream) {
  *stream << result.name;
}

class ResultTest : public ProvisioningTest, public ::testing::WithParamInterface<Result> {};

TEST_P(ResultTest, DecidesTheRun) {
  proves("RESULT-1");
  _sandbox.script("rcplauncher", ChildScript().write(_instance.result(), GetParam().text));

  const RunResult result = install();

  EXPECT_EQ(GetParam().success ? 0 : 1, result.status);
  EXPECT_EQ(GetParam().success ? std::optional<std::string>("1.5") : std::nullopt,
            recorded("hotfixVersion"));
  EXPECT_EQ((ErrorRecord{0, {}}), errorRecord());
  EXPECT_FALSE(_sandbox.exists(kMarker));
}

TEST_P(ResultTest, StaysInPlaceAfterTheInstall) {
  proves("RESULT-7");
  _sandbox.script("rcplauncher", ChildScript().write(_instance.result(), GetParam().text));

  (void)install();  // what it leaves is looked at

  EXPECT_EQ(GetParam().text, _sandbox.readFile(_instance.result()));
}

TEST_P(ResultTest, DecidesTheRemovalsTexts) {
  proves("REMOVE-8");
  recordHotfix("1.4");
  _sandbox.script("rcplauncher", ChildScript().write(_instance.result(), GetParam().text));

  const RunResult result = install();

  EXPECT_EQ(GetParam().success
                ? "The provisioning operations have completed successfully.\n"
                : "Unexpected results have occurred during the provisioning operation. For "
                  "additional information, please refer to the logs.\n",
            result.out);
}

INSTANTIATE_TEST_SUITE_P(
    Files, ResultTest,
    ::testing::Values(
        Result{"Zero", "rc=0\n", true}, Result{"Two", "rc=2\n", true},
        Result{"One", "rc=1\n", false}, Result{"Three", "rc=3\n", false},
        Result{"Minus", "rc=-1\n", false}, Result{"Word", "rc=abc\n", true},
        Result{"TwoThenLetter", "rc=2x\n", true}, Result{"OneThenLetter", "rc=1x\n", false},
        Result{"EmptyValue", "rc=\n", true}, Result{"NoValue", "rc\n", true},
        Result{"NoLineFeed", "rc=2", true}, Result{"Blanks", "  rc   =   2  \n", true},
        Result{"Colon", "rc:2\n", true}, Result{"BlankOnly", "rc 1\n", false},
        Result{"Plus", "rc=+2\n", true}, Result{"PlusOne", "rc=+1\n", false},
        Result{"MinusTwo", "rc=-2\n", false}, Result{"MinusZero", "rc=-0\n", true},
        Result{"Padded", "rc=002\n", true}, Result{"Twenty", "rc=20\n", false},
        Result{"Point", "rc=2.9\n", true}, Result{"LastWins", "rc=0\nrc=1\n", false},
        Result{"LastWinsForSuccess", "rc=1\nrc=0\n", true}, Result{"OtherKey", "code=0\n", false},
        Result{"Capitals", "RC=0\n", false}, Result{"Empty", "", false},
        Result{"CommentOnly", "#rc=0\n", false}, Result{"CarriageReturn", "rc=2\r\n", true},
        Result{"Huge", "rc=99999999999999999999\n", false},
        Result{"HugeNegative", "rc=-99999999999999999999\n", false},
        Result{"Continued", "rc=1 \\\n0\n", false},
        Result{"WithOthers", "# done\nname=x\nrc=0\ntime=5\n", true}),
    CaseName());

TEST_F(ProvisioningTest, MissingResultIsAFailure) {
  proves("RESULT-1");
  _sandbox.script("rcplauncher", ChildScript());

  EXPECT_EQ(1, install().status);

  EXPECT_EQ(std::nullopt, recorded("hotfixVersion"));
}

TEST_F(ProvisioningTest, StaleResultIsRemovedBeforeTheHotfixRunOnly) {
  proves("RESULT-5");
  _sandbox.writeFile(_instance.result(), "rc=0\n");
  _sandbox.script("rcplauncher", ChildScript().snapshot(_instance.result()));

  EXPECT_EQ(1, install().status);

  ASSERT_THAT(launches(), SizeIs(2));
  EXPECT_EQ("Frc=0\n", launches()[0].snapshots.at(_instance.result()));
  EXPECT_EQ("A", launches()[1].snapshots.at(_instance.result()));
}

TEST_F(ProvisioningTest, StaleResultIsRemovedOnceBeforeBothRemovalRuns) {
  proves("RESULT-5");
  recordHotfix("1.4");
  _sandbox.writeFile(_instance.result(), "rc=7\n");
  _sandbox.script("rcplauncher",
                  ChildScript().snapshot(_instance.result()).write(_instance.result(), "rc=0\n"));

  ASSERT_EQ(0, install().status);

  ASSERT_THAT(launches(), SizeIs(4));
  EXPECT_EQ("A", launches()[0].snapshots.at(_instance.result()));
  EXPECT_EQ("Frc=0\n", launches()[1].snapshots.at(_instance.result()));
  EXPECT_EQ("A", launches()[2].snapshots.at(_instance.result())) << "removed after the success";
  EXPECT_EQ("A", launches()[3].snapshots.at(_instance.result()));
}

TEST_F(ProvisioningTest, StaleResultStaysOnTheFailurePath) {
  proves("RESULT-5");
  _sandbox.remove(_instance.deploy("install.xml"));
  _sandbox.writeFile(_instance.result(), "rc=0\n");
  _sandbox.script("rcplauncher", ChildScript());

  EXPECT_EQ(1, install().status);

  EXPECT_EQ("rc=0\n", _sandbox.readFile(_instance.result()));
}

TEST_F(ProvisioningTest, FolderInTheResultsPlaceIsAFailureAndIsRemovedAsStale) {
  proves("RESULT-4");
  _sandbox.makeFolder(_instance.result());
  _sandbox.script("rcplauncher", ChildScript().snapshot(_instance.result()));

  EXPECT_EQ(1, install().status);

  EXPECT_EQ("A", launches().at(1).snapshots.at(_instance.result()));
}

TEST_F(ProvisioningTest, FolderLeftAsResultIsAFailure) {
  proves("RESULT-4");
  _sandbox.script("rcplauncher", 2, ChildScript().folder(_instance.result()));

  EXPECT_EQ(1, install().status);

  EXPECT_EQ(std::nullopt, recorded("hotfixVersion"));
}

// --- A launcher that cannot be started -----------------------------------------------------------

TEST_F(ProvisioningTest, MissingLauncherIsLoggedAndTheRunGoesOn) {
  proves("LAUNCH-7");
  _sandbox.remove(_instance.launcher());

  EXPECT_EQ(1, install().status);

  const auto errors = _sandbox.texts("Error");
  EXPECT_THAT(errors,
              ElementsAre(HasSubstr(_instance.launcher()), HasSubstr(_instance.launcher())));
  EXPECT_THAT(_sandbox.texts(), Contains("workspace is " + _instance.data()));
  EXPECT_EQ((ErrorRecord{0, {}}), errorRecord());
}

TEST_F(ProvisioningTest, LauncherThatMayNotRunIsLoggedWithItsReason) {
  proves("LAUNCH-7");
  _sandbox.setMode(_instance.launcher(), 0644);

  EXPECT_EQ(1, install().status);

  EXPECT_EQ(std::nullopt, recorded("hotfixVersion"));
  EXPECT_THAT(_sandbox.texts("Error"), Contains(::testing::AllOf(HasSubstr(_instance.launcher()),
                                                                 HasSubstr("ermission denied"))));
}

TEST_F(ProvisioningTest, LauncherOfAnUnknownFormatIsLogged) {
  proves("LAUNCH-7");
  _sandbox.writeFile(_instance.launcher(), "\x01\x02 no program", 0755);

  EXPECT_EQ(1, install().status);

  EXPECT_THAT(_sandbox.texts("Error"), Contains(HasSubstr(_instance.launcher())));
}

TEST_F(ProvisioningTest, FolderInTheLaunchersPlaceIsLogged) {
  proves("LAUNCH-7");
  _sandbox.remove(_instance.launcher());
  _sandbox.makeFolder(_instance.launcher());

  EXPECT_EQ(1, install().status);

  EXPECT_THAT(_sandbox.texts("Error"), Contains(HasSubstr(_instance.launcher())));
}

TEST_F(ProvisioningTest, MissingLauncherOnTheFailurePathStillLeavesTheMarker) {
  proves("FAILURE-6");
  _sandbox.remove(_instance.deploy("install.xml"));
  _sandbox.remove(_instance.launcher());

  EXPECT_EQ(1, install().status);

  EXPECT_TRUE(_sandbox.exists(kMarker));
}

}  // namespace
}  // namespace installer::cli
