#include <fcntl.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "support/ChildRun.h"
#include "support/Proves.h"
#include "unit/platform/files/FileManagerFixture.h"

namespace installer::test {
namespace {

using ::testing::HasSubstr;

// Copies of files that are wanted for their content, be they given through links.
class FileManagerContentTest : public FileManagerFixture {
 protected:
  CopySource content(std::string_view relative, const std::vector<std::string>& within = {}) const {
    std::vector<std::string> folders;
    for (const std::string& folder : within) folders.push_back(path(folder));
    return {path(relative), folders};
  }
  bool copy(const CopySource& from, std::string_view to,
            ExistingItem existing = ExistingItem::fail) {
    _error = {0, ""};
    return _files.copy(from, path(to), existing, &_error);
  }
  // Neither copied nor said to be copied.
  void expectRefused(const CopySource& from) {
    EXPECT_FALSE(_files.hasContent(from)) << from.path;
    EXPECT_FALSE(copy(from, "refused")) << from.path;
    EXPECT_THAT(_error.description, HasSubstr("\"" + from.path + "\" cannot be copied to"));
    EXPECT_FALSE(isThere("refused")) << from.path;
  }

  FileError _error;
};

TEST_F(FileManagerContentTest, ALinkToAFileBesideItIsCopiedAsThatFile) {
  proves("FILES-22");
  _folder.makeFile("a/file", "bytes", 0640);
  _folder.makeLink("a/second", path("a/./file"));
  _folder.makeLink("a/first", "second");

  EXPECT_TRUE(_files.hasContent(content("a/first")));
  EXPECT_TRUE(copy(content("a/first"), "to"));

  EXPECT_EQ(snapshot("to")["."].kind, "file");
  EXPECT_EQ(_folder.content("to"), "bytes");
  EXPECT_EQ(modeOf("to"), 0640u);
  EXPECT_TRUE(copy(content("a/first//"), "again"));
  EXPECT_EQ(_folder.content("again"), "bytes");
}

TEST_F(FileManagerContentTest, AnyOfTheFoldersMayHoldTheFileAtAnyDepth) {
  _folder.makeFile("b/deep/er/file", "bytes");
  _folder.makeFolder("c");
  _folder.makeLink("a/link", "../b/deep/er/file");
  _folder.makeLink("toB", "b");

  EXPECT_TRUE(copy(content("a/link", {"missing", "c", "b"}), "1"));
  EXPECT_TRUE(copy(content("a/link", {"b/deep/er"}), "2"));
  EXPECT_TRUE(copy(content("a/link", {"toB/deep/"}), "3"));

  for (const char* copied : {"1", "2", "3"}) EXPECT_EQ(_folder.content(copied), "bytes") << copied;
}

TEST_F(FileManagerContentTest, ALinkThatLeadsElsewhereIsNotCopied) {
  proves("FILES-22");
  _folder.makeFile("outside/file", "secret");
  _folder.makeFolder("within/deep");
  _folder.makeLink("a/absolute", path("outside/file"));
  _folder.makeLink("a/relative", "../outside/file");
  _folder.makeLink("within/way", "../outside");
  _folder.makeLink("a/over", "../within/way/file");
  _folder.makeLink("a/dots", "../within/deep/../../outside/file");

  for (const char* link : {"a/absolute", "a/relative", "a/over", "a/dots"})
    expectRefused(content(link, {"within", "missing"}));
  EXPECT_EQ(_error.code, FileError::kOther);
}

TEST_F(FileManagerContentTest, FoldersAreToldApartByWhatTheyAre) {
  _folder.makeFile("within2/file", "secret");
  _folder.makeFolder("within");
  _folder.makeLink("a/link", "../within2/file");

  expectRefused(content("a/link", {"within"}));
}

TEST_F(FileManagerContentTest, TheRootHoldsNothingAndNeitherDoesNoFolder) {
  _folder.makeFile("outside/file", "secret");
  _folder.makeLink("a/link", "../outside/file");

  expectRefused(CopySource(path("a/link"), {"/", "//", "", std::string("\0", 1)}));
}

TEST_F(FileManagerContentTest, OnlyRegularFilesHaveContent) {
  _folder.makeFile("a/folder/file", "");
  _folder.makePipe("a/pipe");
  _folder.makeLink("a/circle", "circle");
  int number = 0;
  for (const char* target : {"folder", "pipe", "nowhere", "circle", "folder/file/x"}) {
    const std::string link = "a/link" + std::to_string(++number);
    _folder.makeLink(link, target);
    expectRefused(content(link));
  }
}

TEST_F(FileManagerContentTest, WhatIsNoLinkIsCopiedAsEver) {
  _folder.makeFile("file", "bytes");
  _folder.makeFile("folder/file", "bytes");
  _folder.makeLink("folder/link", "nowhere");

  EXPECT_TRUE(_files.hasContent(content("file")));
  EXPECT_TRUE(_files.hasContent(content("missing")));
  EXPECT_TRUE(copy(content("file"), "1"));
  EXPECT_TRUE(copy(content("folder"), "2"));
  EXPECT_FALSE(copy(content("missing"), "3"));

  EXPECT_EQ(_error.code, FileError::kMissing);
  EXPECT_EQ(_folder.content("1"), "bytes");
  EXPECT_EQ(snapshot("2")["link"].kind, "link");
  EXPECT_FALSE(copy({std::string(), {}}, "4"));
}

TEST_F(FileManagerContentTest, ALinkWhoseContentIsNotWantedStaysALink) {
  _folder.makeFile("file", "bytes");
  _folder.makeLink("link", "file");

  EXPECT_TRUE(_files.hasContent(path("link")));
  EXPECT_TRUE(copy(path("link"), "to"));

  EXPECT_EQ(snapshot("to")["."].kind, "link");
}

TEST_F(FileManagerContentTest, ExistingItemsAreTreatedAsByAnyCopy) {
  _folder.makeFile("file", "new");
  _folder.makeLink("link", "file");
  _folder.makeLink("out", "/etc/passwd");
  for (const char* name : {"kept", "failed", "replaced", "lost"}) _folder.makeFile(name, "old");

  EXPECT_TRUE(copy(content("link"), "kept", ExistingItem::keep));
  EXPECT_FALSE(copy(content("link"), "failed", ExistingItem::fail));
  EXPECT_EQ(_error.code, FileError::kExists);
  EXPECT_TRUE(copy(content("link"), "replaced", ExistingItem::replace));
  EXPECT_FALSE(copy(content("out"), "lost", ExistingItem::replace));

  EXPECT_EQ(_folder.content("kept"), "old");
  EXPECT_EQ(_folder.content("failed"), "old");
  EXPECT_EQ(_folder.content("replaced"), "new");
  EXPECT_FALSE(isThere("lost"));
}

TEST_F(FileManagerContentTest, AFileThatIsToTakeItsOwnPlaceThroughALinkIsGone) {
  _folder.makeFile("file", "bytes");
  _folder.makeLink("link", "file");

  EXPECT_FALSE(copy(content("link"), "file", ExistingItem::replace));

  EXPECT_FALSE(isThere("file"));
}

TEST_F(FileManagerContentTest, AnotherNameOfTheFileIsAnotherPlace) {
  _folder.makeFile("file", "bytes");
  _folder.makeHardLink("other", "file");
  _folder.makeLink("link", "file");

  EXPECT_TRUE(copy(content("link"), "other", ExistingItem::replace));
  EXPECT_EQ(_folder.content("other"), "bytes");

  _folder.makeHardLink("third", "file");
  EXPECT_FALSE(copy(content("link"), "file", ExistingItem::replace));
  EXPECT_EQ(_folder.content("third"), "bytes");
  EXPECT_FALSE(isThere("file"));
}

TEST_F(FileManagerContentTest, AFailureNamesTheLink) {
  _folder.makeFile("file", "bytes");
  _folder.makeLink("link", "file");
  _files.failNext(FileOperation::kWrite, ENOSPC);

  EXPECT_FALSE(copy(content("link"), "to"));

  EXPECT_THAT(_error.description, HasSubstr("\"" + path("link") + "\" cannot be copied"));
}

TEST_F(FileManagerContentTest, ALinkInTheWorkingFolderHasThatBesideIt) {
  _folder.makeFile("here/file", "bytes");
  _folder.makeLink("here/link", "file");
  _folder.makeFile("outside", "secret");
  _folder.makeLink("here/out", "../outside");

  EXPECT_TRUE(inChild([&] {
    return ::chdir(path("here").c_str()) == 0 &&
           _files.copy({"link", {}}, path("to"), ExistingItem::fail) &&
           !_files.copy({"out", {}}, path("refused"), ExistingItem::fail);
  }));

  EXPECT_EQ(_folder.content("to"), "bytes");
}

}  // namespace
}  // namespace installer::test
