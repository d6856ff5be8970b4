#include <sys/stat.h>

#include <cerrno>
#include <string>

#include "support/ChildRun.h"
#include "support/Proves.h"
#include "unit/platform/files/FileManagerFixture.h"

namespace installer::test {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

class FileManagerFolderTest : public FileManagerFixture {
 protected:
  bool create(std::string_view relative, Intermediates intermediates,
              const std::optional<FileAttributes>& attributes = std::nullopt) {
    _error = {0, ""};
    return _files.createDirectory(path(relative), intermediates, attributes, &_error);
  }

  FileError _error;
};

TEST_F(FileManagerFolderTest, ANewFolderHasTheMaskedMode) {
  const CreationMask mask(027);

  EXPECT_TRUE(create("folder", Intermediates::refuse));
  EXPECT_TRUE(create("a/b", Intermediates::create));

  EXPECT_EQ(modeOf("folder"), 0750u);
  EXPECT_EQ(modeOf("a"), 0750u);
  EXPECT_EQ(modeOf("a/b"), 0750u);
  EXPECT_EQ(_error.code, 0);
}

TEST_F(FileManagerFolderTest, MissingFoldersAboveAreMadeOrRefused) {
  EXPECT_FALSE(create("a/b/c", Intermediates::refuse));
  EXPECT_EQ(_error.code, FileError::kOther);
  EXPECT_EQ(_error.description,
            "\"" + path("a/b/c") + "\" cannot be created: No such file or directory");
  EXPECT_FALSE(isThere("a"));

  EXPECT_TRUE(create("a//b/c///", Intermediates::create));
  EXPECT_EQ(snapshot("a/b/c")["."].kind, "folder");
}

TEST_F(FileManagerFolderTest, OnlyMissingFoldersAreMade) {
  _folder.makeFolder("a", 0700);

  EXPECT_TRUE(create("a/b/c", Intermediates::create));

  EXPECT_EQ(modeOf("a"), 0700u);
  using enum FileOperation;
  EXPECT_THAT(_files.operations(), ElementsAre(kMakeDirectory, kMakeDirectory));
}

TEST_F(FileManagerFolderTest, AnExistingFolderCountsAsMadeOrIsRefused) {
  _folder.makeFolder("folder", 0711);

  EXPECT_TRUE(create("folder", Intermediates::create, FileAttributes{"self", "own", 0775}));
  EXPECT_EQ(modeOf("folder"), 0711u) << "its attributes stay";
  EXPECT_THAT(_files.operations(), IsEmpty());

  EXPECT_FALSE(create("folder", Intermediates::refuse));
  EXPECT_EQ(_error.code, FileError::kExists);
  EXPECT_FALSE(create("folder", Intermediates::refuse, FileAttributes{"self", "own", 0775}));
  EXPECT_EQ(_error.code, FileError::kExists);
  EXPECT_THAT(_error.description, HasSubstr("File exists"));
  EXPECT_EQ(modeOf("folder"), 0711u);
}

TEST_F(FileManagerFolderTest, ALinkToAFolderIsAnExistingFolder) {
  _folder.makeFolder("real");
  _folder.makeLink("link", "real");

  EXPECT_TRUE(create("link", Intermediates::create));
  EXPECT_TRUE(create("link/below", Intermediates::create));
  EXPECT_FALSE(create("link", Intermediates::refuse));

  EXPECT_TRUE(isThere("real/below"));
}

TEST_F(FileManagerFolderTest, AnythingElseInTheWayIsAFailure) {
  _folder.makeFile("file");
  _folder.makeLink("dangling", "nowhere");

  for (const std::string name : {"file", "dangling"}) {
    EXPECT_FALSE(create(name, Intermediates::create)) << name;
    EXPECT_EQ(_error.code, FileError::kExists) << name;
    EXPECT_FALSE(create(name, Intermediates::refuse)) << name;
    EXPECT_EQ(_error.code, FileError::kExists) << name;
    EXPECT_FALSE(create(name + "/below", Intermediates::create)) << name;
    EXPECT_FALSE(create(name + "/below", Intermediates::refuse)) << name;
  }
  EXPECT_FALSE(isThere("nowhere"));
}

TEST_F(FileManagerFolderTest, AFolderMadeMeanwhileCounts) {
  _files.beforeNext(FileOperation::kMakeDirectory, [this] { _folder.makeFolder("a"); });
  EXPECT_TRUE(create("a", Intermediates::create));

  _files.beforeNext(FileOperation::kMakeDirectory, [this] { _folder.makeFolder("b/c"); });
  EXPECT_TRUE(create("b/c/d", Intermediates::create));
}

TEST_F(FileManagerFolderTest, AFileMadeMeanwhileDoesNot) {
  _files.beforeNext(FileOperation::kMakeDirectory, [this] { _folder.makeFile("a"); });
  EXPECT_FALSE(create("a", Intermediates::create));
  EXPECT_EQ(_error.code, FileError::kExists);

  _files.beforeNext(FileOperation::kMakeDirectory, [this] { _folder.makeFile("b"); });
  EXPECT_FALSE(create("b/c", Intermediates::create));
}

TEST_F(FileManagerFolderTest, AttributesAreExactWhateverTheMask) {
  proves("FILES-16");
  _users.add({"ada", 1234, 2345, ""});
  _users.groups["crew"] = 3456;
  const CreationMask mask(077);

  EXPECT_TRUE(create("above/folder", Intermediates::create,
                     FileAttributes{isRoot() ? "ada" : "self", isRoot() ? "crew" : "own", 0775}));

  EXPECT_EQ(modeOf("above/folder"), 0775u);
  EXPECT_EQ(modeOf("above"), 0700u) << "they are those of the last folder only";
  if (isRoot()) {
    EXPECT_EQ(statusOf("above/folder").st_uid, 1234u);
    EXPECT_EQ(statusOf("above/folder").st_gid, 3456u);
    EXPECT_EQ(statusOf("above").st_uid, 0u);
  }
}

TEST_F(FileManagerFolderTest, WithoutAGroupAdminTheOwnersOwnGroupIsGiven) {
  EXPECT_TRUE(create("folder", Intermediates::refuse, FileAttributes{"self", "admin", 0775}));

  EXPECT_EQ(statusOf("folder").st_gid, ::getegid());
}

TEST_F(FileManagerFolderTest, AnUnknownOwnerOrGroupLeavesNoFolder) {
  proves("FILES-16");
  EXPECT_FALSE(create("folder", Intermediates::refuse, FileAttributes{"stranger", "own", 0775}));
  EXPECT_EQ(_error.code, FileError::kOther);
  EXPECT_FALSE(create("folder", Intermediates::refuse, FileAttributes{"self", "strange", 0775}));
  EXPECT_EQ(_error.code, FileError::kOther);

  EXPECT_THAT(pathsIn(snapshot()), IsEmpty());
}

TEST_F(FileManagerFolderTest, AttributesThatCannotBeGivenLeaveNoFolder) {
  proves("FILES-16");
  using enum FileOperation;
  for (const FileOperation operation : {kMakeDirectory, kChangeOwner, kChangeMode}) {
    _files.failNext(operation, EROFS);

    EXPECT_FALSE(create("folder", Intermediates::create, FileAttributes{"self", "own", 0775}));
    EXPECT_THAT(_error.description, HasSubstr("Read-only file system"));
    EXPECT_THAT(pathsIn(snapshot()), IsEmpty()) << static_cast<int>(operation);
  }
}

TEST_F(FileManagerFolderTest, ANewFolderIsPrivateUntilItHasItsAttributes) {
  proves("FILES-16");
  const CreationMask mask(0);
  mode_t mode = 0777;
  _files.beforeNext(FileOperation::kChangeOwner, [&] { mode = modeOf("folder"); });

  EXPECT_TRUE(create("folder", Intermediates::refuse, FileAttributes{"self", "own", 0777}));

  EXPECT_EQ(mode, 0700u);
}

TEST_F(FileManagerFolderTest, AnOrdinaryUserCannotGiveAFolderAway) {
  giveToOrdinaryUser(_folder.makeFolder("work"));
  _users.add({"root", 0, 0, ""});

  EXPECT_TRUE(asOrdinaryUser([&] {
    return !create("work/folder", Intermediates::refuse, FileAttributes{"root", "admin", 0775});
  }));

  EXPECT_FALSE(isThere("work/folder"));
}

TEST_F(FileManagerFolderTest, AnUnusablePathIsAFailure) {
  const std::string cut = path("cut") + std::string(1, '\0') + "rest";
  for (const Intermediates intermediates : {Intermediates::create, Intermediates::refuse}) {
    EXPECT_FALSE(_files.createDirectory("", intermediates));
    EXPECT_FALSE(_files.createDirectory(cut, intermediates));
    EXPECT_FALSE(create(std::string(300, 'n'), intermediates));
    EXPECT_FALSE(create(std::string(300, 'n') + "/below", intermediates));
  }
  EXPECT_THAT(pathsIn(snapshot()), IsEmpty());
}

TEST_F(FileManagerFolderTest, APathWithoutEndIsAFailure) {
  std::string longest = path("");
  while (longest.size() < 1'000'000) longest += "/n";

  EXPECT_FALSE(_files.createDirectory(longest, Intermediates::create));
}

TEST_F(FileManagerFolderTest, TheRootIsAnExistingFolder) {
  EXPECT_TRUE(_files.createDirectory("/", Intermediates::create));
  EXPECT_FALSE(_files.createDirectory("/", Intermediates::refuse, std::nullopt, &_error));
  EXPECT_EQ(_error.code, FileError::kExists);
}

}  // namespace
}  // namespace installer::test
