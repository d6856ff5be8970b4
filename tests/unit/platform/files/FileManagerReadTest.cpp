#include <sys/resource.h>
#include <sys/stat.h>

#include <string>

#include "platform/files/FileReading.h"
#include "platform/files/Opening.h"
#include "support/ChildRun.h"
#include "support/Proves.h"
#include "unit/platform/files/FileManagerFixture.h"

namespace installer::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Optional;

class FileManagerReadTest : public FileManagerFixture {
 protected:
  std::optional<std::string> read(std::string_view relative) { return _files.read(path(relative)); }
  std::optional<std::string> readUnlinked(std::string_view relative) {
    return _files.readUnlinked(path(relative), nullptr);
  }
};

TEST_F(FileManagerReadTest, ExistenceFollowsLinks) {
  _folder.makeFile("file");
  _folder.makeLink("link", "file");
  _folder.makeLink("dangling", "nowhere");
  _folder.makePipe("pipe");

  EXPECT_TRUE(_files.exists(path("file")));
  EXPECT_TRUE(_files.exists(path("link")));
  EXPECT_TRUE(_files.exists(path("pipe")));
  EXPECT_TRUE(_files.exists(path("")));
  EXPECT_FALSE(_files.exists(path("dangling")));
  EXPECT_FALSE(_files.exists(path("missing")));
  EXPECT_FALSE(_files.exists(path("file/below")));
}

TEST_F(FileManagerReadTest, AFolderIsOneAlsoThroughALink) {
  _folder.makeFile("folder/file");
  _folder.makeLink("link", "folder");
  _folder.makeLink("fileLink", "folder/file");
  _folder.makeLink("dangling", "nowhere");

  EXPECT_TRUE(_files.isDirectory(path("folder")));
  EXPECT_TRUE(_files.isDirectory(path("folder/")));
  EXPECT_TRUE(_files.isDirectory(path("link")));
  EXPECT_FALSE(_files.isDirectory(path("folder/file")));
  EXPECT_FALSE(_files.isDirectory(path("fileLink")));
  EXPECT_FALSE(_files.isDirectory(path("dangling")));
  EXPECT_FALSE(_files.isDirectory(path("missing")));
}

TEST_F(FileManagerReadTest, AnEntryHasAnOwnerEvenAsADanglingLink) {
  _folder.makeLink("dangling", "nowhere");
  _folder.makeFile("file");

  EXPECT_TRUE(_files.owner(path("dangling")));
  EXPECT_TRUE(_files.owner(path("dangling/")));
  EXPECT_TRUE(_files.owner(path("file")));
  EXPECT_TRUE(_files.owner("/"));
  EXPECT_FALSE(_files.owner(path("missing")));
}

TEST_F(FileManagerReadTest, NothingIsThereUnderAnUnusablePath) {
  _folder.makeFile("file", "x");
  _folder.makeFolder("folder");
  const std::string zero(1, '\0');

  for (const std::string& unusable :
       {std::string(), path("file") + zero, path("folder") + zero + "x"}) {
    EXPECT_FALSE(_files.exists(unusable));
    EXPECT_FALSE(_files.isDirectory(unusable));
    EXPECT_FALSE(_files.owner(unusable));
    EXPECT_EQ(_files.list(unusable), std::nullopt);
    EXPECT_EQ(_files.read(unusable), std::nullopt);
    EXPECT_EQ(_files.readUnlinked(unusable, nullptr), std::nullopt);
  }
}

TEST_F(FileManagerReadTest, AListIsSortedByByteWithoutTheDots) {
  for (const std::string name : {"b", "a", "B", ".hidden", "..twice", "\xff", "z"}) {
    _folder.makeFile("folder/" + name);
  }
  _folder.makeFile("folder/sub/not listed");
  _folder.makeLink("link", "folder");

  EXPECT_THAT(_files.list(path("folder")),
              Optional(ElementsAre("..twice", ".hidden", "B", "a", "b", "sub", "z", "\xff")));
  EXPECT_EQ(_files.list(path("link")), _files.list(path("folder")));
}

TEST_F(FileManagerReadTest, AListCanHoldTheNamesOfOneBeginningOnly) {
  for (const char* name : {"b_2", "a_1", "B_1", "b_1", "b", "ab_1"})
    _folder.makeFile(std::string("folder/") + name);

  EXPECT_THAT(_files.list(path("folder"), "b_"), Optional(ElementsAre("b_1", "b_2")));
  EXPECT_THAT(_files.list(path("folder"), "c"), Optional(IsEmpty()));
  EXPECT_EQ(_files.list(path("missing"), "b_"), std::nullopt);
}

TEST_F(FileManagerReadTest, AnEmptyFolderHasAnEmptyList) {
  _folder.makeFolder("folder");

  EXPECT_THAT(_files.list(path("folder")), Optional(IsEmpty()));
}

TEST_F(FileManagerReadTest, WhatIsNoFolderHasNoList) {
  _folder.makeFile("file");
  _folder.makePipe("pipe");
  _folder.makeLink("dangling", "nowhere");

  EXPECT_EQ(_files.list(path("file")), std::nullopt);
  EXPECT_EQ(_files.list(path("pipe")), std::nullopt);
  EXPECT_EQ(_files.list(path("dangling")), std::nullopt);
  EXPECT_EQ(_files.list(path("missing")), std::nullopt);
}

TEST_F(FileManagerReadTest, AnUnreadableFolderHasNoList) {
  giveToOrdinaryUser(_folder.makeFolder("folder", 0));

  EXPECT_TRUE(asOrdinaryUser([&] { return !_files.list(path("folder")); }));
}

