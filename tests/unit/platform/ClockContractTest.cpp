#include "unit/platform/ClockContract.h"

#include <ctime>

#include "support/FakeClock.h"

namespace installer::test {
namespace {

TEST_P(ClockContractTest, TellsADayAndATimeThatExist) {
  const std::tm told = _clock->localTime();

  std::tm again = told;
  again.tm_isdst = -1;
  ASSERT_NE(std::mktime(&again), std::time_t{-1});
  EXPECT_EQ(again.tm_year, told.tm_year);
  EXPECT_EQ(again.tm_mon, told.tm_mon);
  EXPECT_EQ(again.tm_mday, told.tm_mday);
  EXPECT_EQ(again.tm_hour, told.tm_hour);
  EXPECT_EQ(again.tm_min, told.tm_min);
}

TEST_P(ClockContractTest, DoesNotGoBack) {
  std::tm first = _clock->localTime();
  std::tm second = _clock->localTime();

  EXPECT_LE(std::mktime(&first), std::mktime(&second));
}

INSTANTIATE_TEST_SUITE_P(Set, ClockContractTest,
                         ::testing::Values(ClockKind{"Fake",
                                                     [] { return std::make_unique<FakeClock>(); }}),
                         [](const auto& given) { return given.param.name; });

}  // namespace
}  // namespace installer::test
