#include "platform/files/NewFileModes.h"

#include <gtest/gtest.h>

#include <initializer_list>

namespace installer::test {
namespace {

struct stat fileOf(mode_t mode) {
  struct stat status {};
  status.st_mode = S_IFREG | mode;
  return status;
}

const Descriptor kNone;

TEST(NewFileModesTest, WhatOneFileHasGotSavesTheLookAtOthers) {
  NewFileModes modes;

  EXPECT_TRUE(modes.isExact(kNone, 0644, fileOf(0644)));

  EXPECT_TRUE(modes.isExact(kNone, 0600, std::nullopt));
  EXPECT_FALSE(modes.isExact(kNone, 0755, std::nullopt)) << "of these bits nothing is known";
}

TEST(NewFileModesTest, BitsThatAreTakenAwayOnceAreTakenAlways) {
  NewFileModes modes;

  EXPECT_FALSE(modes.isExact(kNone, 0666, fileOf(0644)));

  EXPECT_FALSE(modes.isExact(kNone, 0622, fileOf(0622)));
  EXPECT_TRUE(modes.isExact(kNone, 0644, std::nullopt));
}

// As on FAT, where the mount says what every file has.
TEST(NewFileModesTest, WhereModesAreTheFileSystemsOwnNoneIsExact) {
  NewFileModes modes;

  EXPECT_FALSE(modes.isExact(kNone, 0700, fileOf(0755)));

  for (const mode_t mode : std::initializer_list<mode_t>{0, 0700, 0755})
    EXPECT_FALSE(modes.isExact(kNone, mode, fileOf(0755))) << mode;
}

}  // namespace
}  // namespace installer::test
