#include "platform/files/EntryKind.h"

#include <dirent.h>
#include <gtest/gtest.h>

namespace installer::test {
namespace {

EntryKind kindOfMode(mode_t type) {
  struct stat status {};
  status.st_mode = type | 0644;
  return kindOf(status);
}

TEST(EntryKindTest, StatusTellsFilesFoldersAndLinks) {
  EXPECT_EQ(kindOfMode(S_IFREG), EntryKind::file);
  EXPECT_EQ(kindOfMode(S_IFDIR), EntryKind::folder);
  EXPECT_EQ(kindOfMode(S_IFLNK), EntryKind::link);
  for (const auto type : {S_IFIFO, S_IFSOCK, S_IFCHR, S_IFBLK})
    EXPECT_EQ(kindOfMode(static_cast<mode_t>(type)), EntryKind::other) << type;
}

TEST(EntryKindTest, ListingTellsTheSameOrNothing) {
  EXPECT_EQ(kindOfListed(DT_REG), EntryKind::file);
  EXPECT_EQ(kindOfListed(DT_DIR), EntryKind::folder);
  EXPECT_EQ(kindOfListed(DT_LNK), EntryKind::link);
  EXPECT_EQ(kindOfListed(DT_UNKNOWN), EntryKind::unknown);
  for (const int type : {DT_FIFO, DT_SOCK, DT_CHR, DT_BLK})
    EXPECT_EQ(kindOfListed(static_cast<unsigned char>(type)), EntryKind::other) << type;
}

}  // namespace
}  // namespace installer::test
