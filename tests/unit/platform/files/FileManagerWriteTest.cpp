#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <string>

#include "support/ChildRun.h"
#include "support/Proves.h"
#include "unit/platform/files/FileManagerFixture.h"

namespace installer::test {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

class FileManagerWriteTest : public FileManagerFixture {
 protected:
  bool write(std::string_view relative, std::string_view bytes) {
    return _files.write(path(relative), bytes);
  }
  bool create(std::string_view relative, std::string_view bytes, const FileAttributes& attributes) {
    return _files.createFile(path(relative), bytes, attributes);
  }
};

TEST_F(FileManagerWriteTest, ANewFileHasTheBytesAndTheMaskedMode) {
  const std::string bytes = std::string("\0\xff", 2) + std::string(1 << 20, 'x');
  const CreationMask mask(027);

  EXPECT_TRUE(write("file", bytes));

  EXPECT_EQ(_folder.content("file"), bytes);
  EXPECT_EQ(modeOf("file"), 0640u);
  EXPECT_THAT(pathsIn(snapshot()), ElementsAre("file"));
}

TEST_F(FileManagerWriteTest, ANameAloneIsInTheWorkingFolder) {
  const auto folder = std::filesystem::current_path();
  std::filesystem::current_path(_folder.path());

  EXPECT_TRUE(_files.write("file", "new"));

  std::filesystem::current_path(folder);
  EXPECT_EQ(_folder.content("file"), "new");
}

TEST_F(FileManagerWriteTest, ANewFileCanHaveAnExactMode) {
  const CreationMask mask(077);

  EXPECT_TRUE(_files.write(path("file"), "", ReplacedFile::takeOver, 0644));

  EXPECT_EQ(modeOf("file"), 0644u);
}

TEST_F(FileManagerWriteTest, TheReplacedFilesOwnerAndModeAreTakenOver) {
  proves("FILES-3");
  giveToOrdinaryUser(_folder.makeFile("file", "old", 0604));
  const auto old = statusOf("file");
  const CreationMask mask(077);

  EXPECT_TRUE(_files.write(path("file"), "new", ReplacedFile::takeOver, 0600));

  EXPECT_EQ(_folder.content("file"), "new");
  EXPECT_EQ(modeOf("file"), 0604u);
  EXPECT_EQ(statusOf("file").st_uid, old.st_uid);
  EXPECT_EQ(statusOf("file").st_gid, old.st_gid);
  EXPECT_NE(statusOf("file").st_ino, old.st_ino);
}

TEST_F(FileManagerWriteTest, SetIdBitsAreNotTakenOver) {
  proves("FILES-3");
  _folder.makeFile("file", "old");
  ASSERT_EQ(::chmod(path("file").c_str(), 07755), 0);

  EXPECT_TRUE(write("file", "new"));

  EXPECT_EQ(modeOf("file"), 0755u);
}

TEST_F(FileManagerWriteTest, AReplacedFileCanBeForgotten) {
  proves("FILES-3");
  giveToOrdinaryUser(_folder.makeFile("file", "old", 0600));
  const CreationMask mask(022);

  EXPECT_TRUE(_files.write(path("file"), "new", ReplacedFile::forget));
  EXPECT_EQ(modeOf("file"), 0644u);
  EXPECT_EQ(statusOf("file").st_uid, ::geteuid());

  EXPECT_TRUE(_files.write(path("file"), "new", ReplacedFile::forget, 0666));
  EXPECT_EQ(modeOf("file"), 0666u);
}

TEST_F(FileManagerWriteTest, ALinkIsReplacedAndItsTargetStays) {
  proves("FILES-4");
  _folder.makeFile("target", "old", 0600);
  _folder.makeLink("link", "target");
  const CreationMask mask(022);

  EXPECT_TRUE(write("link", "new"));

  EXPECT_EQ(snapshot("link")["."].kind, "file");
  EXPECT_EQ(modeOf("link"), 0644u) << "nothing is taken over from a link's target";
  EXPECT_EQ(_folder.content("link"), "new");
  EXPECT_EQ(_folder.content("target"), "old");
}

TEST_F(FileManagerWriteTest, ADanglingLinkIsReplaced) {
  proves("FILES-4");
  _folder.makeLink("link", "nowhere");

  EXPECT_TRUE(write("link", "new"));

  EXPECT_EQ(_folder.content("link"), "new");
  EXPECT_FALSE(isThere("nowhere"));
}

TEST_F(FileManagerWriteTest, OtherNamesOfTheReplacedFileKeepTheOldBytes) {
  proves("FILES-4");
  _folder.makeFile("file", "old");
  _folder.makeHardLink("other", "file");

  EXPECT_TRUE(write("file", "new"));

  EXPECT_EQ(_folder.content("file"), "new");
  EXPECT_EQ(_folder.content("other"), "old");
}

TEST_F(FileManagerWriteTest, APipeIsReplacedWithoutBeingOpened) {
  proves("FILES-4");
  _folder.makePipe("pipe");
  const CreationMask mask(022);

  EXPECT_TRUE(write("pipe", "new"));

  EXPECT_EQ(_folder.content("pipe"), "new");
  EXPECT_EQ(modeOf("pipe"), 0644u);
}

TEST_F(FileManagerWriteTest, AFolderIsNotReplaced) {
  proves("FILES-4");
  _folder.makeFolder("folder");

  EXPECT_FALSE(write("folder", "new"));
  EXPECT_FALSE(write("folder/.", "new"));
  EXPECT_FALSE(write("folder/..", "new"));
  EXPECT_FALSE(_files.write("/", "new"));

  EXPECT_EQ(snapshot("folder")["."].kind, "folder");
  EXPECT_THAT(_files.operations(), IsEmpty());
}

TEST_F(FileManagerWriteTest, TheFolderMustExist) {
  EXPECT_FALSE(write("missing/file", "new"));
  EXPECT_FALSE(_files.write("", "new"));
  EXPECT_FALSE(_files.write(path("file") + std::string("\0x", 2), "new"));

  EXPECT_THAT(pathsIn(snapshot()), IsEmpty());
}

TEST_F(FileManagerWriteTest, TheFolderMayBeALink) {
  _folder.makeFolder("real");
  _folder.makeLink("folder", "real");

  EXPECT_TRUE(write("folder/file", "new"));

  EXPECT_EQ(_folder.content("real/file"), "new");
}

TEST_F(FileManagerWriteTest, TheBytesAreOnTheDiskBeforeTheNameIsGiven) {
  proves("FILES-2");
  EXPECT_TRUE(write("file", "new"));

  using enum FileOperation;
  EXPECT_THAT(_files.operations(), ElementsAre(kCreateTemporary, kWrite, kSync, kRename, kSync));
}

TEST_F(FileManagerWriteTest, OwnerAndModeAreGivenBeforeTheName) {
  proves("FILES-2");
  giveToOrdinaryUser(_folder.makeFile("file", "old", 0600));

  EXPECT_TRUE(write("file", "new"));

  using enum FileOperation;
  if (isRoot()) {
    EXPECT_THAT(_files.operations(), ElementsAre(kCreateTemporary, kWrite, kChangeOwner,
                                                 kChangeMode, kSync, kRename, kSync));
  } else {
    EXPECT_THAT(_files.operations(),
                ElementsAre(kCreateTemporary, kWrite, kChangeMode, kSync, kRename, kSync));
  }
}

TEST_F(FileManagerWriteTest, TheTemporaryFileIsPrivateUntilItHasItsMode) {
  proves("FILES-2");
  _folder.makeFile("file", "old", 0600);
  const CreationMask mask(0);
  mode_t mode = 0777;
  _files.beforeNext(FileOperation::kChangeMode, [&] {
    for (const auto& [name, entry] : snapshot()) {
      if (name.starts_with(".hotfix-")) mode = entry.mode;
    }
  });

  EXPECT_TRUE(write("file", "new"));

  EXPECT_EQ(mode, 0600u);
}

TEST_F(FileManagerWriteTest, WhateverFailsTheFileIsTheOldOrTheNewOne) {
  proves("FILES-1");
  const auto prepare = [this] {
    removeTree(path("file"));
    giveToOrdinaryUser(_folder.makeFile("file", "old", 0640));
    return snapshot("file");
  };

  std::size_t number = 1;
  for (;; ++number) {
    const auto before = prepare();
    FailingFileManager files(_users);
    files.failAt(number, EIO);
    const bool written = files.write(path("file"), "new");
    if (!files.hasFailed()) break;
    const bool isFolderFlush =
        files.operations().size() == number && isThere("file") && _folder.content("file") == "new";
    if (!written && !isFolderFlush) {
      EXPECT_THAT(TreeDiff(before, snapshot("file")).lines(), IsEmpty()) << number;
    } else {
      EXPECT_EQ(_folder.content("file"), "new") << number;
    }
    EXPECT_THAT(pathsIn(snapshot()), ElementsAre("file")) << number;
    // Only an owner that cannot be given is passed over.
    EXPECT_EQ(written, files.operations()[number - 1] == FileOperation::kChangeOwner) << number;
  }

  EXPECT_EQ(number, isRoot() ? 8u : 7u);
}

TEST_F(FileManagerWriteTest, AFullDiskLeavesTheOldFile) {
  proves("FILES-1");
  _folder.makeFile("file", "old");

  EXPECT_TRUE(inChild([&] {
    const rlimit limit{1000, 1000};
    (void)::signal(SIGXFSZ, SIG_IGN);  // the child ends soon
    return ::setrlimit(RLIMIT_FSIZE, &limit) == 0 && !write("file", std::string(5000, 'x'));
  }));

  EXPECT_EQ(_folder.content("file"), "old");
  EXPECT_THAT(pathsIn(snapshot()), ElementsAre("file"));
}

TEST_F(FileManagerWriteTest, AFileSystemThatCannotFlushFoldersIsGoodEnough) {
  _files.beforeNext(FileOperation::kRename,
                    [this] { _files.failNext(FileOperation::kSync, EINVAL); });

  EXPECT_TRUE(write("file", "new"));
  EXPECT_TRUE(_files.hasFailed());
}

TEST_F(FileManagerWriteTest, AFileThatCannotBeFlushedIsNotWritten) {
  _files.failNext(FileOperation::kSync, EINVAL);

  EXPECT_FALSE(write("file", "new"));
  EXPECT_FALSE(isThere("file"));
}

TEST_F(FileManagerWriteTest, AnOrdinaryUserReplacesAForeignFileInHisFolder) {
  if (!isRoot()) GTEST_SKIP() << "needs a file of somebody else";
  giveToOrdinaryUser(_folder.makeFolder("work"));
  _folder.makeFile("work/file", "old", 0604);

  EXPECT_TRUE(asOrdinaryUser([&] { return write("work/file", "new"); }));

  EXPECT_EQ(_folder.content("work/file"), "new");
  EXPECT_EQ(modeOf("work/file"), 0604u);
  EXPECT_EQ(statusOf("work/file").st_uid, kOrdinaryUser);
}

TEST_F(FileManagerWriteTest, AnOrdinaryUserCannotWriteInAForeignFolder) {
  if (!isRoot()) GTEST_SKIP() << "needs a folder of somebody else";

  EXPECT_TRUE(asOrdinaryUser([&] { return !write("file", "new"); }));
  EXPECT_THAT(pathsIn(snapshot()), IsEmpty());
}

TEST_F(FileManagerWriteTest, ACreatedFileHasExactlyTheAttributes) {
  _users.add({"ada", 1234, 2345, ""});
  _users.groups["crew"] = 3456;
  const CreationMask mask(077);

  EXPECT_TRUE(create("file", "bytes", {isRoot() ? "ada" : "self", "crew", 0777}));

  EXPECT_EQ(_folder.content("file"), "bytes");
  EXPECT_EQ(modeOf("file"), 0777u);
  if (isRoot()) {
    EXPECT_EQ(statusOf("file").st_uid, 1234u);
    EXPECT_EQ(statusOf("file").st_gid, 3456u);
  }
}

TEST_F(FileManagerWriteTest, WithoutAGroupAdminTheOwnersOwnGroupIsGiven) {
  if (!isRoot()) GTEST_SKIP() << "only root can give files away";
  _users.add({"ada", 1234, 2345, ""});

  EXPECT_TRUE(create("file", "", {"ada", "admin", 0775}));
  EXPECT_EQ(statusOf("file").st_gid, 2345u);

  _users.groups["admin"] = 80;
  EXPECT_TRUE(create("file", "", {"ada", "admin", 0775}));
  EXPECT_EQ(statusOf("file").st_gid, 80u);

  EXPECT_TRUE(create("file", "", {"ada", "other", 0775}));
  EXPECT_EQ(statusOf("file").st_uid, 1234u);
  EXPECT_EQ(statusOf("file").st_gid, ::getegid()) << "only admin has a stand-in";
}

TEST_F(FileManagerWriteTest, AnUnknownOwnerIsPassedOver) {
  EXPECT_TRUE(create("file", "x", {"stranger", "admin", 0640}));

  EXPECT_EQ(modeOf("file"), 0640u);
  EXPECT_EQ(statusOf("file").st_uid, ::geteuid());
  EXPECT_EQ(statusOf("file").st_gid, ::getegid());
}

TEST_F(FileManagerWriteTest, AnUnknownOwnersFileStillGetsTheGroup) {
  if (!isRoot()) GTEST_SKIP() << "only root can give files away";
  _users.groups["admin"] = 80;

  EXPECT_TRUE(create("file", "x", {"stranger", "admin", 0640}));

  EXPECT_EQ(statusOf("file").st_uid, ::geteuid());
  EXPECT_EQ(statusOf("file").st_gid, 80u);
}

TEST_F(FileManagerWriteTest, WhenTheOwnerIsRefusedTheGroupIsTriedAlone) {
  if (!isRoot()) GTEST_SKIP() << "only root can give files away";
  _users.add({"ada", 1234, 2345, ""});
  _files.failNext(FileOperation::kChangeOwner, EPERM);

  EXPECT_TRUE(create("file", "x", {"ada", "admin", 0640}));

  EXPECT_EQ(statusOf("file").st_uid, 0u);
  EXPECT_EQ(statusOf("file").st_gid, 2345u);
}

TEST_F(FileManagerWriteTest, NothingIsGivenThatTheFileHas) {
  EXPECT_TRUE(create("file", "x", {"self", "own", 0640}));

  EXPECT_THAT(_files.operations(), Not(::testing::Contains(FileOperation::kChangeOwner)));
}

TEST_F(FileManagerWriteTest, AGroupAloneOrAnOwnerAloneIsGiven) {
  if (!isRoot()) GTEST_SKIP() << "only root can give files away";
  _users.add({"ada", 1234, ::getegid(), ""});
  _users.groups["crew"] = 3456;

  EXPECT_TRUE(create("a", "", {"ada", "own", 0640}));
  EXPECT_EQ(statusOf("a").st_uid, 1234u);
  EXPECT_TRUE(create("b", "", {"self", "crew", 0640}));
  EXPECT_EQ(statusOf("b").st_gid, 3456u);
}

TEST_F(FileManagerWriteTest, ACreatedFileReplacesAFileOrALinkAndTakesNothingOver) {
  proves("FILES-3");
  giveToOrdinaryUser(_folder.makeFile("file", "old", 0600));
  _folder.makeFile("target", "old", 0600);
  _folder.makeLink("link", "target");
  _folder.makeLink("dangling", "nowhere");

  EXPECT_TRUE(create("file", "new", {"self", "own", 0755}));
  EXPECT_TRUE(create("link", "new", {"self", "own", 0755}));
  EXPECT_TRUE(create("dangling", "new", {"self", "own", 0755}));

  EXPECT_EQ(_folder.content("file"), "new");
  EXPECT_EQ(modeOf("file"), 0755u);
  EXPECT_EQ(statusOf("file").st_uid, ::geteuid());
  EXPECT_EQ(snapshot("link")["."].kind, "file");
  EXPECT_EQ(_folder.content("target"), "old");
  EXPECT_EQ(modeOf("target"), 0600u);
  EXPECT_EQ(_folder.content("dangling"), "new");
  EXPECT_FALSE(isThere("nowhere"));
}

TEST_F(FileManagerWriteTest, AFolderMakesTheCreationFail) {
  _folder.makeFolder("folder");

  EXPECT_FALSE(create("folder", "new", {"self", "own", 0755}));
  EXPECT_FALSE(create("missing/file", "new", {"self", "own", 0755}));

  EXPECT_THAT(pathsIn(snapshot()), ElementsAre("folder"));
}

TEST_F(FileManagerWriteTest, AttributesAreGivenBeforeTheName) {
  EXPECT_TRUE(create("file", "new", {"self", "own", 0777}));

  using enum FileOperation;
  EXPECT_THAT(_files.operations(),
              ElementsAre(kCreateTemporary, kWrite, kChangeMode, kSync, kRename, kSync));
}

// Counts, at every change, the open descriptors that a child would inherit.
class InheritanceWatch : public PosixFileManager {
 public:
  using PosixFileManager::PosixFileManager;

