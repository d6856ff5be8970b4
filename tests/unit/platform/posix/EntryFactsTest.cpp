#include "platform/EntryFacts.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "support/TemporaryFolder.h"

namespace installer::test {
namespace {

TEST(EntryFactsTest, TheyAreTheEntrysOwn) {
  const TemporaryFolder folder;
  const std::string file = folder.makeFile("file");
  const std::string link = folder.makeLink("link", "file");
  const timespec times[2] = {{1'000'000, 0}, {1'234'567, 0}};
  ASSERT_EQ(0, utimensat(AT_FDCWD, link.c_str(), times, AT_SYMLINK_NOFOLLOW));

  ASSERT_TRUE(entryAt(file));
  EXPECT_FALSE(entryAt(file)->isLink);
  EXPECT_EQ(geteuid(), entryAt(file)->owner);
  ASSERT_TRUE(entryAt(link));
  EXPECT_TRUE(entryAt(link)->isLink);
  EXPECT_EQ(1'234'567, entryAt(link)->modified);
  EXPECT_FALSE(entryAt(folder.path("missing")));
}

TEST(EntryFactsTest, FoldersAndTheirModesAreKnown) {
  const TemporaryFolder folder;
  const std::string inner = folder.makeFolder("inner");
  ASSERT_EQ(0, chmod(inner.c_str(), 01750));
  const std::string link = folder.makeLink("link", "inner");

  EXPECT_TRUE(entryAt(inner)->isFolder);
  EXPECT_EQ(01750u, entryAt(inner)->mode);
  EXPECT_FALSE(entryAt(link)->isFolder);
  EXPECT_FALSE(entryAt(folder.makeFile("file"))->isFolder);
}

TEST(EntryFactsTest, AnItemIsTheSameByEveryPath) {
  const TemporaryFolder folder;
  const std::string one = folder.makeFolder("one");
  const std::string two = folder.makeFolder("two");
  const std::string link = folder.makeLink("link", "one");

  EXPECT_TRUE(isSameItem(one, one));
  EXPECT_TRUE(isSameItem(one, folder.path("two/../one/")));
  EXPECT_TRUE(isSameItem(link, one));
  EXPECT_FALSE(isSameItem(one, two));
  EXPECT_FALSE(isSameItem(one, folder.path("missing")));
  EXPECT_FALSE(isSameItem(folder.path("missing"), folder.path("missing")));
}

TEST(EntryFactsTest, AnotherUsersEntryIsTheirs) {
  if (geteuid() != 0) GTEST_SKIP() << "only root gives files away";
  const TemporaryFolder folder;
  const std::string file = folder.makeFile("file");
  ASSERT_EQ(0, chown(file.c_str(), 1234, 1234));

  EXPECT_EQ(1234u, entryAt(file)->owner);
}

}  // namespace
}  // namespace installer::test
