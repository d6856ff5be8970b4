// What an installation answers: each exit status by a run that ends so.

#include <fcntl.h>
#include <gmock/gmock.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>

#include "ctl/install/InstallControl.h"
#include "ctl/install/Outcome.h"
#include "support/Proves.h"

namespace installer::cli {
namespace {

using nlohmann::json;
using ::testing::AllOf;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::SizeIs;
using ::testing::StartsWith;

class InstallTest : public InstallControl {
 protected:
  void launcherAnswers(const std::string& result) {
    _sandbox.script("rcplauncher", ChildScript().write(_instance.result(), result));
  }
  // Nothing was started, made or kept, and one line tells why.
  void expectRefusal(const std::string& line) {
    EXPECT_EQ("hotfixctl: " + line + "\n", _result.err);
    EXPECT_THAT(keptRuns(), IsEmpty());
    EXPECT_THAT(_sandbox.children(), IsEmpty());
    EXPECT_FALSE(_sandbox.exists(kTrace));
  }
  // What is told of an installer that fails and leaves a trace of its own number, to which that was
  // done before it stood there.
  json toldOfTrace(int status, const std::function<void(const std::string& path)>& change) {
    playInstaller("echo $$ > /tmp/pid; until [ -e /tmp/go ]; do :; done; exit 1\n");
    RunOptions run;
    run.program = CliSandbox::kControl;
    RunningProgram running =
        _sandbox.start(commandLine({"--installer", "/opt/Played", "--progress", "--json"}), run);
    const auto number = [&] { return _sandbox.readFile("/tmp/pid").value_or(""); };
    EXPECT_TRUE(comesTrue([&] { return number().ends_with('\n'); }));
    const std::string before = "Nov 22 10:00:00 host HotfixInstaller[" +
                               number().substr(0, number().size() - 1) + "] <Error>: ";
    _sandbox.writeFile("/tmp/made", before + "Begin to install hotfix.\n" + before +
                                        "Asked to end by a test. The installation ends here.\n");
    change(_sandbox.host("/tmp/made"));
    std::filesystem::rename(_sandbox.host("/tmp/made"), _sandbox.host(kTrace));
    _sandbox.writeFile("/tmp/go", "");
    _result = running.finish();
    EXPECT_EQ(status, _result.status) << _result.err;
    return ctl::test::judged(_result.out, "install-1");
  }
  void expectThatNothingExplains(const json& answer) {
    EXPECT_EQ("untold", answer["cause"]);
    EXPECT_EQ(0, answer["code"]);
    EXPECT_THAT(answer["phases"], IsEmpty());
    EXPECT_EQ("", kept("install_trace.log"));
    EXPECT_EQ("", kept("record.plist"));
  }
};

// --- Runs of the installer -----------------------------------------------------------------------

TEST_F(InstallTest, AnInstallationIsToldWhole) {
  proves("ROLLOUT-1", "ROLLOUT-2");
  const json answer = told(0);

  EXPECT_EQ("", _result.err);
  EXPECT_EQ("installed", answer["cause"]);
  EXPECT_EQ(0, answer["code"]);
  EXPECT_EQ("the hotfix was installed", answer["meaning"]);
  EXPECT_EQ("Nothing is to be done.", answer["remedy"]);
  EXPECT_EQ(nullptr, answer["line"]);
  EXPECT_EQ(_package.folder, answer["package"]);
  EXPECT_EQ(_destination, answer["destination"]);
  EXPECT_EQ(nullptr, answer["rcpData"]);
  EXPECT_EQ(_instance.bundle, answer["instance"]["bundle"]);
  EXPECT_EQ(_instance.home(), answer["instance"]["rcpHome"]);
  EXPECT_EQ((json{{"package", "1.5"}, {"before", nullptr}, {"after", "1.5"}}), answer["versions"]);
  EXPECT_EQ(CliSandbox::kProgram, answer["installer"]["program"]);
  EXPECT_EQ(0, answer["installer"]["status"]);
  EXPECT_EQ(nullptr, answer["installer"]["signal"]);
  EXPECT_EQ(nullptr, answer["interruption"]);
  EXPECT_EQ(nullptr, answer["lint"]);
  std::vector<std::string> phases;
  for (const json& phase : answer["phases"]) phases.push_back(phase["phase"]);
  EXPECT_THAT(phases, ElementsAre("read-package", "check-paths", "check-instance",
                                  "check-application", "check-versions", "update-untouched",
                                  "bring-files", "provision", "record", "collect-logs"));
  EXPECT_EQ("1.5", recorded("hotfixVersion"));
}

TEST_F(InstallTest, TheInstallerGetsTheArgumentsAndTheEnvironment) {
  playInstaller("for each; do echo \"<$each>\"; done; echo $USER >&2; exit 0\n");
  _sandbox.makeFolder("/a [b]/Fix.pkg");
  _package.folder = "/a [b]/Fix.pkg";

  const json answer = told(0, {"--installer", "/opt/Played", "-rcpdata", "/my data"});

  EXPECT_EQ("</a [b]/Fix.pkg>\n</Applications>\n<-rcpdata>\n</my data>\nalice\n",
            answer["installer"]["output"]);
  EXPECT_EQ("/my data", answer["rcpData"]);
}

TEST_F(InstallTest, PeopleGetAScreen) {
  proves("ROLLOUT-2");
  recordHotfix("1.4");
  const RunResult result = installs();

  EXPECT_EQ(0, result.status) << result.err;
  EXPECT_EQ("", result.err);
  EXPECT_THAT(result.out, StartsWith("Result     the hotfix was installed\n"
                                     "Remedy     Nothing is to be done.\n"
                                     "Instance   /Applications/Quillmere.app\n"
                                     "Hotfix     1.5; before 1.4, now 1.5\n"
                                     "Installer  status 0, "));
  EXPECT_THAT(result.out, HasSubstr("\nKept run   " + keptRuns().at(0) + "\n"));
}

TEST_F(InstallTest, AFailedRunIsToldWithCauseCodeAndRemedy) {
  proves("ROLLOUT-2");
  recordHotfix("1.6");
  const RunResult result = installs();

  EXPECT_EQ(7, result.status);
  EXPECT_THAT(
      result.out,
      StartsWith("Result     a higher hotfix is installed (code 7)\n"
                 "Cause      Higher version hotfix has been installed.\n"
                 "Remedy     If the installed hotfix is the wanted one, nothing is to be "));
  EXPECT_THAT(result.out, HasSubstr("\nInstaller  status 1, "));
}

TEST_F(InstallTest, AFailedProvisioningHasAStatus) {
  proves("ROLLOUT-1");
  launcherAnswers("rc=13\n");
  const json answer = told(2);

  EXPECT_EQ("provisioning-failed", answer["cause"]);
  EXPECT_THAT(answer["line"], StartsWith("The provisioning answered 13; "));
  EXPECT_EQ(1, answer["installer"]["status"]);
  EXPECT_EQ(nullptr, answer["versions"]["after"]);
}

TEST_F(InstallTest, AnUnsupportedCharacterHasAStatus) {
  proves("ROLLOUT-1");
  _destination = "/Applications/A=B";
  _sandbox.makeFolder(_destination);
  const json answer = told(3);

  EXPECT_EQ("unsupported-characters", answer["cause"]);
  EXPECT_EQ(3, answer["code"]);
}

TEST_F(InstallTest, AMissingManifestHasAStatus) {
  proves("ROLLOUT-1");
  _sandbox.remove(_package.deployFile("install.hotfix.xml"));
  const json answer = told(4);

  EXPECT_EQ("manifest-not-copied", answer["cause"]);
  EXPECT_EQ(4, answer["code"]);
  EXPECT_THAT(answer["details"], ElementsAre(_package.deploy("install.hotfix.xml")));
}

TEST_F(InstallTest, ARunningApplicationHasAStatus) {
  proves("ROLLOUT-1");
  const std::string application = _instance.bundle + "/Contents/MacOS/Quillmere";
  _sandbox.copyChildProgram(application);
  _sandbox.script("Quillmere", ChildScript().await("/never"));
  RunOptions options;
  options.background = {{application}};
  const json answer = told(6, {}, options);

  EXPECT_EQ("application-running", answer["cause"]);
  EXPECT_EQ(6, answer["code"]);
}

TEST_F(InstallTest, AHigherHotfixHasAStatus) {
  proves("ROLLOUT-1");
  recordHotfix("1.6");
  const json answer = told(7);

  EXPECT_EQ("higher-hotfix-installed", answer["cause"]);
  EXPECT_EQ((json{{"package", "1.5"}, {"before", "1.6"}, {"after", "1.6"}}), answer["versions"]);
}

TEST_F(InstallTest, AMissingInstanceHasAStatus) {
  proves("ROLLOUT-1");
  _sandbox.remove(_instance.deploy("install.xml"));
  const json answer = told(8);

  EXPECT_EQ("not-installed", answer["cause"]);
  EXPECT_THAT(answer["details"], ElementsAre(_destination, "Quillmere.app"));
}

TEST_F(InstallTest, AReasonOfTheMachinesHasAStatus) {
  proves("ROLLOUT-1");
  const std::string list = _sandbox.readFile(_package.list()).value();
  _sandbox.writeFile(_package.list(), "\xEF\xBB\xBF" + list);  // a byte order mark is unusual
  _sandbox.writeFile(std::string("/broken/") + HOTFIX_XML_LIBRARY, "nothing");
  _sandbox.writeFile(
      "/opt/Played",
      "#!/usr/bin/sh\nLD_LIBRARY_PATH=/broken exec /control/HotfixInstaller \"$@\"\n", 0755);
  const json answer = told(1, _played);

  EXPECT_EQ("library-missing", answer["cause"]);
  EXPECT_THAT(answer["line"], HasSubstr(HOTFIX_XML_LIBRARY));
}

TEST_F(InstallTest, AnInstallerThatDoesNotTellWhyHasAStatus) {
  proves("ROLLOUT-1");
  playInstaller("exit 3\n");
  const json answer = told(1, _played);

  EXPECT_EQ("untold", answer["cause"]);
  EXPECT_EQ(3, answer["installer"]["status"]);
}

// What was recorded by an earlier run does not explain this one.
TEST_F(InstallTest, ATraceFromBeforeExplainsNothing) {
  recordHotfix("1.6");
  ASSERT_EQ(1, install().status);
  playInstaller("exit 1\n");
  expectThatNothingExplains(told(1, _played));
}

// An installer that reads its package has told as much as one without arguments.
TEST_F(InstallTest, ATraceOfNothingButItsBeginningTellsNoEnd) {
  proves("ROLLOUT-14");
  const std::string begins =
      "echo \"Nov 22 10:00:00 host HotfixInstaller[$$] <Info>: Begin to install hotfix.\" "
      "> /tmp/install_trace.log; ";
  playInstaller(begins + "kill -KILL $$\n");
  EXPECT_EQ("broken-off", told(5, _played)["cause"]);
  EXPECT_NE("", kept("install_trace.log"));

  playInstaller(begins + "exit 1\n");
  EXPECT_EQ("untold", told(1, _played)["cause"]);
}

TEST_F(InstallTest, AnOldTraceOfTheSameNumberExplainsNothing) {
  proves("ROLLOUT-1");
  EXPECT_EQ("interrupted", toldOfTrace(5, [](const std::string&) {})["cause"]);
  EXPECT_NE("", kept("install_trace.log"));
  for (const char* file : {"/tmp/pid", "/tmp/go", kTrace}) _sandbox.remove(file);

  expectThatNothingExplains(toldOfTrace(1, [](const std::string& path) {
    const timespec times[2] = {{1'000'000'000, 0}, {1'000'000'000, 0}};
    ASSERT_EQ(0, utimensat(AT_FDCWD, path.c_str(), times, 0));
  }));
  EXPECT_EQ("installer:PHASE:the installer failed and did not tell why\n", _result.err);
}

TEST_F(InstallTest, AnotherUsersTraceExplainsNothingAndIsNoProgress) {
  proves("ROLLOUT-1", "ROLLOUT-7");
  if (!CliSandbox::hasManyUsers()) GTEST_SKIP() << "needs several users";
  expectThatNothingExplains(toldOfTrace(1, [](const std::string& path) {
    ASSERT_EQ(0, chown(path.c_str(), CliSandbox::kAlice, CliSandbox::kAlice));
  }));

  EXPECT_EQ("installer:PHASE:the installer failed and did not tell why\n", _result.err);
}

// --- What is told before anything is begun -------------------------------------------------------

TEST_F(InstallTest, WhoIsNotRootIsToldSo) {
  proves("ROLLOUT-3");
  if (!CliSandbox::hasManyUsers()) GTEST_SKIP() << "needs several users";
  RunOptions alice;
  alice.user = CliSandbox::kAlice;
  const json answer = told(11, {}, alice);

  EXPECT_EQ("not-root", answer["cause"]);
  expectRefusal("only root can install");
  EXPECT_FALSE(_sandbox.exists(kState));
}

TEST_F(InstallTest, AMissingPackageIsALineAndAStatus) {
  proves("ROLLOUT-3");
  _package.folder = "/Volumes/HF/install/None.pkg";
  EXPECT_EQ("no-package", told(12)["cause"]);

  expectRefusal("there is no package \"/Volumes/HF/install/None.pkg\"");
  EXPECT_FALSE(_sandbox.exists(kState));
}

TEST_F(InstallTest, AFileOrAPipeInPlaceOfAPackageIsALineAndAStatus) {
  proves("ROLLOUT-3");
  _sandbox.writeFile("/Fix.pkg", "x");
  _sandbox.makePipe("/Pipe.pkg");
  for (const char* place : {"/Fix.pkg", "/Pipe.pkg"}) {
    _package.folder = place;
    EXPECT_EQ("no-package", told(12)["cause"]);
    expectRefusal("a package is a folder, and \"" + _package.folder + "\" is none");
  }
}

TEST_F(InstallTest, AMissingInstallerIsALineAndAStatus) {
  proves("ROLLOUT-3");
  EXPECT_EQ("no-installer", told(13, {"--installer", "/opt/None"})["cause"]);
  expectRefusal("there is no installer \"/opt/None\"");

  EXPECT_EQ("no-installer", told(13, {"--installer", "/opt"})["cause"]);
  EXPECT_FALSE(_sandbox.exists(kState));
}

TEST_F(InstallTest, AnInstallerThatCannotBeStartedLeavesNothing) {
  proves("ROLLOUT-3");
  _sandbox.writeFile("/opt/Played", "no program", 0644);
  EXPECT_EQ("no-installer", told(13, _played)["cause"]);

  expectRefusal("\"/opt/Played\" cannot be started: Permission denied");
}

TEST_F(InstallTest, ItsInstallerIsBesideItOrInTheNextSbin) {
  proves("ROLLOUT-3");
  std::ifstream built(HOTFIX_BINARY_DIR "/hotfixctl", std::ios::binary);
  const std::string program{std::istreambuf_iterator<char>(built),
                            std::istreambuf_iterator<char>()};
  _sandbox.writeFile("/opt/bin/hotfixctl", program, 0755);
  RunOptions options;
  options.program = "/opt/bin/hotfixctl";

  EXPECT_EQ(13, _sandbox.run(commandLine(), options).status);
  _sandbox.writeFile("/opt/sbin/HotfixInstaller", "#!/usr/bin/sh\necho sbin\n", 0755);
  EXPECT_THAT(_sandbox.run(commandLine({"--output"}), options).out, StartsWith("sbin\n"));
  _sandbox.writeFile("/opt/bin/HotfixInstaller", "#!/usr/bin/sh\necho bin\n", 0755);
  EXPECT_THAT(_sandbox.run(commandLine({"--output"}), options).out, StartsWith("bin\n"));
}

TEST_F(InstallTest, LintRefusesAPackageWithErrors) {
  proves("ROLLOUT-4");
  _sandbox.writeFile(_package.deployFile("install.hotfix.xml"), "<install");
  const json answer = told(10, {"--lint"});

  EXPECT_EQ("refused-by-lint", answer["cause"]);
  EXPECT_EQ(2, answer["lint"]["errors"]);
  expectRefusal("lint finds 2 errors in \"" + _package.folder + "\"; hotfixctl lint tells them");
  EXPECT_EQ(4, told(4)["code"]) << "without --lint it is taken";
}

TEST_F(InstallTest, LintTakesAPackageWithoutErrors) {
  proves("ROLLOUT-4");
  const std::string site = "/Volumes/HF/updates/platform/";
  _sandbox.writeFile(
      site + "features/com.kiv.fix_1/feature.xml",
      "<feature id=\"com.kiv.fix\"><plugin id=\"com.kiv.fix\" version=\"1\"/></feature>");
  _sandbox.writeFile(site + "plugins/com.kiv.fix_1/META-INF/MANIFEST.MF", "");
  const std::string removal = std::regex_replace(kSimpleManifest, std::regex("url=\"[^\"]*\""),
                                                 "url=\"\" action=\"uninstall\"");
  _sandbox.writeFile(_package.deployFile("uninstall.hotfix.xml"), removal);
  const json answer = told(0, {"--lint"});

  EXPECT_EQ(0, answer["lint"]["errors"]) << control({"lint", _package.folder}).out;
}

TEST_F(InstallTest, LintRefusesWhatItCannotRead) {
  _sandbox.remove(_package.list());
  EXPECT_EQ("refused-by-lint", told(10, {"--lint"})["cause"]);
  expectRefusal("lint finds 1 error in \"" + _package.folder + "\"; hotfixctl lint tells them");
}

TEST_F(InstallTest, ADryRunIsThePlan) {
  proves("ROLLOUT-5");
  const RunResult plan = control({"plan", _package.folder, _destination});
  const RunResult dry = installs({"--dry-run"});

  EXPECT_EQ(plan.out, dry.out);
  EXPECT_EQ(0, dry.status);
  EXPECT_THAT(keptRuns(), IsEmpty());
  EXPECT_THAT(_sandbox.children(), IsEmpty());

  recordHotfix("9");
  EXPECT_EQ(1, installs({"--dry-run"}).status);
  ctl::test::judged(installs({"--dry-run", "--json"}).out, "plan-1");
}

TEST_F(InstallTest, BadArgumentsAreRefused) {
  for (const std::vector<std::string>& options :
       std::vector<std::vector<std::string>>{{"--keep", "0"},
                                             {"--keep", "x"},
                                             {"--time-limit", "0"},
                                             {"--time-limit", "-1"},
                                             {"--grace", "99999999"},
                                             {"--keep-days", "0"},
                                             {"--wait", "1h"},
                                             {"extra"}})
    EXPECT_EQ(64, installs(options).status) << options.back();
  EXPECT_EQ(64, control({"install", "a"}).status);
  EXPECT_FALSE(_sandbox.exists(kState));
}

// --- What the installer itself says --------------------------------------------------------------

TEST_F(InstallTest, WhatTheInstallerWroteIsKeptAndShownOnDemand) {
  proves("ROLLOUT-6");
  playInstaller("echo to output; echo to error >&2; exit 0\n");

  EXPECT_THAT(installs({"--installer", "/opt/Played", "--output"}).out,
              StartsWith("to output\nto error\nResult "));
  EXPECT_EQ("to output\nto error\n", kept("output.txt"));
  EXPECT_THAT(installs(_played).out, StartsWith("Result "));
  EXPECT_EQ("to output\nto error\n", told(0, _played)["installer"]["output"]);
}

TEST_F(InstallTest, OfALongOutputTheBeginningIsTold) {
  proves("ROLLOUT-6");
  constexpr std::size_t kTold = 65'536;
  const std::string makesMegabyte =
      "line=0123456789abcdef; while [ ${#line} -lt 1048576 ]; do line=$line$line; done; ";
  const std::string beginning = "<0123456789abcdef";

  playInstaller(makesMegabyte +
                "for n in 1 2 3 4 5; do printf '<%s' $line $line $line $line $line "
                "$line $line $line $line $line $line $line $line; done\n");
  const std::string most = told(0, _played)["installer"]["output"];
  EXPECT_EQ(kTold, most.size());
  EXPECT_THAT(most, StartsWith(beginning));
}

TEST_F(InstallTest, AnAnswerThatNobodyReadsDoesNotEndTheInstallation) {
  RunOptions options;
  options.brokenOutput = true;
  EXPECT_EQ(74, installs({"--progress"}, options).status);

  EXPECT_EQ("1.5", recorded("hotfixVersion"));
  EXPECT_EQ(0, keptResult()["status"]);
}

// --- Progress ------------------------------------------------------------------------------------

TEST_F(InstallTest, FrontEndsGetThePhasesAndHowFarItIs) {
  proves("ROLLOUT-7");
  _sandbox.script("rcplauncher", 1,
                  ChildScript().write(_instance.result(), "rc=0\n").await("/tmp/go"));
  RunOptions options;
  options.program = "/bin/sh";
  RunningProgram running = _sandbox.start({"-c", inShell("--progress > /tmp/out")}, options);
  const auto out = [&] { return _sandbox.readFile("/tmp/out").value_or(""); };
  const std::string waits =
      "installer:PHASE:lets the launcher update the instance as it is\ninstaller:%50\n";

  ASSERT_TRUE(comesTrue([&] { return out().ends_with(waits); }));
  _sandbox.writeFile("/tmp/go", "");
  EXPECT_EQ(0, running.finish().status);

  EXPECT_THAT(out(), StartsWith("installer:PHASE:reads the package\ninstaller:%0\n"
                                "installer:PHASE:checks the characters of the paths\n"
                                "installer:%10\n"));
  EXPECT_THAT(out(), HasSubstr("installer:PHASE:collects the logs\ninstaller:%90\n"
                               "installer:PHASE:the hotfix was installed\ninstaller:%100\n"
                               "Result "));
}

TEST_F(InstallTest, ProgressOfAFailedRunEndsBelowTheWhole) {
  proves("ROLLOUT-7");
  launcherAnswers("rc=13\n");
  const RunResult result = installs({"--progress"});

  EXPECT_THAT(result.out, Not(HasSubstr("installer:%100\n")));
  EXPECT_THAT(result.out, HasSubstr("\ninstaller:PHASE:the platform's launcher did not install the "
                                    "hotfix\nResult "));
}

TEST_F(InstallTest, ProgressComesBesideAnAnswerForPrograms) {
  proves("ROLLOUT-7");
  (void)told(0, {"--progress"});

  EXPECT_THAT(_result.err, StartsWith("installer:PHASE:reads the package\n"));
}

// A hole takes minutes to read.
TEST_F(InstallTest, ATraceWithoutAnEndDoesNotHoldUpTheTimeLimit) {
  proves("ROLLOUT-7", "ROLLOUT-13");
  _sandbox.writeFile(kTrace, "");
  const std::string trace = _sandbox.host(kTrace);
  ASSERT_EQ(0, truncate(trace.c_str(), off_t{4} << 40));
  const timespec future[2] = {{4'000'000'000, 0}, {4'000'000'000, 0}};
  ASSERT_EQ(0, utimensat(AT_FDCWD, trace.c_str(), future, 0));
  playInstaller("trap ': > /tmp/install_trace.log; exit 1' TERM\nwhile :; do :; done\n");

  const json answer = told(5, {"--installer", "/opt/Played", "--progress", "--time-limit", "1"});

  EXPECT_EQ("interrupted", answer["cause"]);
  EXPECT_EQ(false, answer["interruption"]["killed"]);
}

TEST_F(InstallTest, ATerminalShowsHowFarItIs) {
  proves("ROLLOUT-7");
  RunOptions options;
  options.terminal = 60;
  const std::string out = installs({}, options).out;

  EXPECT_THAT(out, StartsWith("\r"));
  EXPECT_THAT(out, HasSubstr("\r10 of 10  0 s  collects the logs"));
  EXPECT_THAT(out, HasSubstr(" \r\x1b[1mResult\x1b[0m     "));
  EXPECT_THAT(out, Not(HasSubstr("installer:")));
  EXPECT_THAT(installs({"--json"}, options).out, StartsWith("{"));
  EXPECT_THAT(installs({"--progress"}, options).out, StartsWith("installer:PHASE:"));
}

TEST_F(InstallTest, NobodyGetsProgressUnasked) {
  EXPECT_THAT(installs().out, AllOf(Not(HasSubstr("installer:")), Not(HasSubstr("\r"))));
}

}  // namespace
}  // namespace installer::cli
