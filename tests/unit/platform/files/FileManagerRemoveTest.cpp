#include <sys/stat.h>

#include <cerrno>
#include <string>

#include "support/ChildRun.h"
#include "support/Proves.h"
#include "unit/platform/files/FileManagerFixture.h"

namespace installer::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class FileManagerRemoveTest : public FileManagerFixture {
 protected:
  bool remove(std::string_view relative) { return _files.remove(path(relative)); }
};

TEST_F(FileManagerRemoveTest, AnEntryOfEveryKindIsRemoved) {
  _folder.makeFile("file", "", 0);
  _folder.makeFolder("folder");
  _folder.makeLink("dangling", "nowhere");
  _folder.makePipe("pipe");
  _folder.makeSocket("socket");

  for (const std::string name : {"file", "folder", "dangling", "pipe", "socket"}) {
    EXPECT_TRUE(remove(name)) << name;
  }

  EXPECT_THAT(pathsIn(snapshot()), IsEmpty());
}

TEST_F(FileManagerRemoveTest, AFolderGoesWithAllBelowIt) {
  proves("FILES-8");
  _folder.makeFile("tree/a/b/file");
  _folder.makeFile("tree/a/.hidden");
  _folder.makeFile("tree/odd \xff\n name");
  _folder.makePipe("tree/pipe");
  _folder.makeFolder("tree/empty", 0);
  for (int number = 0; number < 500; ++number) {
    _folder.makeFile("tree/many/" + std::to_string(number));
  }
  _folder.makeFile("beside");

  EXPECT_TRUE(remove("tree"));

  EXPECT_THAT(pathsIn(snapshot()), ElementsAre("beside"));
}

TEST_F(FileManagerRemoveTest, LinksAreRemovedAndTheirTargetsStay) {
  proves("FILES-8");
  _folder.makeFile("target/file");
  _folder.makeLink("link", "target");
  _folder.makeLink("tree/link", "../target");
  const auto before = snapshot("target");

  EXPECT_TRUE(remove("link/"));
  EXPECT_TRUE(remove("tree"));

  EXPECT_FALSE(isThere("link"));
  EXPECT_THAT(TreeDiff(before, snapshot("target")).lines(), IsEmpty());
}

TEST_F(FileManagerRemoveTest, AFolderThatBecomesALinkIsNotEntered) {
  proves("FILES-8");
  _folder.makeFile("target/file");
  _folder.makeFile("tree/a/file");
  _folder.makeFile("tree/z/file");
  // The first file is about to go; the other folder is exchanged for a link at that moment.
  _files.beforeNext(FileOperation::kUnlink, [this] {
    for (const std::string name : {"tree/a", "tree/z"}) {
      if (::rename(path(name).c_str(), path("away").c_str()) == 0)
        _folder.makeLink(name, "../target");
      if (isThere("away/file")) break;
    }
  });

  (void)remove("tree");  // what is left is looked at

  EXPECT_TRUE(isThere("target/file"));
}

TEST_F(FileManagerRemoveTest, WhatIsNotThereCannotBeRemoved) {
  _folder.makeFile("file");

  EXPECT_FALSE(remove("missing"));
  EXPECT_FALSE(remove("missing/file"));
  EXPECT_FALSE(remove("file/below"));
  EXPECT_FALSE(_files.remove(""));
  EXPECT_FALSE(_files.remove(path("file") + std::string("\0x", 2)));

  EXPECT_TRUE(isThere("file"));
}

TEST_F(FileManagerRemoveTest, FoldersWithoutANameOfTheirOwnStay) {
  proves("FILES-8");
  _folder.makeFile("tree/folder/file");
  const auto before = snapshot();

  EXPECT_FALSE(remove("tree/folder/."));
  EXPECT_FALSE(remove("tree/folder/.."));
  EXPECT_FALSE(_files.remove("/"));

  EXPECT_THAT(TreeDiff(before, snapshot()).lines(), IsEmpty());
}

TEST_F(FileManagerRemoveTest, WhatFailsOnceIsTriedAgain) {
  for (int number = 0; number < 10; ++number) _folder.makeFile("tree/" + std::to_string(number));
  _files.failAt(5, EIO);

  EXPECT_TRUE(remove("tree"));

  EXPECT_FALSE(isThere("tree"));
  EXPECT_EQ(_files.operations().size(), 13u) << "ten files, two folders, one more try";
}

TEST_F(FileManagerRemoveTest, NothingIsTriedTwiceWithoutNeed) {
  _folder.makeFile("tree/a/file");
  _folder.makeFile("tree/b");

  EXPECT_TRUE(remove("tree"));

  EXPECT_EQ(_files.operations().size(), 4u);
}

TEST_F(FileManagerRemoveTest, AFolderThatCannotBeEmptiedEnds) {
  proves("FILES-8");
  _folder.makeFile("tree/file");
  _files.failAlways(FileOperation::kUnlink, EBUSY);

  EXPECT_FALSE(remove("tree"));

  EXPECT_EQ(_files.operations().size(), 2u);
}

TEST_F(FileManagerRemoveTest, WhatStaysMakesTheRemovalFail) {
  _folder.makeFile("tree/a/file");
  _folder.makeFile("tree/b/file");
  _files.failAlways(FileOperation::kUnlink, EIO);

  EXPECT_FALSE(remove("tree"));

  EXPECT_EQ(pathsIn(snapshot("tree")).size(), 4u);
}

TEST_F(FileManagerRemoveTest, ABarredFolderKeepsWhatIsInIt) {
  if (!isRoot()) GTEST_SKIP() << "needs files of somebody else";
  giveToOrdinaryUser(_folder.makeFolder("work"));
  giveToOrdinaryUser(_folder.makeFolder("work/tree"));
  giveToOrdinaryUser(_folder.makeFile("work/tree/mine"));
  _folder.makeFile("work/tree/foreign/file");
  giveToOrdinaryUser(_folder.makeFolder("work/tree/empty", 0));

  EXPECT_TRUE(asOrdinaryUser([&] { return !remove("work/tree"); }));

  EXPECT_THAT(pathsIn(snapshot("work/tree")), ElementsAre("foreign", "foreign/file"));
}

TEST_F(FileManagerRemoveTest, AnOrdinaryUserRemovesHisTree) {
  giveToOrdinaryUser(_folder.makeFolder("work"));

  EXPECT_TRUE(asOrdinaryUser([&] {
    _folder.makeFile("work/tree/a/b/file");
    return remove("work/tree");
  }));

  EXPECT_FALSE(isThere("work/tree"));
}

}  // namespace
}  // namespace installer::test
