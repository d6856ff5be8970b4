#include "hotfix/formats/JavaProperties.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>

#include "hotfix/platform/ToldOnce.h"
#include "support/Proves.h"
#include "support/Sandbox.h"

namespace installer {
namespace {

using test::Sandbox;
using test::Says;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class JavaPropertiesTest : public ::testing::Test {
 protected:
  auto told(const std::string& relative, const std::string& rest) const {
    return Says(LogLevel::error, "\"" + _sandbox.path(relative) + "\" cannot be " + rest);
  }
  // A file that is there and can never be read.
  std::string folderInPlaceOfFile() { return _sandbox.makeFolder("tmp/x.properties"); }

  Sandbox _sandbox;
};

// --- Opening -------------------------------------------------------------------------------------

TEST_F(JavaPropertiesTest, NewObjectHasNeitherEntriesNorFile) {
  proves("PROPERTIES-18");
  const JavaProperties properties;

  EXPECT_THAT(properties.allProperties(), IsEmpty());
  EXPECT_EQ(properties.getPropertyForKey("a"), std::nullopt);
  EXPECT_FALSE(properties.savePropertiesToFile(std::nullopt));
}

TEST_F(JavaPropertiesTest, AbsentFileIsLikeNone) {
  proves("PROPERTIES-18");
  const JavaProperties properties(std::nullopt);

  EXPECT_THAT(properties.allProperties(), IsEmpty());
  EXPECT_FALSE(properties.savePropertiesToFile(std::nullopt));
  EXPECT_THAT(_sandbox.log(), IsEmpty());
}

TEST_F(JavaPropertiesTest, EntriesAreReadInTheirOrder) {
  proves("PROPERTIES-3");
  const std::string file = _sandbox.write("tmp/x.properties", "# c\nb = 2\na=\xE9\nb=3\n");

  const JavaProperties properties(file);

  EXPECT_EQ(properties.getPropertyForKey("a"), "\u00e9");
  EXPECT_EQ(properties.getPropertyForKey("b"), "3");
  EXPECT_EQ(properties.getPropertyForKey("c"), std::nullopt);
  EXPECT_THAT(properties.allProperties(), ElementsAre("b", "a"));
  EXPECT_THAT(properties.propertyNames(), ElementsAre("b", "a"));
  EXPECT_THAT(_sandbox.log(), IsEmpty());
}

TEST_F(JavaPropertiesTest, LinkToAFileIsRead) {
  const std::string file = _sandbox.write("tmp/x.properties", "a=1\n");

  const JavaProperties properties(_sandbox.makeLink("tmp/link", file));

  EXPECT_EQ(properties.getPropertyForKey("a"), "1");
}

TEST_F(JavaPropertiesTest, MissingFileIsCreatedByTheSave) {
  proves("PROPERTIES-15");
  JavaProperties properties(_sandbox.path("tmp/new.properties"));
  ASSERT_TRUE(properties.setProperty("1", "a"));

  EXPECT_TRUE(properties.savePropertiesToFile(std::nullopt));

  EXPECT_EQ(_sandbox.read("tmp/new.properties"), "a=1\n");
  EXPECT_THAT(_sandbox.log(), IsEmpty());
}

TEST_F(JavaPropertiesTest, TildeOfTheFileIsExpanded) {
  proves("PROPERTIES-19");
  _sandbox.write("Users/tester/x.properties", "a=1\n");

  JavaProperties properties("~/x.properties");
  EXPECT_TRUE(properties.setProperty("2", "b"));

  EXPECT_EQ(properties.getPropertyForKey("a"), "1");
  EXPECT_TRUE(properties.savePropertiesToFile(std::nullopt));
  EXPECT_EQ(_sandbox.read("Users/tester/x.properties"), "a=1\nb=2\n");
}

TEST_F(JavaPropertiesTest, UnreadableFileGivesNoEntriesAndNoLine) {
  proves("PROPERTIES-16");
  const std::string file = folderInPlaceOfFile();

  const JavaProperties properties(file);

  EXPECT_THAT(properties.allProperties(), IsEmpty());
  EXPECT_THAT(_sandbox.log(), IsEmpty());
}

TEST_F(JavaPropertiesTest, UnreadableFileIsNotSavedOver) {
  proves("PROPERTIES-16");
  const ToldOnce lines;
  const std::string file = _sandbox.makeLink("tmp/x.properties", "/dev/null");
  JavaProperties properties(file);
  EXPECT_TRUE(properties.setProperty("1", "a"));

  EXPECT_FALSE(properties.savePropertiesToFile(std::nullopt));
  EXPECT_FALSE(properties.savePropertiesToFile(file));

  EXPECT_EQ(_sandbox.linkTarget("tmp/x.properties"), "/dev/null");
  EXPECT_THAT(_sandbox.log(), ElementsAre(told("tmp/x.properties", "read: Invalid argument")));
}

TEST_F(JavaPropertiesTest, FileThatCannotBeLookedAtIsNotSavedOver) {
  proves("PROPERTIES-16");
  const ToldOnce lines;
  const std::string file = _sandbox.write("tmp/x.properties", "theirs=1\n");
  _sandbox.files().failReading(file, EIO);
  JavaProperties properties(file);
  EXPECT_TRUE(properties.setProperty("1", "a"));

  EXPECT_FALSE(properties.savePropertiesToFile(std::nullopt));
  EXPECT_FALSE(properties.mergeWithJavaProperties(_sandbox.write("tmp/other", "b=1\n")));

  ASSERT_TRUE(properties.readError());
  EXPECT_EQ(properties.readError()->code, FileError::kOther);
  EXPECT_EQ(_sandbox.read("tmp/x.properties"), "theirs=1\n");
  EXPECT_THAT(_sandbox.log(), ElementsAre(told("tmp/x.properties", "read: Input/output error")));
}

TEST_F(JavaPropertiesTest, OnlyAFileThatIsThereCanBeUnreadable) {
  EXPECT_FALSE(JavaProperties(_sandbox.path("tmp/none")).readError());
  EXPECT_FALSE(JavaProperties(_sandbox.write("tmp/x", "")).readError());
  EXPECT_FALSE(JavaProperties().readError());
}

TEST_F(JavaPropertiesTest, EntriesOfAnUnreadableFileAreSavedElsewhere) {
  proves("PROPERTIES-16");
  JavaProperties properties(folderInPlaceOfFile());
  EXPECT_TRUE(properties.setProperty("1", "a"));

  EXPECT_TRUE(properties.savePropertiesToFile(_sandbox.path("tmp/other")));

  EXPECT_EQ(_sandbox.read("tmp/other"), "a=1\n");
}

TEST_F(JavaPropertiesTest, FileThatBecameReadableCanBeSavedOver) {
  proves("PROPERTIES-16");
  const std::string file = folderInPlaceOfFile();
  JavaProperties properties(file);
  _sandbox.remove(file);
  _sandbox.write(file, "a=1\n");

  properties.initDictionary();

  EXPECT_EQ(properties.getPropertyForKey("a"), "1");
  EXPECT_TRUE(properties.savePropertiesToFile(std::nullopt));
}

TEST_F(JavaPropertiesTest, ReadingAgainTakesTheFilesEntriesOver) {
  proves("PROPERTIES-20");
  const std::string file = _sandbox.write("tmp/x.properties", "a=1\n");
  JavaProperties properties(file);
  EXPECT_TRUE(properties.setProperty("changed", "a"));
  EXPECT_TRUE(properties.setProperty("kept", "b"));

  properties.initDictionary();

  EXPECT_EQ(properties.getPropertyForKey("a"), "1");
  EXPECT_EQ(properties.getPropertyForKey("b"), "kept");
}

// --- Changing ------------------------------------------------------------------------------------

TEST_F(JavaPropertiesTest, StoredValueReplacesTheOldOne) {
  proves("PROPERTIES-20");
  JavaProperties properties;

  EXPECT_TRUE(properties.setProperty("1", "a"));
  EXPECT_TRUE(properties.setProperty("2", "a"));

  EXPECT_EQ(properties.getPropertyForKey("a"), "2");
  EXPECT_THAT(properties.allProperties(), ElementsAre("a"));
}

TEST_F(JavaPropertiesTest, EmptyTextsAreStored) {
  proves("PROPERTIES-20");
  JavaProperties properties;

  EXPECT_TRUE(properties.setProperty("", "a"));
  EXPECT_TRUE(properties.setProperty("x", ""));

  EXPECT_EQ(properties.getPropertyForKey("a"), "");
  EXPECT_EQ(properties.getPropertyForKey(""), "x");
}

TEST_F(JavaPropertiesTest, AbsentValueIsRefusedWithTheReason) {
  proves("PROPERTIES-21");
  JavaProperties properties;
  EXPECT_TRUE(properties.setProperty("old", "rcp.install.id"));

  EXPECT_FALSE(properties.setProperty(std::nullopt, "rcp.install.id"));

  EXPECT_EQ(properties.getPropertyForKey("rcp.install.id"), "old");
  EXPECT_THAT(
      _sandbox.log(),
      ElementsAre(Says(LogLevel::error, "attempt to insert nil value (key: rcp.install.id)")));
}

TEST_F(JavaPropertiesTest, AbsentKeyIsRefusedWithTheReason) {
  proves("PROPERTIES-21");
  JavaProperties properties;

  EXPECT_FALSE(properties.setProperty("x", std::nullopt));
  EXPECT_FALSE(properties.setProperty(std::nullopt, std::nullopt));

  EXPECT_THAT(properties.allProperties(), IsEmpty());
  EXPECT_THAT(_sandbox.log(), ElementsAre(Says(LogLevel::error, "attempt to insert nil key"),
                                          Says(LogLevel::error, "attempt to insert nil key")));
}

TEST_F(JavaPropertiesTest, RemovedKeyIsGone) {
  proves("PROPERTIES-20");
  JavaProperties properties;
  EXPECT_TRUE(properties.setProperty("1", "a"));
  EXPECT_TRUE(properties.setProperty("2", "b"));

  properties.removePropertyForKey("a");
  properties.removePropertyForKey("absent");

  EXPECT_EQ(properties.getPropertyForKey("a"), std::nullopt);
  EXPECT_THAT(properties.allProperties(), ElementsAre("b"));
}

TEST_F(JavaPropertiesTest, RemovingFromNoEntriesDoesNothing) {
  proves("PROPERTIES-20");
  JavaProperties properties;

  properties.removePropertyForKey("a");

  EXPECT_THAT(properties.allProperties(), IsEmpty());
}

// --- Saving --------------------------------------------------------------------------------------

TEST_F(JavaPropertiesTest, SaveWritesBackToTheBoundFile) {
  proves("PROPERTIES-17");
  const std::string file = _sandbox.write("tmp/x.properties", "# comment\n\nb: 2\na b\n", 0640);
  JavaProperties properties(file);
  EXPECT_TRUE(properties.setProperty("x y", "new key"));

  EXPECT_TRUE(properties.savePropertiesToFile(std::nullopt));

  EXPECT_EQ(_sandbox.read(file), "b=2\na=b\nnew\\ key=x y\n");
  EXPECT_EQ(_sandbox.mode(file), 0640u);
}

TEST_F(JavaPropertiesTest, SaveToAnotherPathKeepsTheBinding) {
  proves("PROPERTIES-17");
  const std::string file = _sandbox.write("tmp/x.properties", "a=1\n");
  JavaProperties properties(file);

  EXPECT_TRUE(properties.savePropertiesToFile(_sandbox.path("tmp/other")));
  EXPECT_TRUE(properties.setProperty("2", "a"));
  EXPECT_TRUE(properties.savePropertiesToFile(std::nullopt));

  EXPECT_EQ(_sandbox.read("tmp/other"), "a=1\n");
  EXPECT_EQ(_sandbox.read(file), "a=2\n");
}

TEST_F(JavaPropertiesTest, SaveToAPathNeedsNoBoundFile) {
  proves("PROPERTIES-18");
  JavaProperties properties;
  EXPECT_TRUE(properties.setProperty("1", "a"));

  EXPECT_TRUE(properties.savePropertiesToFile(_sandbox.path("tmp/x")));

  EXPECT_EQ(_sandbox.read("tmp/x"), "a=1\n");
  EXPECT_FALSE(properties.savePropertiesToFile(std::nullopt));
}

TEST_F(JavaPropertiesTest, TildeOfTheTargetIsExpanded) {
  proves("PROPERTIES-19");
  JavaProperties properties;
  EXPECT_TRUE(properties.setProperty("1", "a"));

  EXPECT_TRUE(properties.savePropertiesToFile("~/x.properties"));

  EXPECT_EQ(_sandbox.read("Users/tester/x.properties"), "a=1\n");
}

TEST_F(JavaPropertiesTest, NoEntriesAreSavedAsAnEmptyFile) {
  proves("PROPERTIES-18");
  const std::string file = _sandbox.write("tmp/x.properties", "a=1\n");
  JavaProperties properties(file);
  properties.removePropertyForKey("a");

  EXPECT_TRUE(properties.savePropertiesToFile(std::nullopt));

  EXPECT_EQ(_sandbox.read(file), "");
}

TEST_F(JavaPropertiesTest, FailedSaveAnswersFalseAndIsTold) {
  proves("PROPERTIES-17");
  JavaProperties properties;
  EXPECT_TRUE(properties.setProperty("1", "a"));

  EXPECT_FALSE(properties.savePropertiesToFile(_sandbox.path("tmp/missing/x")));

  EXPECT_FALSE(_sandbox.exists("tmp/missing"));
  EXPECT_THAT(_sandbox.log(),
              ElementsAre(told("tmp/missing/x", "written: No such file or directory")));
}

TEST_F(JavaPropertiesTest, FailedSaveCanBePassedOver) {
  proves("PROPERTIES-17");
  const std::string folder = folderInPlaceOfFile();
  JavaProperties unreadable(folder, FailedSave::isPassedOver);
  JavaProperties unsavable(_sandbox.path("tmp/missing/x"), FailedSave::isPassedOver);

  EXPECT_FALSE(unreadable.savePropertiesToFile(std::nullopt));
  EXPECT_FALSE(unsavable.savePropertiesToFile(std::nullopt));

  EXPECT_THAT(_sandbox.log(), IsEmpty());
}

TEST_F(JavaPropertiesTest, RefusedRenameKeepsTheOldFile) {
  proves("PROPERTIES-17");
  const std::string file = _sandbox.write("tmp/x.properties", "a: 1\n");
  JavaProperties properties(file);
  EXPECT_TRUE(properties.setProperty("2", "a"));
  _sandbox.files().failNext(FileOperation::kRename, ENOSPC);

  EXPECT_FALSE(properties.savePropertiesToFile(std::nullopt));

  EXPECT_EQ(_sandbox.read(file), "a: 1\n");
  EXPECT_THAT(_sandbox.log(),
              ElementsAre(told("tmp/x.properties", "written: No space left on device")));
}

// --- Merging -------------------------------------------------------------------------------------

TEST_F(JavaPropertiesTest, MergedFileWinsAndTheResultIsSaved) {
  proves("PROPERTIES-22");
  const std::string file = _sandbox.write("tmp/x.properties", "k=1\nj=3\n");
  const std::string other = _sandbox.write("tmp/other.properties", "n=4\nk=2\n\n");
  JavaProperties properties(file);

  EXPECT_TRUE(properties.mergeWithJavaProperties(other));

  EXPECT_EQ(properties.getPropertyForKey("k"), "2");
  EXPECT_EQ(_sandbox.read(file), "k=2\nj=3\nn=4\n");
  EXPECT_EQ(_sandbox.read(other), "n=4\nk=2\n\n");
  EXPECT_THAT(_sandbox.log(), IsEmpty());
}

TEST_F(JavaPropertiesTest, MergeWithNothingSavesNothing) {
  proves("PROPERTIES-22");
  const std::string file = _sandbox.write("tmp/x.properties", "k : 1\n");
  JavaProperties properties(file);

  EXPECT_TRUE(properties.mergeWithJavaProperties(std::nullopt));
  EXPECT_FALSE(properties.mergeWithJavaProperties(_sandbox.path("tmp/missing")));

  EXPECT_EQ(_sandbox.read(file), "k : 1\n");
  EXPECT_THAT(properties.allProperties(), ElementsAre("k"));
}

TEST_F(JavaPropertiesTest, TildeOfTheMergedFileIsExpanded) {
  proves("PROPERTIES-19");
  _sandbox.write("Users/tester/other.properties", "k=2\n");
  const std::string file = _sandbox.write("tmp/x.properties", "k=1\n");
  JavaProperties properties(file);

  EXPECT_TRUE(properties.mergeWithJavaProperties("~/other.properties"));

  EXPECT_EQ(_sandbox.read(file), "k=2\n");
}

TEST_F(JavaPropertiesTest, MergeCreatesAMissingFile) {
  proves("PROPERTIES-22");
  const std::string other = _sandbox.write("tmp/other.properties", "k=2\n");
  JavaProperties properties(_sandbox.path("tmp/new.properties"));

  EXPECT_TRUE(properties.mergeWithJavaProperties(other));

  EXPECT_EQ(_sandbox.read("tmp/new.properties"), "k=2\n");
}

TEST_F(JavaPropertiesTest, MergeAnswersAFailedSave) {
  proves("PROPERTIES-22");
  const std::string other = _sandbox.write("tmp/other.properties", "k=2\n");
  JavaProperties unbound;
  JavaProperties unsavable(_sandbox.path("tmp/missing/x.properties"));

  EXPECT_FALSE(unbound.mergeWithJavaProperties(other));
  EXPECT_FALSE(unsavable.mergeWithJavaProperties(other));

  EXPECT_EQ(unbound.getPropertyForKey("k"), "2");
}

TEST_F(JavaPropertiesTest, MergeWithAnUnreadableFileSavesWhatIsThere) {
  proves("PROPERTIES-22");
  const std::string file = _sandbox.write("tmp/x.properties", "a: 1\n");
  const std::string other = _sandbox.makeFolder("tmp/other.properties");
  JavaProperties properties(file);

  EXPECT_TRUE(properties.mergeWithJavaProperties(other));

  EXPECT_EQ(_sandbox.read(file), "a=1\n");
  EXPECT_THAT(_sandbox.log(), IsEmpty());
}

}  // namespace
}  // namespace installer
