#include "hotfix/platform/ToldOnce.h"

#include <gmock/gmock.h>

#include <optional>

#include "platform/Log.h"
#include "support/Memory.h"
#include "support/Proves.h"
#include "support/Sandbox.h"

namespace installer::test {
namespace {

using ::testing::ElementsAre;

class ToldOnceTest : public ::testing::Test {
 protected:
  static void tell(const char* words) { logOnce(LogLevel::error, "{}", words); }

  Sandbox _sandbox;
  const LogLine _a = {LogLevel::error, "a"};
  const LogLine _b = {LogLevel::error, "b"};
};

TEST_F(ToldOnceTest, SameWordsAreWrittenOnceAsLongAsItLives) {
  proves("LIBRARY-11");
  {
    const ToldOnce lines;
    tell("a");
    tell("b");
    tell("a");
  }

  EXPECT_THAT(_sandbox.log(), ElementsAre(_a, _b));
}

TEST_F(ToldOnceTest, NextOneBeginsAnew) {
  proves("LIBRARY-11");
  for (int turn = 0; turn < 2; ++turn) {
    const ToldOnce lines;
    tell("a");
  }

  EXPECT_THAT(_sandbox.log(), ElementsAre(_a, _a));
}

TEST_F(ToldOnceTest, WithoutItEveryLineIsWritten) {
  proves("LIBRARY-11");
  tell("a");
  tell("a");

  EXPECT_THAT(_sandbox.log(), ElementsAre(_a, _a));
}

TEST_F(ToldOnceTest, WhatWasWrittenBeforeItIsWrittenInIt) {
  proves("LIBRARY-11");
  tell("a");
  const ToldOnce lines;
  tell("a");

  EXPECT_THAT(_sandbox.log(), ElementsAre(_a, _a));
}

TEST_F(ToldOnceTest, SeveralCountAsOneUntilTheLastIsGone) {
  proves("LIBRARY-11");
  auto first = std::make_optional<ToldOnce>();
  tell("a");
  auto second = std::make_optional<ToldOnce>();
  tell("a");
  first.reset();
  tell("a");
  second.reset();
  tell("a");

  EXPECT_THAT(_sandbox.log(), ElementsAre(_a, _a));
}

TEST_F(ToldOnceTest, EndsWhereItBegan) {
  Platform other = _sandbox.platform();
  auto lines = std::make_optional<ToldOnce>();
  tell("a");
  const ScopedPlatform scope(other);
  lines.reset();
  tell("a");
  tell("a");

  EXPECT_THAT(_sandbox.log(), ElementsAre(_a, _a, _a));
  EXPECT_EQ(_sandbox.platform().toldOnce, 0);
}

TEST_F(ToldOnceTest, NothingIsKeptOfWhatWasTold) {
  std::size_t turns = 0;

  const std::ptrdiff_t kept = bytesKeptBy([&] {
    for (int scopes = 0; scopes < 2; ++scopes) {
      std::optional<ToldOnce> lines;
      if (scopes == 0) lines.emplace();
      tell(fmt::format("A line that is {} and so long that it takes memory", ++turns).c_str());
      _sandbox.clearLog();
    }
  });

  EXPECT_LT(kept, 2000);  // what the library itself keeps
}

}  // namespace
}  // namespace installer::test
