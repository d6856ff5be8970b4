#include "platform/Reported.h"

#include <gmock/gmock.h>

#include <cerrno>

#include "hotfix/platform/ToldOnce.h"
#include "support/Proves.h"
#include "support/Sandbox.h"

namespace installer {
namespace {

using test::Says;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class ReportedTest : public ::testing::Test {
 protected:
  auto line(const std::string& relative, const std::string& rest) const {
    return Says(LogLevel::error, "\"" + _sandbox.path(relative) + "\" cannot be " + rest);
  }

  test::Sandbox _sandbox;
};

TEST_F(ReportedTest, WhatSucceedsIsNotTold) {
  const std::string file = _sandbox.path("tmp/file");

  EXPECT_TRUE(reported::write(file, "x"));
  EXPECT_TRUE(reported::exists(file));
  EXPECT_TRUE(reported::copy(file, _sandbox.path("tmp/copy"), ExistingItem::fail));
  EXPECT_TRUE(reported::copy(file, _sandbox.path("tmp/copy"), ExistingItem::keep));
  EXPECT_TRUE(reported::remove(file));
  EXPECT_TRUE(reported::flush(_sandbox.path("tmp")));

  EXPECT_EQ(_sandbox.read("tmp/copy"), "x");
  EXPECT_THAT(_sandbox.log(), IsEmpty());
}

TEST_F(ReportedTest, WhatIsMissingIsNeitherThereNorTold) {
  proves("FILES-21");
  EXPECT_FALSE(reported::exists(_sandbox.path("tmp/none")));
  EXPECT_FALSE(reported::remove(_sandbox.path("tmp/none")));

  EXPECT_THAT(_sandbox.log(), IsEmpty());
}

TEST_F(ReportedTest, EachFailureIsToldInOneLine) {
  proves("FILES-21");
  _sandbox.makeLink("tmp/loop", "loop");
  const std::string folder = _sandbox.makeFolder("tmp/folder");
  const std::string file = _sandbox.write("tmp/file", "x");

  EXPECT_FALSE(reported::exists(_sandbox.path("tmp/loop")));
  EXPECT_FALSE(reported::write(folder, "x"));
  EXPECT_FALSE(reported::copy(file, folder, ExistingItem::fail));
  _sandbox.files().failNext(FileOperation::kUnlink, EPERM);
  EXPECT_FALSE(reported::remove(file));
  EXPECT_FALSE(reported::flush(file));

  EXPECT_THAT(_sandbox.log(),
              ElementsAre(line("tmp/loop", "looked at: Too many levels of symbolic links"),
                          line("tmp/folder", "written: Is a directory"),
                          line("tmp/file", "copied to \"" + folder + "\": File exists"),
                          line("tmp/file", "removed: Operation not permitted"),
                          line("tmp/file", "flushed: Not a directory")));
}

TEST_F(ReportedTest, TheSameWordsAreToldOnceARun) {
  proves("FILES-21");
  const std::string folder = _sandbox.makeFolder("tmp/folder");
  const ToldOnce lines;

  EXPECT_FALSE(reported::write(folder, "x"));
  EXPECT_FALSE(reported::write(folder, "y"));

  EXPECT_THAT(_sandbox.log(), ElementsAre(line("tmp/folder", "written: Is a directory")));
}

TEST_F(ReportedTest, ModeAndOwnershipOfAWriteAreTheFileManagers) {
  const std::string file = _sandbox.write("tmp/file", "x", 0600);

  EXPECT_TRUE(reported::write(file, "y"));
  EXPECT_EQ(_sandbox.mode("tmp/file"), 0600U);
  EXPECT_TRUE(reported::write(file, "z", ReplacedFile::forget, 0640));
  EXPECT_EQ(_sandbox.mode("tmp/file"), 0640U);
}

}  // namespace
}  // namespace installer
