#include "platform/LineFile.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <vector>

#include "support/TemporaryFolder.h"

namespace installer::test {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

class LineFileTest : public ::testing::Test {
 protected:
  std::unique_ptr<LineFile> open(const std::string& bytes) {
    return openFile(_folder.makeFile("trace", bytes));
  }
  std::unique_ptr<LineFile> openFile(const std::string& path, FinalLink link = FinalLink::refuse) {
    return openLineFile({path, link, {}}, _error);
  }
  static std::vector<std::string> linesOf(LineFile& file) {
    std::vector<std::string> lines;
    while (const auto line = file.next()) lines.push_back(*line);
    return lines;
  }
  void append(const std::string& bytes) const {
    const int file = ::open(_folder.path("trace").c_str(), O_WRONLY | O_APPEND);
    ASSERT_EQ(static_cast<ssize_t>(bytes.size()), ::write(file, bytes.data(), bytes.size()));
    ::close(file);
  }

  TemporaryFolder _folder;
  FileError _error;
};

TEST_F(LineFileTest, LinesComeWithoutTheirEndAndTheRestBehindThem) {
  const auto file = open("one\n\nthree\nfour");

  EXPECT_THAT(linesOf(*file), ElementsAre("one", "", "three"));
  EXPECT_EQ("four", file->rest());
  EXPECT_EQ("", file->rest());
  EXPECT_FALSE(file->readError());
}

TEST_F(LineFileTest, AnEmptyFileHasNoLines) {
  const auto file = open("");

  EXPECT_THAT(linesOf(*file), IsEmpty());
  EXPECT_EQ("", file->rest());
}

TEST_F(LineFileTest, WhatIsAddedIsReadOn) {
  const auto file = open("one\ntw");
  EXPECT_THAT(linesOf(*file), ElementsAre("one"));

  append("o\nthree\n");

  EXPECT_THAT(linesOf(*file), ElementsAre("two", "three"));
}

TEST_F(LineFileTest, LinesMayLieAcrossWhatIsReadAtOnce) {
  std::string bytes;
  for (int i = 0; i < 40'000; ++i) bytes += "line " + std::to_string(i) + "\n";
  const auto file = open(bytes);

  const auto lines = linesOf(*file);

  ASSERT_EQ(40'000u, lines.size());
  for (std::size_t i = 0; i < 40'000; ++i) ASSERT_EQ("line " + std::to_string(i), lines[i]);
}

TEST_F(LineFileTest, AnEndlessLineIsCutAndTheNextOneIsWhole) {
  const std::string longest(LineFile::kLongestLine, 'a');
  const auto file = open(longest + "\n" + longest + "bcd\nnext\n");

  EXPECT_THAT(linesOf(*file), ElementsAre(longest, longest, "next"));
}

TEST_F(LineFileTest, AnEndlessRestIsCut) {
  const auto file = open(std::string(3 * LineFile::kLongestLine, 'a'));

  EXPECT_THAT(linesOf(*file), IsEmpty());
  EXPECT_EQ(LineFile::kLongestLine, file->rest().size());
}

TEST_F(LineFileTest, NoMoreIsReadThanMayBe) {
  const auto file = open("one\ntwo\nthree\n");
  std::size_t bytes = 6;

  EXPECT_EQ("one", file->nextWithin(bytes));
  EXPECT_EQ(0u, bytes);
  EXPECT_EQ(std::nullopt, file->nextWithin(bytes));
  bytes = 100;
  EXPECT_EQ("two", file->nextWithin(bytes)) << "what had come of it is kept";
  EXPECT_EQ("three", file->nextWithin(bytes));
  EXPECT_EQ(100u - 8u, bytes);
}

TEST_F(LineFileTest, AHoleIsReadNoFurtherThanMayBeEither) {
  const std::string path = _folder.makeFile("trace", "");
  ASSERT_EQ(0, truncate(path.c_str(), 1'000'000));
  append("one\n");
  const auto file = openFile(path);

  std::size_t bytes = 500'000;
  EXPECT_EQ(std::nullopt, file->nextWithin(bytes));
  EXPECT_EQ(0u, bytes);
  bytes = 500'004;
  EXPECT_EQ("one", file->nextWithin(bytes));
  EXPECT_EQ(0u, bytes);
}

TEST_F(LineFileTest, AHoleBeforeALineIsPassedOver) {
  const std::string path = _folder.makeFile("trace", "one\n");
  ASSERT_EQ(0, truncate(path.c_str(), 1'000'000));
  append(std::string("two\nthr\0ee\n", 11));

  const auto file = openFile(path);

  EXPECT_THAT(linesOf(*file), ElementsAre("one", "two", std::string("thr\0ee", 6)));
}

TEST_F(LineFileTest, OnlyRegularFilesAreOpened) {
  EXPECT_EQ(nullptr, openFile(_folder.makePipe("pipe")));
  EXPECT_EQ(FileError::kNoFile, _error.code);
  EXPECT_THAT(_error.description, HasSubstr("/pipe\" cannot be read: "));

  EXPECT_EQ(nullptr, openFile(_folder.makeFolder("folder")));
  EXPECT_EQ(FileError::kNoFile, _error.code);

  EXPECT_EQ(nullptr, openFile(_folder.path("missing")));
  EXPECT_EQ(FileError::kMissing, _error.code);
}

TEST_F(LineFileTest, ALinkIsFollowedOnDemand) {
  _folder.makeFile("trace", "one\n");
  const std::string link = _folder.makeLink("link", "trace");

  EXPECT_EQ(nullptr, openFile(link));
  EXPECT_NE(FileError::kMissing, _error.code);

  const auto file = openFile(link, FinalLink::follow);
  ASSERT_NE(nullptr, file);
  EXPECT_THAT(linesOf(*file), ElementsAre("one"));
}

TEST_F(LineFileTest, WhoMayOwnTheFileIsAskedForTheOneThatIsOpened) {
  const std::string path = _folder.makeFile("trace", "one\n");
  std::vector<uid_t> asked;
  const auto file = openLineFile({path, FinalLink::refuse,
                                  [&](uid_t owner) {
                                    asked.push_back(owner);
                                    return true;
                                  }},
                                 _error);

  ASSERT_NE(nullptr, file);
  EXPECT_THAT(linesOf(*file), ElementsAre("one"));
  EXPECT_THAT(asked, ElementsAre(geteuid()));
}

TEST_F(LineFileTest, AFileOfAnotherUserIsRefusedOnDemand) {
  const std::string path = _folder.makeFile("trace", "one\n");

  EXPECT_EQ(nullptr, openLineFile({path, FinalLink::refuse, [](uid_t) { return false; }}, _error));
  EXPECT_EQ(FileError::kOther, _error.code);
  EXPECT_EQ("\"" + path + "\" cannot be read: it belongs to another user", _error.description);
}

TEST_F(LineFileTest, AFileWithSeveralNamesIsRefusedWhereItsOwnerCounts) {
  const std::string path = _folder.makeFile("trace", "one\n");
  ASSERT_EQ(0, link(path.c_str(), _folder.path("other").c_str()));

  EXPECT_NE(nullptr, openFile(path));
  EXPECT_EQ(nullptr, openLineFile({path, FinalLink::refuse, [](uid_t) { return true; }}, _error));
  EXPECT_EQ(FileError::kOther, _error.code);
  EXPECT_EQ("\"" + path + "\" cannot be read: it has several names", _error.description);
}

TEST_F(LineFileTest, ItTellsWhenItWasChanged) {
  const std::string path = _folder.makeFile("trace", "one\n");
  const timespec times[2] = {{1'000'000, 0}, {1'234'567, 0}};
  ASSERT_EQ(0, utimensat(AT_FDCWD, path.c_str(), times, 0));

  EXPECT_EQ(1'234'567, openFile(path)->modified());
}

TEST_F(LineFileTest, AFileThatGrowsIsNotReplaced) {
  const auto file = open("one\n");
  EXPECT_THAT(linesOf(*file), ElementsAre("one"));

  append("two\n");

  EXPECT_FALSE(file->isReplaced());
}

TEST_F(LineFileTest, AFileThatIsEmptiedIsReplaced) {
  const auto file = open("one\n");
  EXPECT_THAT(linesOf(*file), ElementsAre("one"));

  ASSERT_EQ(0, truncate(_folder.path("trace").c_str(), 0));

  EXPECT_TRUE(file->isReplaced());
}

TEST_F(LineFileTest, AFileWhoseNameIsGoneOrAnothersIsReplaced) {
  const auto file = open("one\n");

  ASSERT_EQ(0, rename(_folder.path("trace").c_str(), _folder.path("old").c_str()));
  EXPECT_TRUE(file->isReplaced());

  _folder.makeFile("trace", "two\n");
  EXPECT_TRUE(file->isReplaced());
}

}  // namespace
}  // namespace installer::test
