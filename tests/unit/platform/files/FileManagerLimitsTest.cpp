#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "support/ChildRun.h"
#include "support/Proves.h"
#include "unit/platform/files/FileManagerFixture.h"

namespace installer::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

// Folders inside folders, as deep as somebody who wants to harm us makes them.
class FileManagerLimitsTest : public FileManagerFixture {
 protected:
  static constexpr rlim_t kManyDescriptors = 3000;
  static constexpr rlim_t kFewDescriptors = 60;
  static constexpr int kDeepest = 1000;  // folders that a walk goes down

  // The relative path of a chain of so many folders.
  static std::string chain(const std::string& root, int folders) {
    std::string result = root;
    for (int number = 1; number < folders; ++number) result += "/d";
    return result;
  }

  static bool allowDescriptors(rlim_t number) {
    rlimit limit{};
    if (::getrlimit(RLIMIT_NOFILE, &limit) != 0) return false;
    limit.rlim_cur = number;
    return ::setrlimit(RLIMIT_NOFILE, &limit) == 0;
  }

  static bool systemAllowsMany() {
    rlimit limit{};
    return ::getrlimit(RLIMIT_NOFILE, &limit) == 0 && limit.rlim_max >= kManyDescriptors;
  }

  // In two steps: the standard library makes no thousand folders at once.
  void makeChain(const std::string& root, int folders) {
    _folder.makeFolder(chain(root, folders / 2));
    _folder.makeFile(chain(root, folders) + "/file", "x", 0600);
  }
};

TEST_F(FileManagerLimitsTest, LeftOversAreLookedForAsDeepAsAWalkGoes) {
  proves("FILES-17");
  if (!systemAllowsMany()) GTEST_SKIP() << "the system allows too few descriptors";
  makeChain("root", kDeepest + 1);
  _folder.makeFile(chain("root", kDeepest) + "/.hotfix-1");
  _folder.makeFile(chain("root", kDeepest + 1) + "/.hotfix-2");

  EXPECT_TRUE(inChild([&] {
    if (!allowDescriptors(kManyDescriptors)) return false;
    _files.removeLeftOvers(path("root"), LeftOvers::below);
    return true;
  }));

  EXPECT_FALSE(isThere(chain("root", kDeepest) + "/.hotfix-1"));
  EXPECT_TRUE(isThere(chain("root", kDeepest + 1) + "/.hotfix-2"));
  std::filesystem::remove(path(chain("root", kDeepest + 1) + "/.hotfix-2"));
}

TEST_F(FileManagerLimitsTest, TheDeepestTreeIsRemovedAndADeeperOneIsAFailure) {
  proves("FILES-17");
  if (!systemAllowsMany()) GTEST_SKIP() << "the system allows too few descriptors";
  makeChain("fits", kDeepest);
  makeChain("deeper", kDeepest + 1);

  EXPECT_TRUE(inChild([&] {
    return allowDescriptors(kManyDescriptors) && _files.remove(path("fits")) &&
           !_files.remove(path("deeper"));
  }));

  EXPECT_FALSE(isThere("fits"));
  EXPECT_TRUE(isThere(chain("deeper", kDeepest + 1) + "/file"));
}

TEST_F(FileManagerLimitsTest, TheDeepestTreeIsCopiedAndADeeperOneInPart) {
  proves("FILES-17");
  if (!systemAllowsMany()) GTEST_SKIP() << "the system allows too few descriptors";
  makeChain("fits", kDeepest);
  makeChain("deeper", kDeepest + 1);

  EXPECT_TRUE(inChild([&] {
    FileError error;
    return allowDescriptors(kManyDescriptors) &&
           _files.copy(path("fits"), path("copy"), ExistingItem::fail) &&
           !_files.copy(path("deeper"), path("part"), ExistingItem::fail, &error) &&
           error.description.find("symbolic links") != std::string::npos;
  }));

  EXPECT_TRUE(isThere(chain("copy", kDeepest) + "/file"));
  EXPECT_TRUE(isThere(chain("part", kDeepest)));
  EXPECT_FALSE(isThere(chain("part", kDeepest + 1)));
}

TEST_F(FileManagerLimitsTest, TheDeepestTreeIsMergedAndADeeperOneInPart) {
  proves("FILES-17");
  if (!systemAllowsMany()) GTEST_SKIP() << "the system allows too few descriptors";
  makeChain("fits", kDeepest);
  makeChain("deeper", kDeepest + 1);
  _folder.makeFolder(chain("to", kDeepest / 2));
  _folder.makeFolder(chain("to", kDeepest + 1));

  EXPECT_TRUE(inChild([&] {
    if (!allowDescriptors(kManyDescriptors)) return false;
    _files.merge(path("fits"), path("to"), path(""));
    _files.merge(path("deeper"), path("to"), path(""));
    return true;
  }));

  EXPECT_TRUE(isThere(chain("to", kDeepest) + "/file"));
  EXPECT_FALSE(isThere(chain("to", kDeepest + 1) + "/file"));
}

