#include "ctl/install/KeptRuns.h"

#include <gtest/gtest.h>

namespace installer::ctl::install {
namespace {

using std::chrono::milliseconds;
using Time = std::chrono::system_clock::time_point;

std::string named(const std::optional<std::string>& bundle) {
  return nameOfRun(Time(milliseconds(1'795'361'412'045)), bundle);
}

TEST(KeptRunsTest, ARunIsNamedByItsTimeAndItsBundle) {
  EXPECT_EQ("20261122T153012.045Z-Quillmere", named("/Applications/Quillmere.app"));
  EXPECT_EQ("20261122T153012.045Z-Quillmere", named("/Applications/Quillmere.app/"));
  EXPECT_EQ("20261122T153012.045Z-platform", named("/opt/platform"));
  EXPECT_EQ("20261122T153012.045Z-unknown", named(std::nullopt));
  EXPECT_EQ("20261122T153012.045Z-unknown", named("/Applications/.app"));
}

TEST(KeptRunsTest, ANameHoldsPlainLettersOnly) {
  EXPECT_EQ("20261122T153012.045Z-A_b_.._x-Z_9__", named("/A b/A b\n..$x-Z_9\xC3\xBC.app"));
  const std::string name = named("/" + std::string(300, 'x'));
  EXPECT_EQ(std::string("20261122T153012.045Z-").size() + 64, name.size());
  EXPECT_TRUE(isNameOfRun(name));
}

TEST(KeptRunsTest, LaterOnesComeLater) {
  EXPECT_LT(nameOfRun(Time(milliseconds(999)), "z"), nameOfRun(Time(milliseconds(1000)), "a"));
  EXPECT_LT(nameOfRun(Time(milliseconds(1000)), "z"), nameOfRun(Time(milliseconds(1001)), "a"));
}

TEST(KeptRunsTest, OtherNamesAreNoRuns) {
  EXPECT_TRUE(isNameOfRun(named("Quillmere.app")));
  EXPECT_TRUE(isNameOfRun("20261122T153012.045Z-x"));
  for (const char* name :
       {"", "lock", "20261122T153012.045Z-", "20261122T153012.045Z", "20261122T153012.045Y-x",
        "2026112aT153012.045Z-x", "20261122T153012.045Z-x/y", "20261122T153012.045Z-x y",
        "/20261122T153012.045Z-x", "20261122T153012.045Z_x", "20261122t153012.045Z-x"})
    EXPECT_FALSE(isNameOfRun(name)) << name;
  EXPECT_FALSE(isNameOfRun("20261122T153012.045Z-" + std::string(65, 'x')));
}

}  // namespace
}  // namespace installer::ctl::install
