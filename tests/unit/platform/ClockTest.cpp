#include <gmock/gmock.h>
#include <signal.h>
#include <sys/time.h>

#include <chrono>
#include <csignal>
#include <ctime>
#include <optional>
#include <stdexcept>

#include "platform/posix/PosixClock.h"
#include "support/FakeClock.h"
#include "support/Proves.h"
#include "support/ScopedVariable.h"

namespace installer::test {
namespace {

// The process's time zone for a while.
class ScopedZone {
 public:
  explicit ScopedZone(const std::string& zone) {
    _variable.emplace("TZ", zone);
    tzset();
  }
  ScopedZone(const ScopedZone&) = delete;
  ScopedZone& operator=(const ScopedZone&) = delete;
  ~ScopedZone() {
    _variable.reset();
    tzset();
  }

 private:
  std::optional<ScopedVariable> _variable;
};

TEST(PosixClockTest, TellsTheTimeOfTheProcesssZone) {
  const ScopedZone zone("XYZ-5:30");

  const std::time_t before = std::time(nullptr);
  std::tm local = PosixClock().localTime();
  const std::time_t after = std::time(nullptr);

  EXPECT_EQ(local.tm_gmtoff, 19800);
  const std::time_t told = mktime(&local);
  EXPECT_GE(told, before);
  EXPECT_LE(told, after);
}

TEST(PosixClockTest, PausesForTheTimeAskedForWhateverSignalArrives) {
  proves("LOCK-2");
  static volatile std::sig_atomic_t arrived;
  arrived = 0;
  struct sigaction action {};
  struct sigaction previous {};
  action.sa_handler = [](int) { arrived = 1; };
  ASSERT_EQ(sigaction(SIGALRM, &action, &previous), 0);
  const itimerval soon{{0, 0}, {0, 1000}};
  const auto start = std::chrono::steady_clock::now();
  ASSERT_EQ(setitimer(ITIMER_REAL, &soon, nullptr), 0);

  PosixClock().pause(std::chrono::milliseconds(20));

  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(20));
  EXPECT_EQ(arrived, 1);
  (void)sigaction(SIGALRM, &previous, nullptr);  // the test is over
}

TEST(FakeClockTest, APauseTakesNoTimeAndRunsTheTestsAction) {
  FakeClock clock;
  EXPECT_THROW(clock.pause(std::chrono::milliseconds(1)), std::logic_error);
  int pauses = 0;
  clock.onPause([&] { ++pauses; });
  const std::tm before = clock.localTime();

  clock.pause(std::chrono::hours(1));
  clock.pause(std::chrono::hours(1));

  EXPECT_EQ(pauses, 2);
  EXPECT_EQ(clock.paused(), std::chrono::hours(2));
  EXPECT_EQ(clock.localTime().tm_hour, before.tm_hour);
}

TEST(FakeClockTest, StandsWhereItIsSet) {
  FakeClock clock;

  clock.set(2024, 2, 29, 23, 58, 59);

  const std::tm now = clock.localTime();
  EXPECT_EQ(now.tm_year, 124);
  EXPECT_EQ(now.tm_mon, 1);
  EXPECT_EQ(now.tm_mday, 29);
  EXPECT_EQ(now.tm_hour, 23);
  EXPECT_EQ(now.tm_min, 58);
  EXPECT_EQ(now.tm_sec, 59);
}

}  // namespace
}  // namespace installer::test
