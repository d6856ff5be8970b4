#include <gmock/gmock.h>

#include <ctime>
#include <optional>

#include "platform/posix/PosixClock.h"
#include "support/FakeClock.h"
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
