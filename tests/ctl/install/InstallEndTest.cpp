// How an installation is ended before its time, and two at once.

#include <gmock/gmock.h>
#include <signal.h>
#include <unistd.h>

#include <filesystem>

#include "ctl/install/InstallControl.h"
#include "support/Proves.h"

namespace installer::cli {
namespace {

using nlohmann::json;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::SizeIs;
using ::testing::StartsWith;

class InstallEndTest : public InstallControl {
 protected:
  static constexpr const char* kSettle =
      "until [ -e /control/records/0001.rcplauncher ]; do :; "
      "done; ";

  RunningProgram startInstall(const std::vector<std::string>& options = {}) {
    RunOptions run;
    run.program = CliSandbox::kControl;
    RunningProgram running = _sandbox.start(commandLine(options), run);
    EXPECT_TRUE(comesTrue([&] { return !_sandbox.children("rcplauncher").empty(); }));
    return running;
  }
  // An installer at work whose hotfixctl was killed.
  std::string losesItsParent() const {
    return inShell() + " & pid=$!; " + kSettle + "kill -KILL $pid; wait $pid; ";
  }
  // One that waits for its end, and has the turn meanwhile or is gone.
  std::string waitsForIt() const {
    return inShell("--json --wait 600") +
           " > /tmp/answer 2>/tmp/reason & pid=$!; "
           "while kill -0 $pid; do case $(" +
           inShell() +
           " 2>&1) in "
           "*\"another installation\"*) break;; esac; done 2>/dev/null; ";
  }
  // The run of an installer with the number 4711 whose end nobody saw.
  void keepOpen(const std::string& run) {
    (void)told(0);
    json open = keptResult();
    std::filesystem::rename(_sandbox.host(keptRuns().back()), _sandbox.host(run));
    open["cause"] = "at-work";
    open["installer"]["process"] = 4711;
    _sandbox.writeFile(run + "/result.json", open.dump());
    for (const char* file : {"install_trace.log", "record.plist"})
      _sandbox.remove(run + "/" + file);
  }
  json resultAt(std::size_t run) const {
    return ctl::test::judged(_sandbox.readFile(keptRuns().at(run) + "/result.json").value_or(""),
                             "install-1");
  }
};

// --- Two at once ---------------------------------------------------------------------------------

TEST_F(InstallEndTest, ASecondOneIsToldThatOneIsAtWork) {
  proves("ROLLOUT-11");
  _sandbox.script("rcplauncher", 1,
                  ChildScript().write(_instance.result(), "rc=0\n").await("/tmp/go"));
  RunningProgram first = startInstall();

  const json answer = told(9);
  EXPECT_EQ("another-at-work", answer["cause"]);
  EXPECT_EQ("hotfixctl: another installation is at work on this machine\n", _result.err);
  EXPECT_THAT(keptRuns(), SizeIs(1));
  EXPECT_EQ("at-work", keptResult()["cause"]);
  EXPECT_EQ(nullptr, keptResult()["status"]);
  _sandbox.writeFile("/tmp/go", "");

  EXPECT_EQ(0, first.finish().status);
  EXPECT_EQ(0, keptResult()["status"]);
}

TEST_F(InstallEndTest, ASecondOneWaitsWhenItIsTold) {
  proves("ROLLOUT-11");
  _sandbox.script("rcplauncher", 1,
                  ChildScript().write(_instance.result(), "rc=0\n").await("/tmp/go"));
  RunningProgram first = startInstall();

  EXPECT_EQ(9, installs({"--wait", "1"}).status);
  RunOptions run;
  run.program = CliSandbox::kControl;
  RunningProgram second = _sandbox.start(commandLine({"--wait", "600"}), run);
  _sandbox.writeFile("/tmp/go", "");

  EXPECT_EQ(0, first.finish().status);
  EXPECT_EQ(0, second.finish().status);
  EXPECT_THAT(keptRuns(), SizeIs(2));
}

// It comes once signals are noted, which is known by those that are handled.
TEST_F(InstallEndTest, AWaitThatASignalEndsHasBegunNothing) {
  proves("ROLLOUT-12");
  _sandbox.script("rcplauncher", ChildScript().await("/never"));
  RunningProgram first = startInstall();
  RunOptions options;
  options.background = {
      {"/usr/bin/sh", "-c",
       "handles() { while read -r name bits; do case $name$bits in SigCgt:*[4-7c-f]??[37bf]) "
       "return 0; esac; done < /proc/$pid/status; return 1; }; "
       "until [ -s /tmp/pid ]; do :; done; read pid < /tmp/pid; until handles; do :; done; "
       "kill -TERM $pid"}};

  const RunResult second =
      shell("echo $$ > /tmp/pid; exec " + inShell("--json --wait 600"), options);

  EXPECT_EQ(5, second.status);
  EXPECT_EQ("hotfixctl: signal 15 (Terminated) came before the installer was started\n",
            second.err);
  const json answer = ctl::test::judged(second.out, "install-1");
  EXPECT_EQ("interrupted", answer["cause"]);
  EXPECT_EQ("signal 15 (Terminated)", answer["interruption"]["signal"]);
  EXPECT_EQ(nullptr, answer["installer"]);
  EXPECT_THAT(keptRuns(), SizeIs(1));
  first.kill();
}

// --- Signals -------------------------------------------------------------------------------------

struct SignalCase {
  std::string name;
  std::string signal;  // in the shell's words
  std::string words;
};

class InstallSignalTest : public InstallEndTest,
                          public ::testing::WithParamInterface<SignalCase> {};

TEST_P(InstallSignalTest, IsPassedOnAndTheRunEndsInOrder) {
  proves("ROLLOUT-12");
  _sandbox.script("rcplauncher", ChildScript().await("/never"));
  RunOptions options;
  options.background = {
      {"/usr/bin/sh", "-c",
       kSettle + std::string("read pid < /tmp/pid; kill -") + GetParam().signal + " $pid"}};

  const RunResult result = shell("echo $$ > /tmp/pid; exec " + inShell("--json"), options);

  EXPECT_EQ(5, result.status) << result.err;
  const json answer = ctl::test::judged(result.out, "install-1");
  EXPECT_EQ("interrupted", answer["cause"]);
  EXPECT_EQ((json{{"signal", GetParam().words}, {"timeLimit", false}, {"killed", false}}),
            answer["interruption"]);
  EXPECT_EQ(1, answer["installer"]["status"]);
  EXPECT_EQ("Asked to end by " + GetParam().words + ". The installation ends here.",
            answer["line"]);
  EXPECT_EQ(result.out, kept("result.json"));
}

INSTANTIATE_TEST_SUITE_P(Ends, InstallSignalTest,
                         ::testing::Values(SignalCase{"Hangup", "HUP", "signal 1 (Hangup)"},
                                           SignalCase{"Interrupt", "INT", "signal 2 (Interrupt)"},
                                           SignalCase{"Terminated", "TERM",
                                                      "signal 15 (Terminated)"}),
                         CaseName());

// --- The time limit ------------------------------------------------------------------------------

TEST_F(InstallEndTest, ARunThatTakesTooLongIsAskedToEnd) {
  proves("ROLLOUT-13");
  _sandbox.script("rcplauncher", ChildScript().await("/never"));
  const json answer = told(5, {"--time-limit", "1"});

  EXPECT_EQ("interrupted", answer["cause"]);
  EXPECT_EQ((json{{"signal", nullptr}, {"timeLimit", true}, {"killed", false}}),
            answer["interruption"]);
  EXPECT_EQ("Asked to end by signal 15 (Terminated). The installation ends here.", answer["line"]);
  EXPECT_GE(answer["seconds"], 1);
}

TEST_F(InstallEndTest, OneThatDoesNotEndThenIsKilled) {
  proves("ROLLOUT-13");
  playInstaller("trap '' TERM\nwhile :; do :; done\n");
  const json answer = told(5, {"--installer", "/opt/Played", "--time-limit", "1", "--grace", "1"});

  EXPECT_EQ("broken-off", answer["cause"]);
  EXPECT_EQ((json{{"signal", nullptr}, {"timeLimit", true}, {"killed", true}}),
            answer["interruption"]);
  EXPECT_EQ("signal 9 (Killed)", answer["installer"]["signal"]);
  EXPECT_EQ(nullptr, answer["installer"]["status"]);
  EXPECT_GE(answer["seconds"], 2);
}

TEST_F(InstallEndTest, PeopleAreToldWhoEndedIt) {
  playInstaller("trap '' TERM\nwhile :; do :; done\n");
  const RunResult result =
      installs({"--installer", "/opt/Played", "--time-limit", "1", "--grace", "0"});

  EXPECT_THAT(result.out, StartsWith("Result     the run was broken off\n"
                                     "Ended by   the time limit; it had to be killed\n"));
  EXPECT_THAT(result.out, HasSubstr("\nInstaller  ended by signal 9 (Killed), "));
}

TEST_F(InstallEndTest, OneThatEndsInTimeIsNotTouched) {
  proves("ROLLOUT-13");
  EXPECT_EQ(nullptr, told(0, {"--time-limit", "600"})["interruption"]);
}

// --- Kills ---------------------------------------------------------------------------------------

TEST_F(InstallEndTest, AKilledInstallerIsToldAndKept) {
  proves("ROLLOUT-14");
  _sandbox.script("rcplauncher", ChildScript().signalParent(SIGKILL));
  const json answer = told(5);

  EXPECT_EQ("broken-off", answer["cause"]);
  EXPECT_EQ("signal 9 (Killed)", answer["installer"]["signal"]);
  EXPECT_EQ(nullptr, answer["interruption"]);
  EXPECT_THAT(kept("install_trace.log"), HasSubstr("Begin to install hotfix."));
  EXPECT_EQ(5, keptResult()["status"]);
}

TEST_F(InstallEndTest, AnInstallerThatLostItsParentIsNotDisturbed) {
  proves("ROLLOUT-14", "ROLLOUT-11");
  _sandbox.script("rcplauncher",
                  ChildScript().write(_instance.result(), "rc=0\n").await("/tmp/go"));
  const RunResult result =
      shell(losesItsParent() + inShell() + "; echo status $?; " + inShell("--wait 1") +
            " 2>/dev/null; echo status $?; " + waitsForIt() + ": > /tmp/go; wait $pid");

  EXPECT_EQ(0, result.status) << _sandbox.readFile("/tmp/reason").value_or("");
  EXPECT_EQ("status 9\nstatus 9\n", result.out);
  ASSERT_THAT(keptRuns(), SizeIs(2));
  EXPECT_THAT(result.err, HasSubstr("hotfixctl: the installer of the run \"" + keptRuns().front() +
                                    "\" is still at work\n"));
  // The next one found out how the first one ended.
  const json first = resultAt(0);
  EXPECT_EQ("installed", first["cause"]);
  EXPECT_EQ(0, first["status"]);
  EXPECT_EQ("1.5", first["versions"]["after"]);
  EXPECT_EQ(nullptr, first["installer"]["status"]) << "nobody saw it";
  EXPECT_THAT(first["phases"], Not(IsEmpty()));
  EXPECT_THAT(_sandbox.readFile(keptRuns().front() + "/install_trace.log").value_or(""),
              HasSubstr("Begin to update new hotfix version."));
  EXPECT_TRUE(_sandbox.exists(keptRuns().front() + "/record.plist"));
}

TEST_F(InstallEndTest, ASignalEndsTheWaitForAnInstallerThatLostItsParent) {
  proves("ROLLOUT-12");
  _sandbox.script("rcplauncher", ChildScript().await("/never"));
  const RunResult result = shell(losesItsParent() + waitsForIt() + "kill -TERM $pid; wait $pid");

  EXPECT_EQ(5, result.status);
  EXPECT_EQ("hotfixctl: signal 15 (Terminated) came before the installer was started\n",
            _sandbox.readFile("/tmp/reason"));
  EXPECT_THAT(keptRuns(), SizeIs(1));
}

TEST_F(InstallEndTest, AnOrphanWhoseTraceHasOnlyItsBeginningWasBrokenOff) {
  proves("ROLLOUT-14");
  const std::string run = std::string(kState) + "/20251122T000000.000Z-Quillmere";
  const std::string before = "Nov 22 10:00:00 host HotfixInstaller[4711] <Info>: ";
  keepOpen(run);
  _sandbox.writeFile(kTrace, before + "Begin to install hotfix.\n");
  (void)told(0, {"--keep-days", "36500"});

  EXPECT_EQ("broken-off", resultAt(0)["cause"]);
}

TEST_F(InstallEndTest, WhatIsKeptAlreadyTellsHowItEnded) {
  proves("ROLLOUT-14");
  recordHotfix("1.6");
  (void)told(7);
  const std::string run = keptRuns().front();
  const json whole = keptResult();
  json open = whole;
  open["cause"] = "at-work";
  open["status"] = nullptr;
  open["code"] = 0;
  open["details"] = json::array();
  open["phases"] = json::array();
  _sandbox.writeFile(run + "/result.json", open.dump());
  const std::string trace = kept("install_trace.log");
  const std::string record = kept("record.plist");
  recordHotfix("1.4");
  ASSERT_EQ(0, install().status);

  (void)told(0);

  const json first = resultAt(0);
  for (const char* member : {"status", "cause", "code", "details", "line", "phases", "keptLack"})
    EXPECT_EQ(whole[member], first[member]) << member;
  EXPECT_EQ(trace, _sandbox.readFile(run + "/install_trace.log"));
  EXPECT_EQ(record, _sandbox.readFile(run + "/record.plist"));
}

TEST_F(InstallEndTest, WhatAKillOfAllLeavesIsPutInOrderByTheNext) {
  proves("ROLLOUT-14");
  _sandbox.script("rcplauncher", 1, ChildScript().await("/never"));
  startInstall().kill();
  ASSERT_THAT(keptRuns(), SizeIs(1));
  EXPECT_EQ("at-work", keptResult()["cause"]);

  (void)told(0);

  ASSERT_THAT(keptRuns(), SizeIs(2));
  const json first = resultAt(0);
  EXPECT_EQ("broken-off", first["cause"]);
  EXPECT_EQ(5, first["status"]);
  EXPECT_EQ(0, keptResult()["status"]);
}

TEST_F(InstallEndTest, ARunThatHadNotBegunGoes) {
  proves("ROLLOUT-14");
  const std::string begun = std::string(kState) + "/20991122T000000.000Z-Quillmere";
  _sandbox.makeFolder(kState);
  _sandbox.writeFile(begun + "/plan.json", "{}");
  const std::string planned = std::string(kState) + "/20991122T000001.000Z-Quillmere";
  _sandbox.writeFile(planned + "/result.json",
                     "{\"cause\": \"at-work\", \"installer\": {}, \"versions\": {}}");
  const std::string whole = std::string(kState) + "/20991123T000000.000Z-Quillmere";
  _sandbox.writeFile(whole + "/result.json", "{\"cause\": \"installed\"}");
  _sandbox.writeFile(whole + "/.hotfix-12345", "half");
  for (const char* text : {"", "null", "[]", "{\"cause\": 1}", "{\"cause\": \"at-work\"}",
                           "{\"cause\": \"at-work\", \"installer\": {\"process\": \"x\"}}",
                           "{\"cause\": \"at-work\", \"installer\": {\"process\": 1}}"}) {
    _sandbox.writeFile(std::string(kState) + "/20991124T000000.000Z-Odd/result.json", text);
    (void)told(0);
    EXPECT_EQ(text,
              _sandbox.readFile(std::string(kState) + "/20991124T000000.000Z-Odd/result.json"));
  }

  EXPECT_FALSE(_sandbox.exists(begun));
  EXPECT_FALSE(_sandbox.exists(planned));
  EXPECT_EQ("{\"cause\": \"installed\"}", _sandbox.readFile(whole + "/result.json"));
  EXPECT_THAT(_sandbox.list(whole), ElementsAre("result.json"));
}

}  // namespace
}  // namespace installer::cli
