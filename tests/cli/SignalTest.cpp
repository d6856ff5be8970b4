#include <gmock/gmock.h>

#include <csignal>
#include <cstdio>

#include "cli/Fixtures.h"
#include "support/Proves.h"

namespace installer::cli {
namespace {

using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::SizeIs;

TraceLine endBy(const std::string& signal) {
  return {"Error", "Asked to end by " + signal + ". The installation ends here."};
}

struct SignalCase {
  std::string name;
  int number;
  std::string words;
};

// Each of the signals with which people and programs ask a program to end.
class SignalTest : public InstallerTest, public ::testing::WithParamInterface<SignalCase> {};

TEST_P(SignalTest, ReachesTheLauncherAndEndsTheRunInOrder) {
  proves("SIGNAL-1", "SIGNAL-2");
  installJava();
  _sandbox.script("rcplauncher",
                  ChildScript().signalParent(GetParam().number).await("/never").exit(0));

  EXPECT_EQ(1, install().status);

  EXPECT_THAT(_sandbox.children("rcplauncher"), SizeIs(1));
  EXPECT_THAT(_sandbox.texts("Error"),
              Contains(_instance.launcher() + " was ended by " + GetParam().words + "."));
  EXPECT_EQ(endBy(GetParam().words), _sandbox.trace().back());
  EXPECT_EQ((ErrorRecord{0, {}}), errorRecord());
  EXPECT_FALSE(_sandbox.exists(kMarker));
  EXPECT_THAT(_sandbox.children("java"), IsEmpty());
  EXPECT_EQ(std::nullopt, recorded("hotfixVersion"));
  EXPECT_THAT(_sandbox.entriesNamed(".hotfix-"), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Ends, SignalTest,
                         ::testing::Values(SignalCase{"Hangup", SIGHUP, "signal 1 (Hangup)"},
                                           SignalCase{"Interrupt", SIGINT, "signal 2 (Interrupt)"},
                                           SignalCase{"Terminated", SIGTERM,
                                                      "signal 15 (Terminated)"}),
                         CaseName());

class EarlyEndTest : public InstallerTest {
 protected:
  // The number of the process that has written the line into the trace; empty without one.
  std::string writerOf(const std::string& line) const {
    const std::string trace = _sandbox.readFile(kTrace).value_or("");
    const std::size_t place = trace.find(line);
    if (place == std::string::npos) return "";
    const std::size_t begin = trace.rfind('[', place) + 1;
    return trace.substr(begin, trace.find(']', begin) - begin);
  }
};

// What is done about the signal in the launcher takes a while, and asks a second time.
TEST_F(EarlyEndTest, LaunchersEndIsWaitedForHoweverLongItTakes) {
  proves("SIGNAL-1");
  _sandbox.writeFile(
      _instance.launcher(),
      "#!/usr/bin/sh\n"
      "trap 'trap \"\" TERM; kill -TERM $PPID; i=0; "
      "while [ $i -lt 100000 ]; do i=$((i+1)); done; echo > /tmp/ended; exit 0' TERM\n"
      "kill -TERM $PPID\n"
      "while :; do :; done\n",
      0755);

  EXPECT_EQ(1, install().status);

  EXPECT_TRUE(_sandbox.exists("/tmp/ended"));
  EXPECT_EQ(endBy("signal 15 (Terminated)"), _sandbox.trace().back());
}

// A launcher that pays no attention changes nothing: its run is over, but not the next step begun.
TEST_F(EarlyEndTest, NothingIsBegunAfterTheSignal) {
  proves("SIGNAL-1");
  _sandbox.writeFile(_instance.launcher(),
                     "#!/usr/bin/sh\ntrap '' TERM\nkill -TERM $PPID\n"
                     "echo start >> /tmp/starts\n",
                     0755);

  EXPECT_EQ(1, install().status);

  EXPECT_EQ("start\n", _sandbox.readFile("/tmp/starts"));
  EXPECT_FALSE(_sandbox.exists(_instance.deploy("install.update.xml")));
  EXPECT_EQ(endBy("signal 15 (Terminated)"), _sandbox.trace().back());
}

TEST_F(EarlyEndTest, SignalInTheLastStepStillEndsInStatusOne) {
  proves("SIGNAL-1");
  installJava();
  _sandbox.script("java", ChildScript().signalParent(SIGTERM).await("/never").exit(0));

  EXPECT_EQ(1, install().status);

  EXPECT_EQ("1.5", recorded("hotfixVersion")) << "what was done before stays";
  EXPECT_EQ(endBy("signal 15 (Terminated)"), _sandbox.trace().back());
}

TEST_F(EarlyEndTest, SignalReachesTheToolThatTellsTheJavaHome) {
  proves("SIGNAL-1");
  installJava();
  _sandbox.script("java_home", ChildScript().signalParent(SIGTERM).await("/never").exit(0));

  EXPECT_EQ(1, install().status);

  EXPECT_THAT(_sandbox.children("java"), IsEmpty());
}

TEST_F(EarlyEndTest, WaitForAnotherRunEnds) {
  proves("SIGNAL-1");
  const std::string waits = "Another installation is at work";
  _sandbox.script("rcplauncher", 1, ChildScript().await("/never"));
  RunOptions options;
  options.background = {
      {CliSandbox::kProgram, _package.folder, _destination},
      {"/usr/bin/sh", "-c",
       "until [ -s /tmp/pid ]; do :; done; read pid < /tmp/pid; kill -TERM $pid"}};
  options.awaited = "/control/records/0001.rcplauncher";
  RunningProgram second = _sandbox.start({_package.folder, _destination}, options);

  ASSERT_TRUE(comesTrue([&] { return !writerOf(waits).empty(); }));
  _sandbox.writeFile("/control/pid", writerOf(waits) + "\n");
  ASSERT_EQ(0, rename(_sandbox.host("/control/pid").c_str(), _sandbox.host("/tmp/pid").c_str()));

  EXPECT_EQ(1, second.finish().status);
  EXPECT_EQ(endBy("signal 15 (Terminated)"), _sandbox.trace().back());
  EXPECT_THAT(_sandbox.children("rcplauncher"), SizeIs(1));
}

}  // namespace
}  // namespace installer::cli
