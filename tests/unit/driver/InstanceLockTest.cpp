#include "hotfix/driver/InstanceLock.h"

#include <gmock/gmock.h>

#include <cerrno>
#include <chrono>
#include <optional>
#include <utility>

#include "hotfix/platform/ToldOnce.h"
#include "support/FolderHolder.h"
#include "support/Proves.h"
#include "support/Sandbox.h"

namespace installer::test {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class InstanceLockTest : public ::testing::Test {
 protected:
  // The other installer ends when we have waited for so long.
  void letGoAfter(milliseconds time) {
    _sandbox.clock().onPause([this, time] {
      if (_sandbox.clock().paused() >= time) _other->letGo();
    });
  }

  Sandbox _sandbox;
  const std::string _home = _sandbox.makeFolder("A.app/Contents/MacOS/rcp");
  std::optional<FolderHolder> _other;

  const LogLine kWaits = {LogLevel::notice,
                          "Another installation is at work on this instance, waiting for its end."};
  const LogLine kWaitsOn = {
      LogLevel::notice, "The other installation is still at work after 10 seconds, waiting on."};
};

TEST_F(InstanceLockTest, AFreeInstanceIsHeldAtOnceAsLongAsTheLockLives) {
  proves("LOCK-2", "LOCK-4");
  {
    const InstanceLock lock(_home);
    EXPECT_TRUE(lock.isHeld());
    EXPECT_FALSE(lock.hasWaited());
    EXPECT_TRUE(isLocked(_home));
  }

  EXPECT_FALSE(isLocked(_home));
  EXPECT_THAT(_sandbox.log(), IsEmpty());
  EXPECT_EQ(_sandbox.clock().paused(), milliseconds(0));
}

TEST_F(InstanceLockTest, AHeldInstanceIsWaitedForWithOneNotice) {
  proves("LOCK-1", "LOCK-2");
  _other.emplace(_home);
  letGoAfter(milliseconds(300));

  const InstanceLock lock(_home);

  EXPECT_TRUE(lock.isHeld());
  EXPECT_TRUE(lock.hasWaited());
  EXPECT_TRUE(isLocked(_home));
  EXPECT_EQ(_sandbox.clock().paused(), milliseconds(300));
  EXPECT_THAT(_sandbox.log(), ElementsAre(kWaits));
}

TEST_F(InstanceLockTest, AWaitOfTenSecondsIsToldOnceMore) {
  proves("LOCK-1");
  _other.emplace(_home);
  std::size_t linesBefore = 0;
  _sandbox.clock().onPause([&] {
    if (_sandbox.clock().paused() == seconds(10)) linesBefore = _sandbox.log().size();
    if (_sandbox.clock().paused() == seconds(60)) _other->letGo();
  });

  const InstanceLock lock(_home);

  EXPECT_EQ(linesBefore, 1U) << "not before the ten seconds are over";
  EXPECT_THAT(_sandbox.log(), ElementsAre(kWaits, kWaitsOn));
}

TEST_F(InstanceLockTest, WhatThisProcessHoldsIsNotWaitedFor) {
  proves("LOCK-4");
  auto outer = std::make_optional<InstanceLock>(_home);
  auto inner = std::make_optional<InstanceLock>(_home);
  EXPECT_TRUE(inner->isHeld());

  outer.reset();
  EXPECT_TRUE(isLocked(_home));
  inner.reset();

  EXPECT_FALSE(isLocked(_home));
}

TEST_F(InstanceLockTest, ALockThatIsHandedOnHolds) {
  std::optional<InstanceLock> lock;
  {
    InstanceLock first(_home);
    lock.emplace(std::move(first));
  }

  EXPECT_TRUE(lock->isHeld());
  EXPECT_TRUE(isLocked(_home));
}

TEST_F(InstanceLockTest, AMissingHomeIsNotMadeNotWaitedForAndNotHeld) {
  proves("LOCK-2");
  const InstanceLock lock(_sandbox.path("none/rcp"));

  EXPECT_FALSE(lock.isHeld());
  EXPECT_FALSE(_sandbox.exists("none"));
  EXPECT_THAT(_sandbox.log(), IsEmpty());
}

TEST_F(InstanceLockTest, TwoHomesAreHeldTogether) {
  const std::string second = _sandbox.makeFolder("B.app/Contents/MacOS/rcp");

  const InstanceLock lock(_home, second);

  EXPECT_TRUE(lock.isHeld());
  EXPECT_TRUE(isLocked(_home));
  EXPECT_TRUE(isLocked(second));
}

TEST_F(InstanceLockTest, NeitherHomeIsHeldWhileTheOtherIsWaitedFor) {
  proves("LOCK-5");
  const std::string second = _sandbox.makeFolder("B.app/Contents/MacOS/rcp");
  for (const std::string& busy : {_home, second}) {
    const std::string& idle = busy == _home ? second : _home;
    _other.emplace(busy);
    bool idleWasLocked = true;
    _sandbox.clock().onPause([&] {
      idleWasLocked = isLocked(idle);
      _other->letGo();
    });

    const InstanceLock lock(_home, second);

    EXPECT_FALSE(idleWasLocked) << busy;
    EXPECT_TRUE(isLocked(_home));
    EXPECT_TRUE(isLocked(second));
  }
}

TEST_F(InstanceLockTest, OneHomeUnderTwoNamesIsHeld) {
  _sandbox.makeLink("Alias.app", "A.app");

  const InstanceLock lock(_home, _sandbox.path("Alias.app/Contents/MacOS/rcp"));

  EXPECT_TRUE(lock.isHeld());
  EXPECT_TRUE(isLocked(_home));
}

TEST_F(InstanceLockTest, AMissingHomeDoesNotKeepTheOtherFromBeingHeld) {
  for (const auto& [one, two] :
       {std::pair(_home, _sandbox.path("none")), std::pair(_sandbox.path("none"), _home)}) {
    const InstanceLock lock(one, two);

    EXPECT_FALSE(lock.isHeld());
    EXPECT_TRUE(isLocked(_home));
  }
}

TEST_F(InstanceLockTest, AHeldOrMissingHomeIsNotRefused) {
  EXPECT_FALSE(InstanceLock(_home, _sandbox.path("none")).refusal());
}

TEST_F(InstanceLockTest, AHomeThatCannotBeLockedIsToldAsAnError) {
  proves("LOCK-8");
  for (const auto& [number, code] :
       {std::pair(EMFILE, FileError::kOther), std::pair(EACCES, FileError::kClosed)}) {
    _sandbox.clearLog();
    _sandbox.files().failLocking(number);

    const InstanceLock lock(_home);

    EXPECT_FALSE(lock.isHeld());
    EXPECT_FALSE(lock.hasWaited());
    ASSERT_TRUE(lock.refusal());
    EXPECT_EQ(lock.refusal()->code, code);
    EXPECT_THAT(_sandbox.log(), ElementsAre(LogLine{LogLevel::error, lock.refusal()->description}));
  }
}

TEST_F(InstanceLockTest, TheWorseRefusalOfTwoCounts) {
  _sandbox.makeLink("loop", "loop");
  const std::string second = _sandbox.makeFolder("B.app/Contents/MacOS/rcp");
  for (const bool isFirst : {true, false}) {
    _sandbox.files().failLocking(EIO, second);
    const std::string closed = _sandbox.path("loop");

    const InstanceLock lock(isFirst ? second : closed, isFirst ? closed : second);

    ASSERT_TRUE(lock.refusal());
    EXPECT_EQ(lock.refusal()->code, FileError::kOther);
  }
}

TEST_F(InstanceLockTest, AFileSystemWithoutLocksIsAWarningAndNoRefusal) {
  proves("LOCK-8");
  _sandbox.files().failLocking(ENOLCK);
  const ToldOnce lines;

  const InstanceLock lock(_home, _home);

  EXPECT_FALSE(lock.isHeld());
  EXPECT_FALSE(lock.refusal());
  EXPECT_THAT(_sandbox.log(),
              ElementsAre(LogLine{LogLevel::warning,
                                  "\"" + _home +
                                      "\" cannot be locked: No locks available. Nothing keeps "
                                      "other installations from this instance."}));
}

}  // namespace
}  // namespace installer::test