TEST_F(FileManagerLimitsTest, TheDeepestTreeIsChangedAndADeeperOneInPart) {
  proves("FILES-17");
  if (!systemAllowsMany()) GTEST_SKIP() << "the system allows too few descriptors";
  makeChain("fits", kDeepest);
  makeChain("deeper", kDeepest + 1);
  const FileAttributes attributes{"self", "own", 0775};

  EXPECT_TRUE(inChild([&] {
    return allowDescriptors(kManyDescriptors) &&
           _files.changeAttributesBelow(path("fits"), attributes) &&
           !_files.changeAttributesBelow(path("deeper"), attributes);
  }));

  EXPECT_EQ(modeOf(chain("fits", kDeepest) + "/file"), 0775u);
  EXPECT_EQ(modeOf(chain("deeper", kDeepest + 1)), 0775u);
  EXPECT_EQ(modeOf(chain("deeper", kDeepest + 1) + "/file"), 0600u);
}

TEST_F(FileManagerLimitsTest, WithoutDescriptorsLeftAWalkFailsAndLeavesNoTrace) {
  proves("FILES-17");
  makeChain("tree", 100);
  _folder.makeFolder(chain("to", 100));
  makeChain("known", 3);
  _folder.makeFolder(chain("known to", 3));
  const FileAttributes attributes{"self", "own", 0775};

  EXPECT_TRUE(inChild([&] {
    // A sanitizer looks at memory through a pipe; what it has seen before needs none.
    _files.merge(path("known"), path("known to"), path(""));
    if (!allowDescriptors(kFewDescriptors)) return false;
    _files.merge(path("tree"), path("to"), path(""));
    return !_files.changeAttributesBelow(path("tree"), attributes) &&
           !_files.copy(path("tree"), path("copy"), ExistingItem::fail) &&
           !_files.remove(path("tree"));
  }));

  EXPECT_TRUE(isThere("copy/d/d"));
  EXPECT_FALSE(isThere(chain("copy", 100)));
  EXPECT_EQ(modeOf("copy/d"), 0775u) << "also a part gets its modes";
  EXPECT_TRUE(isThere(chain("tree", 100) + "/file"));
  EXPECT_FALSE(isThere(chain("to", 100) + "/file"));
}

TEST_F(FileManagerLimitsTest, EveryNumberOfDescriptorsLeavesFilesWhole) {
  proves("FILES-17");
  const auto makeTrees = [&] {
    removeTree(path("from"));
    removeTree(path("app"));
    _folder.makeFile("from/a/b/file", "new");
    _folder.makeFile("from/new/b/file", "new");
    _folder.makeFile("app/a/b/file", "old");
  };
  const auto change = [&] {
    (void)_files.write(path("app/written"), "new");                         // a limit may refuse it
    (void)_files.copy(path("from"), path("app/copy"), ExistingItem::fail);  // a limit may refuse it
    _files.merge(path("from"), path("app"), path("app"));
  };
  // First without a limit: sanitizers need descriptors of their own at the first call of each kind.
  // The second copy fails, as many will.
  makeTrees();
  change();
  change();

  for (rlim_t number = 3; number < 24; ++number) {
    makeTrees();

    EXPECT_TRUE(inChild([&] {
      if (!allowDescriptors(number)) return false;
      change();
      return true;
    })) << number;

    for (const auto& [name, entry] : snapshot("app")) {
      EXPECT_EQ(name.find(".hotfix-"), std::string::npos) << number << " " << name;
      if (entry.kind == "file") {
        EXPECT_THAT(entry.content, ::testing::AnyOf("old", "new")) << number << " " << name;
      }
    }
  }
}

TEST_F(FileManagerLimitsTest, NamesAsLongAsTheyGetAreHandled) {
  const std::string name(255, 'n');
  _folder.makeFile("from/" + name + "/" + name, "x");
  _folder.makeFile("to/" + name + "/old", "x");

  EXPECT_TRUE(_files.copy(path("from/" + name), path(name), ExistingItem::fail));
  _files.merge(path("from"), path("to"), path(""));
  EXPECT_TRUE(_files.write(path("from/" + name + "/" + name), "y"));
  EXPECT_TRUE(_files.changeAttributesBelow(path("from"), {"self", "own", 0775}));
  EXPECT_TRUE(_files.remove(path("from")));

  EXPECT_TRUE(isThere(name + "/" + name));
  EXPECT_TRUE(isThere("to/" + name + "/" + name));
}

TEST_F(FileManagerLimitsTest, TheLongestLinkTargetIsKept) {
  const std::string target(4095, 't');
  _folder.makeLink("from", target);

  EXPECT_TRUE(_files.copy(path("from"), path("to"), ExistingItem::fail));

  EXPECT_EQ(snapshot("to")["."].content, target);
}

}  // namespace
}  // namespace installer::test
