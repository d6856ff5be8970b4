#include "platform/LockLook.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>

#include <chrono>
#include <thread>

#include "platform/posix/Descriptor.h"
#include "support/FolderHolder.h"
#include "support/Proves.h"
#include "unit/platform/files/FileManagerFixture.h"

namespace installer::test {
namespace {

class LockLookTest : public FileManagerFixture {
 protected:
  // Somebody else who looks at the folder's lock, and does not come to an end.
  static Descriptor look(const std::string& folder) {
    Descriptor opened(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    EXPECT_EQ(0, flock(opened.get(), LOCK_SH | LOCK_NB));
    return opened;
  }

  const std::string _home = _folder.makeFolder("home");
};

TEST_F(LockLookTest, AFolderIsLockedWhileSomebodyHoldsIt) {
  FileError error;
  EXPECT_FALSE(isFolderLocked(_home, &error));
  {
    const FolderHolder other(_home);
    EXPECT_TRUE(isFolderLocked(_home, &error));
  }
  {
    const LockAttempt own = _files.tryLock(_home);
    EXPECT_TRUE(isFolderLocked(_home, &error));
  }
  EXPECT_FALSE(isFolderLocked(_home, &error));
  EXPECT_EQ("", error.description);
}

TEST_F(LockLookTest, ALookTakesNothing) {
  EXPECT_FALSE(isFolderLocked(_home));

  EXPECT_FALSE(isLocked(_home));
}

TEST_F(LockLookTest, WhoeverOnlyLooksIsNoHolder) {
  proves("STATUS-5");
  const Descriptor other = look(_home);

  EXPECT_FALSE(isFolderLocked(_home));
}

TEST_F(LockLookTest, ALookDoesNotMakeTheFolderBusy) {
  proves("LOCK-2", "STATUS-5");
  Descriptor other = look(_home);
  std::thread end([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
    other = Descriptor();
  });

  const LockAttempt attempt = _files.tryLock(_home);

  end.join();
  EXPECT_FALSE(attempt.busy);
  EXPECT_TRUE(attempt.hold);
  EXPECT_TRUE(isLocked(_home));
}

TEST_F(LockLookTest, WhoeverLooksForLongHoldsTheFolder) {
  const Descriptor other = look(_home);

  const LockAttempt attempt = _files.tryLock(_home);

  EXPECT_TRUE(attempt.busy);
  EXPECT_FALSE(attempt.hold);
}

TEST_F(LockLookTest, WhatCannotBeLookedAtIsNotLocked) {
  FileError error;
  for (const std::string& item : {_folder.makeFile("file"), _folder.makePipe("pipe"),
                                  path("missing"), std::string(), _home + std::string("\0x", 2)}) {
    EXPECT_FALSE(isFolderLocked(item, &error)) << item;
    EXPECT_EQ(FileError::kMissing, error.code) << item;
    EXPECT_FALSE(isFolderLocked(item)) << item << ", and nobody asks why";
  }
  _folder.makeLink("loop", "loop");
  EXPECT_FALSE(isFolderLocked(path("loop"), &error));
  EXPECT_EQ(FileError::kClosed, error.code);
}

}  // namespace
}  // namespace installer::test
