#include <sys/fsuid.h>
#include <unistd.h>

#include "support/ChildRun.h"
#include "support/Proves.h"
#include "unit/platform/files/FileManagerFixture.h"

namespace installer::test {
namespace {

// A file server that trusts no root of its clients: what root makes on it is somebody else's.
class FileManagerFileServerTest : public FileManagerFixture {
 protected:
  ~FileManagerFileServerTest() override { actOnFilesAs(::geteuid()); }

  static void actOnFilesAs(uid_t user) {
    (void)::setfsuid(user);  // answers the former one
  }
};

TEST_F(FileManagerFileServerTest, AFolderThatTurnsOutToBeSomebodyElsesIsNotGivenAway) {
  proves("FILES-16");
  if (!isRoot()) GTEST_SKIP() << "only root can make other users' entries";
  giveToOrdinaryUser(_folder.makeFolder("work"));
  const uid_t other = statusOf("work").st_uid;
  _files.beforeNext(FileOperation::kMakeDirectory, [&] {
    actOnFilesAs(other);
    _files.beforeNext(FileOperation::kChangeOwner, [] { actOnFilesAs(::geteuid()); });
  });
  FileError error;

  EXPECT_FALSE(_files.createDirectory(path("work/folder"), Intermediates::refuse,
                                      FileAttributes{"self", "own", 0775}, &error));

  actOnFilesAs(::geteuid());
  EXPECT_THAT(error.description, ::testing::HasSubstr("Operation not permitted"));
  EXPECT_FALSE(isThere("work/folder"));
}

}  // namespace
}  // namespace installer::test
