#include "platform/overlay/Changes.h"

#include <gmock/gmock.h>

#include "platform/overlay/OverlayFileManager.h"
#include "support/FakeUserContext.h"
#include "support/OverlayMaker.h"
#include "support/TemporaryFolder.h"

namespace installer::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Kind = overlay::Change::Kind;

class ChangesTest : public ::testing::Test {
 protected:
  std::string path(std::string_view name) const { return _disk.path(name); }

  // A letter for the kind and the path below the folder.
  std::vector<std::string> changes() {
    std::vector<std::string> lines;
    for (const overlay::Change& change : overlay::changesIn(_files.tree()))
      lines.push_back(std::string(1, "+-~a="[static_cast<int>(change.kind)]) + " " +
                      change.path.substr(_disk.path().size() + 1));
    return lines;
  }

  TemporaryFolder _disk;
  FakeUserContext _users;
  overlay::OverlayFileManager _files{_users, ownMaker()};
};

TEST_F(ChangesTest, LooksChangeNothing) {
  _disk.makeFile("folder/file", "bytes");
  EXPECT_TRUE(_files.exists(path("folder/file")));
  EXPECT_FALSE(_files.exists(path("none")));
  EXPECT_TRUE(_files.list(path("folder"), "").has_value());

  EXPECT_THAT(changes(), IsEmpty());
}

TEST_F(ChangesTest, WhatComesAndGoesIsToldWithAllBelowIt) {
  _disk.makeFile("old/sub/file");
  _disk.makeFile("from/sub/file");
  EXPECT_TRUE(_files.remove(path("old")));
  EXPECT_TRUE(_files.copy(path("from"), path("new"), ExistingItem::fail));

  EXPECT_THAT(changes(), ElementsAre("+ new", "+ new/sub", "+ new/sub/file", "- old", "- old/sub",
                                     "- old/sub/file"));
}

TEST_F(ChangesTest, ContentDecidesWhetherAFileIsReplaced) {
  _disk.makeFile("changed", "old");
  _disk.makeFile("same", "same");
  _disk.makeFile("copied", "same");
  _disk.makeFile("kind", "x");
  EXPECT_TRUE(_files.write(path("changed"), "new"));
  EXPECT_TRUE(_files.write(path("same"), "same"));
  EXPECT_TRUE(_files.copy(path("same"), path("copied"), ExistingItem::replace));
  EXPECT_TRUE(_files.remove(path("kind")));
  EXPECT_TRUE(_files.createDirectory(path("kind"), Intermediates::refuse));

  EXPECT_THAT(changes(), ElementsAre("~ changed", "= copied", "~ kind", "= same"));
}

TEST_F(ChangesTest, WhatComesBackAsItWasIsNoChange) {
  _disk.makeFile("tree/file", "bytes");
  _disk.makeLink("link", "tree");
  EXPECT_TRUE(_files.copy(path("tree"), path("aside"), ExistingItem::fail));
  EXPECT_TRUE(_files.remove(path("tree")));
  EXPECT_TRUE(_files.copy(path("aside"), path("tree"), ExistingItem::fail));
  EXPECT_TRUE(_files.remove(path("aside")));
  EXPECT_TRUE(_files.remove(path("link")));
  EXPECT_TRUE(_files.copy(path("tree"), path("link"), ExistingItem::fail));

  EXPECT_THAT(changes(), ElementsAre("~ link", "+ link/file", "= tree/file"));
}

TEST_F(ChangesTest, OwnersAndModesAreToldWithBoth) {
  _disk.makeFile("folder/file", "", 0600);
  (void)_files.changeAttributesBelow(path("folder"), {"nobody knows", "nor this", 0775});

  const auto all = overlay::changesIn(_files.tree());
  ASSERT_THAT(changes(), ElementsAre("a folder/file"));
  EXPECT_EQ(all[0].before->mode, 0600u);
  EXPECT_EQ(all[0].after->mode, 0775u);
}

}  // namespace
}  // namespace installer::test
