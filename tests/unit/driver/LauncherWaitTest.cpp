#include "driver/LauncherWait.h"

#include <gmock/gmock.h>

#include <chrono>

#include "support/LauncherLine.h"
#include "support/Proves.h"
#include "support/Sandbox.h"

namespace installer::test {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class LauncherWaitTest : public ::testing::Test {
 protected:
  // The launcher provisions until we have waited for so long.
  void run(const std::string& launcher, milliseconds time) {
    _sandbox.processes().addCommandLine({"/sbin/init"});
    _sandbox.processes().addCommandLine(launcherLine(launcher));
    _sandbox.clock().onPause([this, time] {
      if (_sandbox.clock().paused() >= time) _sandbox.processes().clear();
    });
  }

  Sandbox _sandbox;
  const std::string _home = _sandbox.makeFolder("A.app/Contents/MacOS/rcp");

  const LogLine kWaits = {LogLevel::notice,
                          "A launcher that an earlier installation left behind is at work on this "
                          "instance, waiting for its end."};
  const LogLine kWaitsOn = {LogLevel::notice,
                            "The launcher is still at work after 10 seconds, waiting on."};
};

TEST_F(LauncherWaitTest, WithoutALauncherThereIsNoWait) {
  waitForLauncherLeftBehind(_home);

  EXPECT_EQ(_sandbox.clock().paused(), milliseconds(0));
  EXPECT_THAT(_sandbox.log(), IsEmpty());
}

TEST_F(LauncherWaitTest, AskingWaitsForNobody) {
  EXPECT_FALSE(isLauncherAtWork(_home));
  run(_home + "/rcplauncher", milliseconds(300));

  EXPECT_TRUE(isLauncherAtWork(_home));
  EXPECT_FALSE(isLauncherAtWork(_sandbox.path("B.app/Contents/MacOS/rcp")));

  EXPECT_EQ(_sandbox.clock().paused(), milliseconds(0));
  EXPECT_THAT(_sandbox.log(), IsEmpty());
}

TEST_F(LauncherWaitTest, LauncherIsWaitedForWithOneNotice) {
  proves("LOCK-7");
  run(_home + "/rcplauncher", milliseconds(300));

  waitForLauncherLeftBehind(_home);

  EXPECT_EQ(_sandbox.clock().paused(), milliseconds(300));
  EXPECT_THAT(_sandbox.log(), ElementsAre(kWaits));
}

TEST_F(LauncherWaitTest, LongWaitIsToldOnceMore) {
  proves("LOCK-7");
  run(_home + "/rcplauncher", seconds(25));

  waitForLauncherLeftBehind(_home);

  EXPECT_THAT(_sandbox.log(), ElementsAre(kWaits, kWaitsOn));
}

TEST_F(LauncherWaitTest, AnotherInstancesLauncherIsNotWaitedFor) {
  run("/B.app/Contents/MacOS/rcp/rcplauncher", seconds(1));

  waitForLauncherLeftBehind(_home);

  EXPECT_EQ(_sandbox.clock().paused(), milliseconds(0));
}

TEST_F(LauncherWaitTest, LauncherIsKnownUnderAnotherNameOfItsPath) {
  run("/link/rcplauncher", milliseconds(100));
  _sandbox.processes().report("/link/rcplauncher", "/real/rcplauncher");
  _sandbox.processes().report(_home + "/rcplauncher", "/real/rcplauncher");

  waitForLauncherLeftBehind(_home);

  EXPECT_THAT(_sandbox.log(), ElementsAre(kWaits));
}

}  // namespace
}  // namespace installer::test
