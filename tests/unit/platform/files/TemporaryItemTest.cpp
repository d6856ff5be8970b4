#include "platform/files/TemporaryItem.h"

#include <fcntl.h>
#include <gmock/gmock.h>

#include <utility>

#include "platform/files/Opening.h"
#include "support/ChildRun.h"
#include "support/TemporaryFolder.h"

namespace installer::test {
namespace {

class TemporaryItemTest : public ::testing::Test {
 protected:
  bool stands(const std::string& name) const { return statusOf(_open.get(), name).has_value(); }
  // Puts a folder with a file in it under the name.
  void make(TemporaryItem& item) const {
    _folder.makeFile(item.name() + "/below/file");
    item.isMadeAsFolder(openFolder(_open.get(), item.name()));
  }

  TemporaryFolder _folder;
  FileChanges _changes{[](FileOperation) { return 0; }};
  const Descriptor _open = openFolderFollowingLinks(AT_FDCWD, _folder.path());
};

TEST_F(TemporaryItemTest, GoesWithItsObjectWithAllBelowIt) {
  std::string name;
  {
    TemporaryItem item(_changes, _open.get());
    name = item.name();
    EXPECT_THAT(name, ::testing::StartsWith(".hotfix-"));
    EXPECT_FALSE(stands(name)) << "nothing is made";
    make(item);
    EXPECT_TRUE(item.exists());
  }

  EXPECT_FALSE(stands(name));
}

// Whoever can write there can give it the name of a file that we make.
TEST_F(TemporaryItemTest, NobodysFolderIsEmptied) {
  std::string name;
  {
    TemporaryItem item(_changes, _open.get());
    name = item.name();
    _folder.makeFile("file");
    item.isMade(openRegularFile(_open.get(), "file").file);
    _folder.makeFile(name + "/below/file");
  }

  EXPECT_TRUE(stands(name + "/below/file"));
}

// Whoever can write there can also give our folder another name.
TEST_F(TemporaryItemTest, NoOtherFolderIsEmptied) {
  std::string name;
  {
    TemporaryItem item(_changes, _open.get());
    name = item.name();
    make(item);
    ASSERT_EQ(_changes.rename(_open.get(), name, "ours"), 0);
    _folder.makeFile(name + "/other");
  }

  EXPECT_TRUE(stands(name + "/other"));
  EXPECT_TRUE(stands("ours/below/file"));
}

TEST_F(TemporaryItemTest, StaysWhenItIsForgotten) {
  std::string name;
  {
    TemporaryItem item(_changes, _open.get());
    name = item.name();
    make(item);
    item.forget();
    EXPECT_FALSE(item.exists());
  }

  EXPECT_TRUE(stands(name));
}

TEST_F(TemporaryItemTest, GoesOnceWithTheLastOwner) {
  std::string name;
  {
    TemporaryItem first(_changes, _open.get());
    name = first.name();
    make(first);
    {
      const TemporaryItem second(std::move(first));
      EXPECT_EQ(second.name(), name);
      EXPECT_EQ(second.folder(), _open.get());
      EXPECT_FALSE(first.exists()) << "moved away";
    }
    EXPECT_FALSE(stands(name));
    _folder.makeFile(name);
  }

  EXPECT_TRUE(stands(name)) << "somebody else's by now";
}

TEST_F(TemporaryItemTest, NamesOfAForkedProcessAreItsOwn) {
  constexpr int kSome = 40;
  for (int number = 0; number < kSome; ++number) (void)_changes.freeTemporaryName(_open.get());

  EXPECT_TRUE(inChild([&] {
    for (int number = 0; number < kSome; ++number)
      _folder.makeFile(_changes.freeTemporaryName(_open.get()));
    return true;
  }));

  for (int number = 0; number < kSome; ++number)
    EXPECT_FALSE(stands(_changes.freeTemporaryName(_open.get())));
}

}  // namespace
}  // namespace installer::test