  static int countInherited() {
    int count = 0;
    for (int number = 0; number < 1024; ++number) {
      const int flags = ::fcntl(number, F_GETFD);
      if (flags >= 0 && (flags & FD_CLOEXEC) == 0) ++count;
    }
    return count;
  }

  int questions = 0;
  int worst = 0;

 protected:
  int refusal(FileOperation) override {
    ++questions;
    worst = std::max(worst, countInherited());
    return 0;
  }
};

TEST_F(FileManagerWriteTest, ChildrenInheritNoDescriptor) {
  proves("CHILD-2");
  const CreationMask mask(077);  // so that modes are changes of their own
  _folder.makeFile("tree/a/file", "x");
  _folder.makeFile("other/a/file", "x");
  const int before = InheritanceWatch::countInherited();
  InheritanceWatch files(_users);

  EXPECT_TRUE(files.write(path("file"), "x"));
  EXPECT_TRUE(files.copy(path("tree"), path("copy"), ExistingItem::fail));
  files.merge(path("tree"), path("other"), path(""));
  EXPECT_TRUE(files.changeAttributesBelow(path("tree"), {"self", "own", 0751}));
  EXPECT_TRUE(files.createDirectory(path("new"), Intermediates::refuse,
                                    FileAttributes{"self", "own", 0700}));
  const int log = files.openLog(path("log"));
  EXPECT_TRUE(files.remove(path("tree")));

  EXPECT_GT(files.questions, 30);
  EXPECT_EQ(files.worst, before);
  EXPECT_NE(::fcntl(log, F_GETFD) & FD_CLOEXEC, 0);
  EXPECT_EQ(::close(log), 0);
}

}  // namespace
}  // namespace installer::test
