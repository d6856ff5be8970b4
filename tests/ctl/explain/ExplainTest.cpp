// Runs of the installer itself, explained: whatever words it changes, its companion has to know
// them.

#include <fcntl.h>
#include <gmock/gmock.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <nlohmann/json.hpp>
#include <set>

#include "ctl/ControlTest.h"
#include "ctl/Endings.h"
#include "ctl/Schema.h"
#include "support/Proves.h"

namespace installer::cli {
namespace {

using nlohmann::json;
using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;

class ExplainTest : public ControlTest {
 protected:
  json explained(int status, const std::vector<std::string>& arguments = {}) {
    std::vector<std::string> all = {"explain", "--json"};
    all.insert(all.end(), arguments.begin(), arguments.end());
    const RunResult result = control(all);
    EXPECT_EQ(status, result.status) << result.err;
    EXPECT_EQ("", result.err);
    return json::parse(result.out);
  }
  // The run of the last trace. What explain says of the error code is what the record says.
  json explainedRun(int status) {
    json run = explained(status).at("run");
    EXPECT_EQ(errorRecord().code, run.at("errorCode"));
    return run;
  }
  // Of an installation, which fails.
  json failedRun() {
    EXPECT_EQ(1, install().status);
    return explainedRun(1);
  }
  static std::vector<std::string> stepsOf(const json& run) {
    std::vector<std::string> steps;
    for (const json& step : run.at("steps")) steps.push_back(step.at("step"));
    return steps;
  }
  static std::string causeOf(const json& run) {
    return run.at("cause").is_null() ? "" : run.at("cause").at("text").get<std::string>();
  }
  // A line of a trace, as the installer writes it.
  static std::string line(const std::string& time, const std::string& text,
                          const std::string& level = "Info") {
    return "Nov 22 " + time + " mac HotfixInstaller[42] <" + level + ">: " + text + "\n";
  }
  // The explanation as soon as the trace tells of that step, of a run of the installer that is in
  // the list of the processes.
  std::string explainedAt(const std::string& step, const std::string& then) const {
    return std::string(CliSandbox::kProgram) + " " + _package.folder + " " + _destination +
           " & until case $(" + CliSandbox::kControl + " explain --json) in *" + step +
           "*) true;; *) false;; esac; do :; done; " + then;
  }
  void launcherAnswers(const std::string& result) {
    _sandbox.script("rcplauncher", ChildScript().write(_instance.result(), result));
  }
};

TEST_F(ExplainTest, AnInstallationIsToldStepByStep) {
  proves("EXPLAIN-1");
  ASSERT_EQ(0, install().status);

  const json run = explainedRun(0);

  EXPECT_EQ("installed", run.at("ending"));
  EXPECT_THAT(stepsOf(run), ElementsAre("read-package", "check-paths", "check-instance",
                                        "check-application", "check-versions", "update-untouched",
                                        "bring-files", "provision", "record", "collect-logs"));
  EXPECT_EQ(_instance.home(), run.at("rcpHome"));
  EXPECT_EQ("1.5", run.at("packageVersion"));
  EXPECT_TRUE(run.at("installedVersion").is_null());
  EXPECT_TRUE(run.at("cause").is_null());
  EXPECT_THAT(run.at("problems"), IsEmpty()) << "what belongs to every run is none";
}

TEST_F(ExplainTest, AnswersForProgramsKeepToTheirSchema) {
  proves("CTL-6");
  _sandbox.writeFile("/notes", "what is this");
  recordHotfix("1.4");
  launcherAnswers("rc=13\n");
  ASSERT_EQ(1, install().status);

  ctl::test::judged(control({"explain", "--json"}).out, "explain-1");
  ctl::test::judged(control({"explain", "--json", "/notes"}).out, "explain-1");
  _sandbox.writeFile("/back", line("07:08:00", "Begin to install hotfix.") +
                                  line("07:08:10", "Check the version of hotfix") +
                                  line("07:08:05", "back in time", "Error"));
  ctl::test::judged(control({"explain", "--json", "/back"}).out, "explain-1");
}

TEST_F(ExplainTest, AnUpgradeRemovesTheOlderHotfixFirst) {
  proves("EXPLAIN-1");
  recordHotfix("1.4");
  ASSERT_EQ(0, install().status);

  const json run = explainedRun(0);

  EXPECT_EQ("1.4", run.at("installedVersion"));
  EXPECT_THAT(stepsOf(run),
              ElementsAre("read-package", "check-paths", "check-instance", "check-application",
                          "check-versions", "remove-older", "update-untouched", "bring-files",
                          "provision", "record", "collect-logs"));
}

TEST_F(ExplainTest, AFirstInstallationRunsTwice) {
  _sandbox.remove(_instance.data() + "/.config");
  ASSERT_EQ(0, install().status);

  const json run = explainedRun(0);

  EXPECT_EQ("installed", run.at("ending"));
  EXPECT_THAT(stepsOf(run),
              ElementsAre("read-package", "check-paths", "check-instance", "check-application",
                          "check-versions", "update-untouched", "bring-files", "provision",
                          "record", "bring-files", "provision", "record", "collect-logs"));
}

// --- Each way to end, with its cause -------------------------------------------------------------

TEST_F(ExplainTest, AnUnsupportedCharacterIsTheCause) {
  proves("EXPLAIN-2");
  _sandbox.makeFolder("/Applications/A=B");
  ASSERT_EQ(1, _sandbox.run({_package.folder, "/Applications/A=B"}).status);

  const json run = explainedRun(1);

  EXPECT_EQ("unsupported-characters", run.at("ending"));
  EXPECT_EQ(3, run.at("errorCode"));
  EXPECT_EQ("", causeOf(run)) << "the ending says it all";
  EXPECT_THAT(stepsOf(run), ElementsAre("read-package", "check-paths", "recover", "collect-logs"));
}

TEST_F(ExplainTest, AMissingInstanceIsTheCause) {
  proves("EXPLAIN-2");
  _sandbox.remove(_instance.deploy("install.xml"));

  const json run = failedRun();

  EXPECT_EQ("not-installed", run.at("ending"));
  EXPECT_EQ(8, run.at("errorCode"));
  EXPECT_EQ("", causeOf(run));
}

TEST_F(ExplainTest, ADescriptionThatCannotBeReadIsTheCause) {
  proves("EXPLAIN-2");
  _sandbox.writeFile(_package.list(), "no list");

  const json run = failedRun();

  EXPECT_EQ("not-installed", run.at("ending"));
  EXPECT_EQ("The hotfix description " + _package.list() + " can not be read as a property list.",
            causeOf(run));
}

TEST_F(ExplainTest, ARunningApplicationIsTheCause) {
  proves("EXPLAIN-2");
  const std::string program = _instance.bundle + "/Contents/MacOS/Quillmere";
  _sandbox.copyChildProgram(program);
  RunOptions options;
  options.background = {{program, "--idle"}};
  ASSERT_EQ(1, install(options).status);

  const json run = explainedRun(1);

  EXPECT_EQ("application-running", run.at("ending"));
  EXPECT_EQ(6, run.at("errorCode"));
  EXPECT_EQ("", causeOf(run));
}

TEST_F(ExplainTest, AHigherHotfixIsTheCause) {
  proves("EXPLAIN-2");
  recordHotfix("1.6");

  const json run = failedRun();

  EXPECT_EQ("higher-hotfix-installed", run.at("ending"));
  EXPECT_EQ(7, run.at("errorCode"));
  EXPECT_EQ("Higher version hotfix has been installed.", causeOf(run));
  EXPECT_EQ("1.6", run.at("installedVersion"));
}

TEST_F(ExplainTest, AMissingManifestIsTheCause) {
  proves("EXPLAIN-2");
  _sandbox.remove(_package.deployFile("install.hotfix.xml"));

  const json run = failedRun();

  EXPECT_EQ("manifest-not-copied", run.at("ending"));
  EXPECT_EQ(4, run.at("errorCode"));
}

TEST_F(ExplainTest, AManifestThatIsNotWellFormedIsTheCause) {
  proves("EXPLAIN-2");
  _sandbox.writeFile(_package.deployFile("install.hotfix.xml"), "<install");
  ASSERT_EQ(1, install().status);

  EXPECT_EQ("manifest-not-copied", explainedRun(1).at("ending"));
}

TEST_F(ExplainTest, AManifestThatCannotBeCopiedIsTheCause) {
  proves("EXPLAIN-2");
  recordHotfix("1.4");
  _sandbox.remove(_package.deployFile("install.hotfix.xml"));
  _sandbox.makeFolder(_package.deployFile("install.hotfix.xml"));
  _sandbox.makePipe(_package.deployFile("install.hotfix.xml") + "/pipe");

  const json run = failedRun();

  EXPECT_EQ("manifest-not-copied", run.at("ending"));
  EXPECT_THAT(causeOf(run), HasSubstr("install.hotfix.xml"));
}

TEST_F(ExplainTest, ALauncherThatFailsIsTheCause) {
  proves("EXPLAIN-2");
  launcherAnswers("rc=13\n");

  const json run = failedRun();

  EXPECT_EQ("provisioning-failed", run.at("ending"));
  EXPECT_THAT(causeOf(run), StartsWith("The provisioning answered 13; "));
}

TEST_F(ExplainTest, AFailedRemovalIsNotTheCauseOfALaterFailure) {
  proves("EXPLAIN-2");
  recordHotfix("1.4");
  launcherAnswers("rc=13\n");

  const json run = failedRun();

  EXPECT_EQ("provisioning-failed", run.at("ending"));
  EXPECT_EQ("remove-older", stepsOf(run).at(5));
  EXPECT_EQ(run.at("problems").back(), run.at("cause"));
}

TEST_F(ExplainTest, ALauncherThatSaysNothingIsTheCause) {
  proves("EXPLAIN-2");
  launcherAnswers("x=1\n");

  const json run = failedRun();

  EXPECT_EQ("provisioning-failed", run.at("ending"));
  EXPECT_THAT(causeOf(run), HasSubstr(" holds no rc; "));
}

TEST_F(ExplainTest, ALauncherThatIsMissingIsTheCause) {
  proves("EXPLAIN-2");
  _sandbox.remove(_instance.launcher());

  const json run = failedRun();

  EXPECT_EQ("provisioning-failed", run.at("ending"));
  EXPECT_THAT(causeOf(run), StartsWith("Not able to start " + _instance.launcher() + ": "));
}

TEST_F(ExplainTest, ALauncherThatASignalEndsIsTheCause) {
  proves("EXPLAIN-2");
  _sandbox.script("rcplauncher", ChildScript().kill(SIGKILL));

  const json run = failedRun();

  EXPECT_EQ("provisioning-failed", run.at("ending"));
  EXPECT_EQ(_instance.launcher() + " was ended by signal 9 (Killed).", causeOf(run));
}

TEST_F(ExplainTest, ASignalIsTheCause) {
  proves("EXPLAIN-2");
  _sandbox.script("rcplauncher", ChildScript().signalParent(SIGTERM));

  const json run = failedRun();

  EXPECT_EQ("interrupted", run.at("ending"));
  EXPECT_EQ("Asked to end by signal 15 (Terminated). The installation ends here.", causeOf(run));
}

TEST_F(ExplainTest, AMissingLibraryIsTheCause) {
  proves("EXPLAIN-2");
  const std::string list = _sandbox.readFile(_package.list()).value();
  _sandbox.writeFile(_package.list(), "\xEF\xBB\xBF" + list);  // a byte order mark is unusual
  _sandbox.writeFile(std::string("/broken/") + HOTFIX_XML_LIBRARY, "nothing");
  RunOptions options;
  options.set("LD_LIBRARY_PATH", "/broken");
  ASSERT_EQ(1, install(options).status);

  const json run = explainedRun(1);

  EXPECT_EQ("library-missing", run.at("ending"));
  EXPECT_THAT(causeOf(run), HasSubstr(HOTFIX_XML_LIBRARY));
}

TEST_F(ExplainTest, MissingArgumentsAreTheCause) {
  proves("EXPLAIN-2");
  ASSERT_EQ(1, _sandbox.run({}).status);

  EXPECT_EQ("arguments-missing", explainedRun(1).at("ending"));
}

TEST_F(ExplainTest, ARunThatWasKilledIsBrokenOff) {
  proves("EXPLAIN-2");
  _sandbox.script("rcplauncher", ChildScript().signalParent(SIGKILL));
  ASSERT_EQ(128 + SIGKILL, install().status);

  const json run = explainedRun(2);

  EXPECT_EQ("broken-off", run.at("ending"));
  EXPECT_EQ("update-untouched", stepsOf(run).back());
}

TEST_F(ExplainTest, ARunThatIsAtWorkIsNotBrokenOff) {
  proves("EXPLAIN-2");
  _sandbox.script("rcplauncher", ChildScript().await("/tmp/go"));
  RunningProgram running = _sandbox.start({_package.folder, _destination});
  ASSERT_TRUE(comesTrue([&] { return !_sandbox.children("rcplauncher").empty(); }));

  EXPECT_EQ("at-work", explained(2).at("run").at("ending"));

  running.kill();
}

TEST_F(ExplainTest, ARunThatIsKilledInItsRecoveryIsBrokenOff) {
  proves("EXPLAIN-2");
  recordHotfix("1.6");
  _sandbox.script("rcplauncher", ChildScript().signalParent(SIGKILL));
  ASSERT_EQ(128 + SIGKILL, install().status);

  const json run = explained(2).at("run");

  EXPECT_EQ("broken-off", run.at("ending"));
  EXPECT_EQ("recover", stepsOf(run).back());
}

TEST_F(ExplainTest, ARunInItsRecoveryIsAtWork) {
  proves("EXPLAIN-2");
  _sandbox.makeFolder("/Applications/A=B");
  Instance odd;
  odd.bundle = "/Applications/A=B/Quillmere.app";
  buildInstance(odd);
  _sandbox.script("rcplauncher", ChildScript().await("/tmp/go"));
  RunningProgram running = _sandbox.start({_package.folder, "/Applications/A=B"});
  ASSERT_TRUE(comesTrue([&] { return !_sandbox.children("rcplauncher").empty(); }));

  const json run = explained(2).at("run");

  EXPECT_EQ("at-work", run.at("ending"));
  EXPECT_EQ(odd.home(), run.at("rcpHome"));
  running.kill();
}

TEST_F(ExplainTest, ARunThatWaitsForAnotherOneIsAtWork) {
  proves("EXPLAIN-2");
  _sandbox.script("rcplauncher", ChildScript().await("/tmp/go"));
  RunningProgram first = _sandbox.start({_package.folder, _destination});
  ASSERT_TRUE(comesTrue([&] { return !_sandbox.children("rcplauncher").empty(); }));

  const RunResult result = shell(explainedAt("wait-for-installer",
                                             "/control/hotfixctl explain; kill -9 $!; wait $!; "
                                             "/control/hotfixctl explain"));

  EXPECT_EQ(2, result.status);
  EXPECT_THAT(result.out, AllOf(HasSubstr("\nResult    the run is at work\n"),
                                HasSubstr("\nResult    the run was broken off\n")));
  first.kill();
}

TEST_F(ExplainTest, ARunWhoseInstanceIsNamedFromItsOwnFolderIsAtWork) {
  proves("EXPLAIN-2", "EXPLAIN-5");
  _sandbox.script("rcplauncher", 1, ChildScript().await("/tmp/go"));
  _destination = ".";

  const RunResult result =
      shell("cd /Applications; " + explainedAt("update-untouched",
                                               "cd /; /control/hotfixctl explain; echo >/tmp/go; "
                                               "/control/hotfixctl explain --follow"));

  EXPECT_EQ(0, result.status);
  EXPECT_THAT(result.out, AllOf(HasSubstr("\nInstance  ./Quillmere.app/Contents/MacOS/rcp\n"),
                                HasSubstr("\nResult    the run is at work\n"),
                                HasSubstr("\nResult    the hotfix was installed\n")));
}

// --- Where the trace comes from ------------------------------------------------------------------

TEST_F(ExplainTest, AKeptRunIsAFolderWithItsTrace) {
  proves("EXPLAIN-4");
  ASSERT_EQ(0, install().status);
  const std::string trace = _sandbox.readFile(kTrace).value();
  _sandbox.writeFile("/kept/install_trace.log", trace);
  _sandbox.writeFile("/kept/other", trace);
  _sandbox.makeLink("/kept/link", "other");
  _sandbox.remove(kTrace);

  EXPECT_EQ("/kept/install_trace.log", explained(0, {"/kept"}).at("trace"));
  EXPECT_EQ("/kept/other", explained(0, {"/kept/other"}).at("trace"));
  EXPECT_EQ("/kept/link", explained(0, {"/kept/link"}).at("trace"));
}

TEST_F(ExplainTest, WithoutATraceThereIsALineAndAStatus) {
  proves("EXPLAIN-4");
  const RunResult result = control({"explain"});

  EXPECT_EQ(3, result.status);
  EXPECT_EQ("", result.out);
  EXPECT_EQ(
      "hotfixctl: there is no trace: \"/tmp/install_trace.log\" cannot be read: No such file "
      "or directory\n",
      result.err);
}

TEST_F(ExplainTest, AFileWithoutARunIsALineAndAStatus) {
  proves("EXPLAIN-4");
  _sandbox.writeFile("/notes", "what is\nthis\n");

  const RunResult result = control({"explain", "/notes"});
  EXPECT_EQ(3, result.status);
  EXPECT_EQ("", result.out);
  EXPECT_EQ("hotfixctl: \"/notes\" holds no run of the installer\n", result.err);

  const json answer = explained(3, {"/notes"});
  EXPECT_TRUE(answer.at("run").is_null());
  EXPECT_EQ(2, answer.at("lines"));
  EXPECT_EQ(2, answer.at("otherLines"));
}

TEST_F(ExplainTest, APipeIsRefusedWithoutWaiting) {
  proves("EXPLAIN-4");
  _sandbox.makePipe("/pipe");

  const RunResult result = control({"explain", "/pipe"});

  EXPECT_EQ(4, result.status);
  EXPECT_THAT(result.err, StartsWith("hotfixctl: \"/pipe\" cannot be read: "));
}

TEST_F(ExplainTest, ATraceThatSomebodyPlantedAsALinkIsRefused) {
  proves("EXPLAIN-4");
  _sandbox.writeFile("/root/secret", "secret\n");
  _sandbox.makeLink(kTrace, "/root/secret");

  const RunResult result = control({"explain"});

  EXPECT_EQ(4, result.status);
  EXPECT_EQ("", result.out);
}

// Everybody can put one there; who names it wants it.
TEST_F(ExplainTest, AnotherUsersTraceIsNotTakenForTheLastRuns) {
  proves("EXPLAIN-4");
  if (!CliSandbox::hasManyUsers()) GTEST_SKIP() << "needs several users";
  ASSERT_EQ(0, install().status);
  _sandbox.giveTo(kTrace, CliSandbox::kAlice, CliSandbox::kAlice);
  RunOptions alice;
  alice.user = CliSandbox::kAlice;
  RunOptions bob;
  bob.user = CliSandbox::kBob;

  for (const RunOptions& other : {RunOptions(), bob}) {
    for (const std::vector<std::string>& options :
         std::vector<std::vector<std::string>>{{"explain"}, {"explain", "--follow"}}) {
      const RunResult result = control(options, other);
      EXPECT_EQ(4, result.status);
      EXPECT_EQ("", result.out);
      EXPECT_EQ(
          "hotfixctl: \"/tmp/install_trace.log\" cannot be read: it belongs to another user\n",
          result.err);
    }
    EXPECT_EQ(0, control({"explain", kTrace}, other).status);
  }
  EXPECT_EQ(0, control({"explain"}, alice).status);
  _sandbox.giveTo(kTrace, 0, 0);
  EXPECT_EQ(0, control({"explain"}, alice).status) << "root's is everybody's";
}

TEST_F(ExplainTest, ATraceWithASecondNameIsNotTakenForTheLastRuns) {
  proves("EXPLAIN-4");
  ASSERT_EQ(0, install().status);
  ASSERT_EQ(0, link(_sandbox.host(kTrace).c_str(), _sandbox.host("/tmp/second").c_str()));

  EXPECT_EQ("hotfixctl: \"/tmp/install_trace.log\" cannot be read: it has several names\n",
            control({"explain"}).err);
}

TEST_F(ExplainTest, AFileThatIsClosedToTheUserIsALineAndAStatus) {
  proves("EXPLAIN-4");
  if (!CliSandbox::hasManyUsers()) GTEST_SKIP() << "needs the machine's root";
  _sandbox.writeFile("/closed", "x\n", 0600);
  RunOptions options;
  options.user = CliSandbox::kAlice;

  const RunResult result = control({"explain", "/closed"}, options);

  EXPECT_EQ(4, result.status);
  EXPECT_EQ("hotfixctl: \"/closed\" cannot be read: Permission denied\n", result.err);
}

TEST_F(ExplainTest, ATraceThatIsCutAnywhereIsExplained) {
  proves("EXPLAIN-3");
  recordHotfix("1.6");
  ASSERT_EQ(1, install().status);
  const std::string trace = _sandbox.readFile(kTrace).value();
  const std::string script = "i=0; while [ $i -lt " + std::to_string(trace.size()) +
                             " ]; do /control/hotfixctl explain /cut/$i >/dev/null 2>&1; s=$?; "
                             "[ $s -le 3 ] || echo $i $s; i=$((i+37)); done";
  for (std::size_t i = 0; i < trace.size(); i += 37)
    _sandbox.writeFile("/cut/" + std::to_string(i), trace.substr(0, i));

  EXPECT_EQ("", shell(script).out);
}

TEST_F(ExplainTest, ALongTraceTakesLittleMemory) {
  proves("EXPLAIN-3");
#ifdef __SANITIZE_ADDRESS__
  GTEST_SKIP() << "the sanitizer maps more than the limit";
#endif
  std::string bad = line("07:08:00", "Begin to install hotfix.");
  for (int i = 0; i < 100'000; ++i)
    bad += line("07:08:00", "trouble " + std::to_string(i), "Error");
  _sandbox.writeFile("/long", bad);
  const int file = open(_sandbox.host("/long").c_str(), O_WRONLY | O_APPEND);
  // One line of 300 MiB, most of it holes.
  const off_t end = lseek(file, 0, SEEK_END);
  for (off_t mega = 1; mega <= 300; ++mega) {
    ASSERT_EQ(0, ftruncate(file, end + (mega << 20)));
    ASSERT_EQ(1, write(file, "x", 1));
  }
  close(file);
  RunOptions options;
  options.limits[RLIMIT_AS] = std::uint64_t{128} << 20;

  const RunResult result = control({"explain", "--json", "/long"}, options);

  EXPECT_EQ(2, result.status) << result.err;
  const json answer = json::parse(result.out);
  EXPECT_EQ(100'002, answer.at("lines"));
  EXPECT_EQ(99'900, answer.at("run").at("problemsLeftOut"));
}

// --- For people ----------------------------------------------------------------------------------

TEST_F(ExplainTest, TheScreenTellsResultCauseAndRemedy) {
  proves("EXPLAIN-1");
  launcherAnswers("rc=13\n");
  ASSERT_EQ(1, install().status);

  const RunResult result = control({"explain"});

  EXPECT_EQ(1, result.status);
  EXPECT_THAT(result.out,
              AllOf(StartsWith("Trace     /tmp/install_trace.log\n"),
                    HasSubstr("\nInstance  " + _instance.home() + "\n"),
                    HasSubstr("\nHotfix    1.5 over no hotfix\n"),
                    HasSubstr("  lets the launcher install the features\n"),
                    HasSubstr("\nResult    the platform's launcher did not install the hotfix\n"),
                    HasSubstr(" Error: The provisioning answered 13; "),
                    HasSubstr("\nRemedy    The launcher's own logs tell why: ")));
  EXPECT_THAT(result.out, Not(HasSubstr("\x1b")));
}

TEST_F(ExplainTest, ACodeIsToldWithItsMeaning) {
  proves("EXPLAIN-1");
  recordHotfix("1.6");
  ASSERT_EQ(1, install().status);

  EXPECT_THAT(control({"explain"}).out,
              HasSubstr("\nResult    a higher hotfix is installed (code 7)\n"));
}

TEST_F(ExplainTest, ControlCharactersOfATraceDoNotReachTheTerminal) {
  proves("CTL-5");
  ASSERT_EQ(0, install().status);
  const std::string begin = "Nov 22 07:08:09 m\x1b[2Jac HotfixInstaller[42] ";
  _sandbox.writeFile("/evil", begin + "<Info>: Begin to install hotfix.\n" + begin +
                                  "<Error>: \x1b]0;evil\x07\xff\u202e\n");

  EXPECT_THAT(control({"explain", "/evil"}).out,
              AllOf(HasSubstr("m\\x1b[2Jac"), HasSubstr("\\x1b]0;evil\\x07\\xff\\u202e"),
                    Not(HasSubstr("\x1b")), Not(HasSubstr("\x07"))));
}

TEST_F(ExplainTest, ControlCharactersOfATraceDoNotReachATerminalAsJsonEither) {
  proves("CTL-5");
  _sandbox.writeFile("/evil", line("07:08:00", "Begin to install hotfix.") +
                                  line("07:08:01", "\u009b2J\u202e\x7f\u2028\xff\u00fc", "Error"));

  const std::string out = control({"explain", "--json", "/evil"}).out;

  EXPECT_THAT(out, HasSubstr("\\u009b2J\\u202e\\u007f\\u2028"));
  for (const char* raw : {"\u009b", "\u202e", "\x7f", "\u2028"})
    EXPECT_THAT(out, Not(HasSubstr(raw)));
  EXPECT_THAT(json::parse(out).at("run").at("problems").at(0).at("text").get<std::string>(),
              EndsWith("\u00fc"));
}

TEST_F(ExplainTest, LongLinesAreCutOnTheScreen) {
  proves("EXPLAIN-1");
  _sandbox.writeFile("/long", line("07:08:00", "Begin to install hotfix.") +
                                  line("07:08:01", std::string(1000, 'x'), "Error") +
                                  line("07:08:01", std::string(60'000, 'y') + "z", "Error"));

  EXPECT_THAT(control({"explain", "/long"}).out,
              AllOf(HasSubstr(std::string(1000, 'x') + "\n"),
                    HasSubstr(": " + std::string(1000, 'y') + "...\n")));
  EXPECT_THAT(control({"explain", "--json", "/long"}).out, HasSubstr("yz\""));
}

TEST_F(ExplainTest, BlanksOfAPathStay) {
  _sandbox.writeFile("/a  b", line("07:08:00", "Begin to install hotfix."));

  EXPECT_THAT(control({"explain", "/a  b"}).out, StartsWith("Trace     /a  b\n"));
}

TEST_F(ExplainTest, TheTimeOfTheLastChangeIsAnIsoTime) {
  _sandbox.writeFile("/old", line("07:08:00", "Begin to install hotfix."));
  const timespec times[2] = {{1'763'796'902, 0}, {1'763'796'902, 0}};
  ASSERT_EQ(0, utimensat(AT_FDCWD, _sandbox.host("/old").c_str(), times, 0));
  RunOptions options;
  options.set("TZ", "XST-05:30");

  EXPECT_EQ("2025-11-22T13:05:02+05:30",
            json::parse(control({"explain", "--json", "/old"}, options).out).at("modified"));
}

TEST_F(ExplainTest, ColorsAreThereOnDemand) {
  ASSERT_EQ(0, install().status);

  EXPECT_THAT(control({"explain", "--color", "always"}).out,
              HasSubstr("\x1b[32mthe hotfix was installed\x1b[0m"));
}

TEST_F(ExplainTest, NothingIsChangedByIt) {
  ASSERT_EQ(0, install().status);
  const auto before = _sandbox.tree("/tmp");
  RunOptions options;
  options.systemLog = true;

  EXPECT_THAT(control({"explain"}, options).systemLog, IsEmpty());

  EXPECT_EQ(before, _sandbox.tree("/tmp"));
}

// --- Following -----------------------------------------------------------------------------------

TEST_F(ExplainTest, FollowingTellsStepsUntilTheRunHasEnded) {
  proves("EXPLAIN-5");
  _sandbox.script("rcplauncher", 1, ChildScript().await("/tmp/go"));
  RunningProgram running = _sandbox.start({_package.folder, _destination});
  ASSERT_TRUE(comesTrue([&] { return !_sandbox.children("rcplauncher").empty(); }));
  RunOptions options;
  options.program = CliSandbox::kControl;
  RunningProgram follower = _sandbox.start({"explain", "--follow"}, options);

  _sandbox.writeFile("/tmp/go", "");

  EXPECT_EQ(0, running.finish().status);
  const RunResult result = follower.finish();
  EXPECT_EQ(0, result.status) << result.err;
  EXPECT_THAT(result.out, AllOf(HasSubstr("records the hotfix"),
                                HasSubstr("\nResult    the hotfix was installed\n")));
}

TEST_F(ExplainTest, FollowingTellsEachStepWhenTheNextOneBegins) {
  proves("EXPLAIN-5");
  _sandbox.script("rcplauncher", 1, ChildScript().await("/tmp/go"));
  RunningProgram running = _sandbox.start({_package.folder, _destination});
  ASSERT_TRUE(comesTrue([&] { return !_sandbox.children("rcplauncher").empty(); }));
  RunOptions options;
  options.program = "/bin/sh";
  RunningProgram follower = _sandbox.start(
      {"-c", "/control/hotfixctl explain --follow >/tmp/steps; echo $? >>/tmp/steps"}, options);

  const auto told = [&] { return _sandbox.readFile("/tmp/steps").value_or(""); };
  ASSERT_TRUE(comesTrue([&] { return told().find("compares the versions") != told().npos; }));
  EXPECT_EQ(std::string::npos, told().find("update the instance as it is")) << "it is at work";
  _sandbox.writeFile("/tmp/go", "");

  EXPECT_EQ(0, running.finish().status);
  follower.finish();
  const std::string all = told();
  const std::size_t screen = all.find("Trace  ");
  ASSERT_NE(std::string::npos, screen);
  const std::string steps = all.substr(0, screen);
  for (const char* step :
       {"reads the package", "compares the versions", "update the instance as it is",
        "records the hotfix", "collects the logs"}) {
    EXPECT_THAT(steps, HasSubstr(step));
    EXPECT_EQ(steps.find(step), steps.rfind(step)) << "once";
    EXPECT_THAT(all.substr(screen), HasSubstr(step));
  }
  EXPECT_THAT(all, EndsWith("\n0\n"));
}

TEST_F(ExplainTest, FollowingGoesOnWithTheTraceOfTheNextRun) {
  proves("EXPLAIN-5");
  _sandbox.script("rcplauncher", 1, ChildScript().await("/tmp/go"));
  RunningProgram running = _sandbox.start({_package.folder, _destination});
  ASSERT_TRUE(comesTrue([&] { return !_sandbox.children("rcplauncher").empty(); }));
  RunOptions options;
  options.program = "/bin/sh";
  RunningProgram follower = _sandbox.start(
      {"-c", "/control/hotfixctl explain --follow >/tmp/steps; echo $? >>/tmp/steps"}, options);
  const auto told = [&] { return _sandbox.readFile("/tmp/steps").value_or(""); };
  ASSERT_TRUE(comesTrue([&] { return told().find("compares the versions") != told().npos; }));

  _sandbox.remove(kTrace);
  _sandbox.writeFile(
      kTrace, line("07:08:00", "Begin to install hotfix.") +
                  line("07:08:09", "Check whether platform is running.") +
                  line("07:08:10", "Check the target platform under " + _instance.home() + "."));
  ASSERT_TRUE(comesTrue([&] { return told().find(" 9 s   reads the package") != told().npos; }));
  running.kill();

  follower.finish();
  EXPECT_THAT(told(), AllOf(HasSubstr("process 42 on mac"),
                            HasSubstr("\nResult    the run was broken off\n"), EndsWith("\n2\n")));
}

TEST_F(ExplainTest, FollowingWhatIsNoRunEnds) {
  proves("EXPLAIN-4", "EXPLAIN-5");
  _sandbox.writeFile("/notes", "what is\nthis\n");

  const RunResult result = control({"explain", "--follow", "/notes"});

  EXPECT_EQ(3, result.status);
  EXPECT_EQ("hotfixctl: \"/notes\" holds no run of the installer\n", result.err);
}

TEST_F(ExplainTest, FollowingARunThatWasKilledBeforeItsChecksEnds) {
  proves("EXPLAIN-5");
  _sandbox.writeFile("/killed", line("07:08:00", "Begin to install hotfix.") +
                                    line("07:08:01", "Caller specified rcpdata"));

  EXPECT_EQ("broken-off", explained(2, {"--follow", "/killed"}).at("run").at("ending"));
}

TEST_F(ExplainTest, FollowingARunInItsRecoveryEndsWithIt) {
  proves("EXPLAIN-5");
  Instance odd;
  odd.bundle = "/Applications/A=B/Quillmere.app";
  buildInstance(odd);
  _sandbox.script("rcplauncher", 1, ChildScript().await("/tmp/go"));
  RunningProgram running = _sandbox.start({_package.folder, "/Applications/A=B"});
  ASSERT_TRUE(comesTrue([&] { return !_sandbox.children("rcplauncher").empty(); }));
  RunOptions options;
  options.program = "/bin/sh";
  RunningProgram follower = _sandbox.start(
      {"-c", "/control/hotfixctl explain --follow >/tmp/steps; echo $? >>/tmp/steps"}, options);
  const auto told = [&] { return _sandbox.readFile("/tmp/steps").value_or(""); };
  ASSERT_TRUE(comesTrue([&] { return told().find("characters of the paths") != told().npos; }));
  _sandbox.writeFile("/notes", "no run");
  control({"explain", "--follow", "/notes"});  // looks several times before it gives up
  EXPECT_EQ(std::string::npos, told().find("Result")) << "it is at work";
  _sandbox.writeFile("/tmp/go", "");
  EXPECT_EQ(1, running.finish().status);

  follower.finish();

  EXPECT_THAT(told(), AllOf(HasSubstr("  collects the logs\n"), HasSubstr("(code 3)\n"),
                            EndsWith("\n1\n")));
}

TEST_F(ExplainTest, FollowingARunThatHasEndedEndsAtOnce) {
  proves("EXPLAIN-5");
  ASSERT_EQ(0, install().status);

  EXPECT_EQ(0, control({"explain", "--follow"}).status);
  EXPECT_EQ("installed", explained(0, {"--follow"}).at("run").at("ending"));
}

TEST_F(ExplainTest, FollowingARunThatKnewNoInstanceEnds) {
  proves("EXPLAIN-5");
  _sandbox.remove(_package.list());
  ASSERT_EQ(1, install().status);
  EXPECT_EQ("not-installed", explained(1, {"--follow"}).at("run").at("ending"));

  ASSERT_EQ(1, _sandbox.run({}).status);
  EXPECT_EQ("arguments-missing", explained(1, {"--follow"}).at("run").at("ending"));
}

TEST_F(ExplainTest, FollowingAMissingTraceIsALineAndAStatus) {
  const RunResult result = control({"explain", "--follow"});

  EXPECT_EQ(3, result.status);
  EXPECT_THAT(result.err, StartsWith("hotfixctl: there is no trace: "));
}

// --- Trace events --------------------------------------------------------------------------------

TEST_F(ExplainTest, TraceEventsAreWrittenForEachStepAndProblem) {
  proves("EXPLAIN-6");
  launcherAnswers("rc=13\n");
  ASSERT_EQ(1, install().status);

  const json run = explained(1, {"--chrome-trace", "/tmp/events.json"}).at("run");

  const json events = json::parse(_sandbox.readFile("/tmp/events.json").value()).at("traceEvents");
  ASSERT_EQ(run.at("steps").size() + run.at("problems").size(), events.size());
  EXPECT_EQ("X", events.front().at("ph"));
  EXPECT_EQ("reads the package", events.front().at("name"));
  EXPECT_EQ(0, events.front().at("ts"));
  EXPECT_EQ("i", events.back().at("ph"));
  EXPECT_EQ(run.at("problems").back().at("text"), events.back().at("name"));
  for (const json& event : events) EXPECT_EQ(run.at("process"), event.at("pid"));
}

TEST_F(ExplainTest, TraceEventsReplaceAFileWhole) {
  proves("EXPLAIN-6");
  ASSERT_EQ(0, install().status);
  _sandbox.writeFile("/tmp/events.json", std::string(100'000, 'x'), 0640);

  explained(0, {"--chrome-trace", "/tmp/events.json"});

  const std::string events = _sandbox.readFile("/tmp/events.json").value();
  EXPECT_FALSE(json::parse(events).at("traceEvents").empty());
  EXPECT_EQ(0640u, _sandbox.mode("/tmp/events.json"));
}

TEST_F(ExplainTest, TraceEventsDoNotTakeThePlaceOfWhatIsNoFile) {
  proves("EXPLAIN-6");
  ASSERT_EQ(0, install().status);
  _sandbox.makePipe("/tmp/pipe");

  const RunResult result = control({"explain", "--chrome-trace", "/tmp/pipe"});

  EXPECT_EQ(4, result.status);
  EXPECT_EQ("hotfixctl: \"/tmp/pipe\" is no file\n", result.err);
  EXPECT_FALSE(_sandbox.isRegular("/tmp/pipe"));
}

TEST_F(ExplainTest, TraceEventsThatCannotBeWrittenAreAnError) {
  proves("EXPLAIN-6");
  ASSERT_EQ(0, install().status);

  const RunResult result = control({"explain", "--chrome-trace", "/missing/events.json"});

  EXPECT_EQ(4, result.status);
  EXPECT_THAT(result.err, StartsWith("hotfixctl: \"/missing/events.json\" cannot be "));
}

}  // namespace
}  // namespace installer::cli
