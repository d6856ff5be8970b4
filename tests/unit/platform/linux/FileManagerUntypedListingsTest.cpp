#include "support/Proves.h"
#include "unit/platform/files/FileManagerFixture.h"
#include "unit/platform/linux/UntypedListings.h"

namespace installer::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

// On a file system whose listings do not tell what an entry is, each has to be looked at.
class FileManagerUntypedListingsTest : public FileManagerFixture {
 protected:
  FileManagerUntypedListingsTest() {
    _folder.makeFile("from/file", "new", 0640);
    _folder.makeFile("from/sub/deep/file", "new");
    _folder.makeLink("from/link", "file");
    _folder.makeFile("elsewhere/file", "new");
    _folder.makeLink("from/folderLink", "../elsewhere");
    _folder.makeLink("from/dangling", "nowhere");
  }

  const UntypedListings _listings;
};

TEST_F(FileManagerUntypedListingsTest, ATreeIsCopiedAsItIs) {
  proves("FILES-9");

  EXPECT_TRUE(_files.copy(path("from"), path("to"), ExistingItem::fail));

  EXPECT_THAT(TreeDiff(snapshot("from"), snapshot("to")).lines(), IsEmpty());
}

TEST_F(FileManagerUntypedListingsTest, AMergeGoesIntoFoldersAndReplacesTheRest) {
  proves("FILES-10");
  _folder.makeFile("app/to/file", "old");
  _folder.makeFile("app/to/link", "old");
  _folder.makeFile("app/to/sub/own", "own");
  _folder.makeFile("app/to/folderLink/own", "own");

  _files.merge(path("from"), path("app/to"), path("app"));

  ASSERT_THAT(pathsIn(snapshot("app/to")),
              ElementsAre("dangling", "file", "folderLink", "folderLink/file", "folderLink/own",
                          "link", "sub", "sub/deep", "sub/deep/file", "sub/own"));
  EXPECT_EQ(_folder.content("app/to/file"), "new");
  EXPECT_EQ(modeOf("app/to/file"), 0640u);
  EXPECT_EQ(snapshot("app/to/link")["."].content, "file");
  EXPECT_EQ(snapshot("app/to/dangling")["."].content, "nowhere");
  EXPECT_EQ(_folder.content("app/to/sub/own"), "own");
}

TEST_F(FileManagerUntypedListingsTest, LeftOversAreFoundInFolders) {
  proves("AGAIN-1");
  _folder.makeFile("from/sub/deep/.hotfix-1");

  _files.removeLeftOvers(path("from"), LeftOvers::below);

  EXPECT_FALSE(isThere("from/sub/deep/.hotfix-1"));
  EXPECT_TRUE(isThere("from/sub/deep/file"));
}

}  // namespace
}  // namespace installer::test