TEST_F(FileManagerReadTest, AllBytesOfAFileAreRead) {
  const std::string bytes = std::string("\0\xff\r\n", 4) + std::string(1 << 20, 'x') + "end";
  _folder.makeFile("file", bytes);
  _folder.makeFile("empty", "");
  _folder.makeLink("link", "file");

  EXPECT_EQ(read("file"), bytes);
  EXPECT_EQ(read("link"), bytes);
  EXPECT_EQ(read("empty"), "");
  EXPECT_EQ(readUnlinked("file"), bytes);
}

TEST_F(FileManagerReadTest, AFileOverTheLimitReadsAsAbsent) {
  proves("FILES-5");
  _folder.makeFile("file", "");
  ASSERT_EQ(::truncate(path("file").c_str(), off_t{64} * 1024 * 1024 + 1), 0);

  EXPECT_EQ(read("file"), std::nullopt);
  EXPECT_EQ(readUnlinked("file"), std::nullopt);
  EXPECT_EQ(FileManager::kMaximumRead, std::size_t{64} * 1024 * 1024);
}

TEST_F(FileManagerReadTest, TheLimitIsExact) {
  proves("FILES-5");
  const std::string name = _folder.makeFile("file", "12345");

  EXPECT_EQ(readWhole(openRegularFile(AT_FDCWD, name), 4), std::nullopt);
  EXPECT_EQ(readWhole(openRegularFile(AT_FDCWD, name), 5), "12345");
  EXPECT_EQ(readWhole(openRegularFile(AT_FDCWD, name), 6), "12345");
}

TEST_F(FileManagerReadTest, AClosedOrWriteOnlyFileIsUnreadable) {
  const std::string name = _folder.makeFile("file", "x");

  EXPECT_EQ(readWhole(RegularFile(), 10), std::nullopt);
  EXPECT_EQ(readWhole(RegularFile{openEntry(AT_FDCWD, name, O_WRONLY)}, 10), std::nullopt);
}

TEST_F(FileManagerReadTest, OnlyRegularFilesAreReadAndNothingElseIsOpened) {
  proves("FILES-5");
  _folder.makeFolder("folder");
  _folder.makePipe("pipe");
  _folder.makeSocket("socket");
  _folder.makeLink("dangling", "nowhere");
  _folder.makeLink("linkToPipe", "pipe");

  for (const std::string name :
       {"folder", "pipe", "socket", "dangling", "linkToPipe", "missing", "pipe/below"}) {
    EXPECT_EQ(read(name), std::nullopt) << name;
    EXPECT_EQ(readUnlinked(name), std::nullopt) << name;
  }
  EXPECT_EQ(_files.read("/dev/zero"), std::nullopt);
  EXPECT_EQ(_files.readUnlinked("/dev/zero", nullptr), std::nullopt);
}

TEST_F(FileManagerReadTest, AnUnreadableFileReadsAsAbsent) {
  giveToOrdinaryUser(_folder.makeFile("file", "x", 0));

  EXPECT_TRUE(asOrdinaryUser([&] { return !_files.read(path("file")); }));
}

TEST_F(FileManagerReadTest, AnUnlinkedReadDoesNotFollowALink) {
  _folder.makeFile("real/file", "x");
  _folder.makeLink("link", "real/file");
  _folder.makeLink("folder", "real");

  EXPECT_EQ(readUnlinked("link"), std::nullopt);
  EXPECT_EQ(readUnlinked("folder/file"), "x") << "only the last component counts";
}

TEST_F(FileManagerReadTest, AnUnlinkedReadTellsTheOwner) {
  giveToOrdinaryUser(_folder.makeFile("file", "x"));
  FileOrigin origin;
  origin.owner = 12345;

  EXPECT_EQ(_files.readUnlinked(path("file"), &origin), "x");
  EXPECT_EQ(origin.owner, statusOf("file").st_uid);

  origin.owner = 12345;
  EXPECT_EQ(_files.readUnlinked(path("missing"), &origin), std::nullopt);
  EXPECT_EQ(origin.owner, 12345u);
}

TEST_F(FileManagerReadTest, AnUnlinkedReadTellsWhetherThereAreOtherNames) {
  _folder.makeFile("file", "x");
  FileOrigin origin;
  origin.hasOtherNames = true;

  EXPECT_EQ(_files.readUnlinked(path("file"), &origin), "x");
  EXPECT_FALSE(origin.hasOtherNames);

  _folder.makeHardLink("other", "file");
  EXPECT_EQ(_files.readUnlinked(path("file"), &origin), "x");
  EXPECT_TRUE(origin.hasOtherNames);
}

TEST_F(FileManagerReadTest, OwnerIsTheEntrysOwn) {
  giveToOrdinaryUser(_folder.makeFile("folder/file", "x"));
  _folder.makeLink("link", "folder/file");

  EXPECT_EQ(_files.owner(path("folder/file")), statusOf("folder/file").st_uid);
  EXPECT_EQ(_files.owner(path("folder/")), ::geteuid());
  EXPECT_EQ(_files.owner(path("link")), ::geteuid());
  EXPECT_EQ(_files.owner(path("missing")), std::nullopt);
  EXPECT_EQ(_files.owner(""), std::nullopt);
}

TEST_F(FileManagerReadTest, WithoutFreeDescriptorsEverythingIsUnreadable) {
  _folder.makeFile("folder/file", "x");

  EXPECT_TRUE(inChild([&] {
    rlimit limit{};
    if (::getrlimit(RLIMIT_NOFILE, &limit) != 0) return false;
    limit.rlim_cur = 0;
    if (::setrlimit(RLIMIT_NOFILE, &limit) != 0) return false;
    return !_files.read(path("folder/file")) && !_files.list(path("folder"));
  }));
}

}  // namespace
}  // namespace installer::test
