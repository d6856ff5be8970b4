#include "hotfix/formats/Properties.h"

#include <gmock/gmock.h>
#include <sys/stat.h>

#include <cerrno>

#include "support/Proves.h"
#include "support/Sandbox.h"
#include "support/XmlList.h"

namespace installer {
namespace {

using PropertyList::Array;
using PropertyList::Dictionary;
using test::Says;
using test::xmlList;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class PropertiesTest : public ::testing::Test {
 protected:
  test::Sandbox _sandbox;
};

// --- Without a file ------------------------------------------------------------------------------

TEST_F(PropertiesTest, NewStoreIsEmptyAndTakesValues) {
  proves("STORE-1");
  Properties properties;

  EXPECT_EQ(properties.getPropertyForKey("a"), std::nullopt);
  EXPECT_TRUE(properties.setProperty("1", "a"));
  EXPECT_EQ(properties.getPropertyForKey("a"), "1");
}

TEST_F(PropertiesTest, NewStoreHasNowhereToSaveAndSaysYes) {
  proves("STORE-1");
  Properties properties;
  EXPECT_TRUE(properties.setProperty("1", "a"));

  EXPECT_TRUE(properties.savePropertiesToFile(std::nullopt));

  EXPECT_THAT(_sandbox.files().operations(), IsEmpty());
}

TEST_F(PropertiesTest, NewStoreSavesToANamedFile) {
  proves("STORE-1");
  Properties properties;
  EXPECT_TRUE(properties.setProperty("1", "a"));

  EXPECT_TRUE(properties.savePropertiesToFile(_sandbox.path("tmp/a.plist")));

  EXPECT_EQ(_sandbox.read("tmp/a.plist"),
            xmlList("<dict>\n\t<key>a</key>\n\t<string>1</string>\n</dict>"));
}

TEST_F(PropertiesTest, NamedFileIsNotRemembered) {
  proves("STORE-1");
  Properties properties;
  EXPECT_TRUE(properties.savePropertiesToFile(_sandbox.path("tmp/a.plist")));
  EXPECT_TRUE(properties.setProperty("1", "a"));

  EXPECT_TRUE(properties.savePropertiesToFile(std::nullopt));

  EXPECT_EQ(_sandbox.readPlist("tmp/a.plist"), Dictionary());
}

// --- A missing file ------------------------------------------------------------------------------

TEST_F(PropertiesTest, MissingFileGivesAStoreThatHoldsNothing) {
  proves("STORE-2");
  Properties properties(_sandbox.path("tmp/missing.plist"));

  EXPECT_EQ(properties.getPropertyForKey("a"), std::nullopt);
  EXPECT_FALSE(properties.setProperty("1", "a"));
  EXPECT_FALSE(properties.setProperty(std::nullopt, "a"));
  EXPECT_EQ(properties.getPropertyForKey("a"), std::nullopt);
}

TEST_F(PropertiesTest, MissingFileIsNotCreatedByASave) {
  proves("STORE-2");
  Properties properties(_sandbox.path("tmp/missing.plist"));
  properties.removePropertyForKey("a");
  properties.removeAllProperties();

  EXPECT_FALSE(properties.savePropertiesToFile(std::nullopt));
  EXPECT_FALSE(properties.savePropertiesToFile(_sandbox.path("tmp/other.plist")));

  EXPECT_FALSE(_sandbox.exists("tmp/missing.plist"));
  EXPECT_FALSE(_sandbox.exists("tmp/other.plist"));
}

TEST_F(PropertiesTest, MissingFileAndDanglingLinkAreNoNews) {
  proves("STORE-2");
  Properties missing(_sandbox.path("tmp/missing.plist"));
  Properties dangling(_sandbox.makeLink("tmp/link.plist", "nowhere"));

  EXPECT_FALSE(dangling.setProperty("1", "a"));
  EXPECT_THAT(_sandbox.log(), IsEmpty());
}

// --- A file that is there ------------------------------------------------------------------------

TEST_F(PropertiesTest, ValuesOfTheFileAreRead) {
  proves("STORE-3");
  Properties properties(_sandbox.writePlist("tmp/a.plist", {{"a", "1"}, {"b", ""}}));

  EXPECT_EQ(properties.getPropertyForKey("a"), "1");
  EXPECT_EQ(properties.getPropertyForKey("b"), "");
  EXPECT_EQ(properties.getPropertyForKey("c"), std::nullopt);
  EXPECT_EQ(properties.getPropertyForKey(std::nullopt), std::nullopt);
  EXPECT_THAT(_sandbox.log(), IsEmpty());
}

TEST_F(PropertiesTest, FileIsReadThroughALink) {
  proves("STORE-7");
  _sandbox.writePlist("tmp/a.plist", {{"a", "1"}});
  Properties properties(_sandbox.makeLink("tmp/link.plist", "a.plist"));

  EXPECT_EQ(properties.getPropertyForKey("a"), "1");
}

TEST_F(PropertiesTest, ValuesThatAreNoTextsReadAsAbsentAndSurviveARewrite) {
  proves("STORE-4");
  const Dictionary before{{"z", 1}, {"flag", true}, {"list", Array{"x"}}, {"a", "1"}};
  Properties properties(_sandbox.writePlist("tmp/a.plist", before));

  EXPECT_EQ(properties.getPropertyForKey("z"), std::nullopt);
  EXPECT_TRUE(properties.setProperty("2", "a"));
  EXPECT_TRUE(properties.savePropertiesToFile(std::nullopt));

  const Dictionary after = _sandbox.readPlist("tmp/a.plist");
  EXPECT_EQ(after, (Dictionary{{"z", 1}, {"flag", true}, {"list", Array{"x"}}, {"a", "2"}}));
  EXPECT_EQ(after.begin()->first, "z");
}

TEST_F(PropertiesTest, ValuesAreReplacedAddedAndRemoved) {
  proves("STORE-3");
  Properties properties(_sandbox.writePlist("tmp/a.plist", {{"a", "1"}, {"b", "2"}, {"c", "3"}}));

  EXPECT_TRUE(properties.setProperty("9", "a"));
  EXPECT_TRUE(properties.setProperty(std::nullopt, "b"));
  EXPECT_TRUE(properties.setProperty("4", "d"));
  properties.removePropertyForKey("c");
  EXPECT_TRUE(properties.savePropertiesToFile(std::nullopt));

  EXPECT_EQ(_sandbox.readPlist("tmp/a.plist"), (Dictionary{{"a", "9"}, {"d", "4"}}));
}

TEST_F(PropertiesTest, RemovingAMissingKeySaysYes) {
  proves("STORE-3");
  Properties properties;

  EXPECT_TRUE(properties.setProperty(std::nullopt, "a"));
}

TEST_F(PropertiesTest, AbsentKeyIsRefusedAndChangesNothing) {
  proves("STORE-3");
  Properties properties(_sandbox.writePlist("tmp/a.plist", {{"a", "1"}}));

  EXPECT_FALSE(properties.setProperty("2", std::nullopt));
  properties.removePropertyForKey(std::nullopt);

  EXPECT_EQ(properties.getPropertyForKey("a"), "1");
}

TEST_F(PropertiesTest, RemovingAllLeavesAnEmptyStore) {
  proves("STORE-3");
  Properties properties(_sandbox.writePlist("tmp/a.plist", {{"a", "1"}}));

  properties.removeAllProperties();

  EXPECT_EQ(properties.getPropertyForKey("a"), std::nullopt);
  EXPECT_TRUE(properties.savePropertiesToFile(std::nullopt));
  EXPECT_EQ(_sandbox.readPlist("tmp/a.plist"), Dictionary());
}

TEST_F(PropertiesTest, TwoStoresMeetThroughTheDiskOnly) {
  proves("STORE-5");
  const std::string file = _sandbox.writePlist("tmp/a.plist", {{"a", "1"}});
  Properties first(file);
  Properties second(file);

  EXPECT_TRUE(first.setProperty("2", "a"));
  EXPECT_TRUE(first.savePropertiesToFile(std::nullopt));

  EXPECT_EQ(second.getPropertyForKey("a"), "1");
  EXPECT_EQ(Properties(file).getPropertyForKey("a"), "2");
}

TEST_F(PropertiesTest, SaveKeepsTheModeOfTheFile) {
  proves("STORE-7");
  Properties properties(_sandbox.writePlist("tmp/a.plist", {{"a", "1"}}));
  ASSERT_EQ(chmod(_sandbox.path("tmp/a.plist").c_str(), 0640), 0);

  EXPECT_TRUE(properties.savePropertiesToFile(std::nullopt));

  EXPECT_EQ(_sandbox.mode("tmp/a.plist"), 0640U);
}

TEST_F(PropertiesTest, RefusingDiskChangesNoAnswerKeepsTheFileAndIsTold) {
  proves("STORE-6");
  Properties properties(_sandbox.writePlist("tmp/a.plist", {{"a", "1"}}));
  EXPECT_TRUE(properties.setProperty("2", "a"));
  _sandbox.files().failAt(1, ENOSPC);

  EXPECT_TRUE(properties.savePropertiesToFile(std::nullopt));

  EXPECT_EQ(_sandbox.readPlist("tmp/a.plist"), (Dictionary{{"a", "1"}}));
  EXPECT_THAT(_sandbox.log(), ::testing::ElementsAre(test::Says(
                                  LogLevel::error, "\"" + _sandbox.path("tmp/a.plist") +
                                                       "\" cannot be written: No space left on "
                                                       "device")));
}

TEST_F(PropertiesTest, StoreTellsWhyItHasNoDictionary) {
  proves("STORE-6");
  const Properties readable(_sandbox.writePlist("tmp/a.plist", {{"a", 1}}));
  const Properties missing(_sandbox.path("tmp/none"));
  const Properties damaged(_sandbox.write("tmp/damaged", "<plist>"));
  const Properties folder(_sandbox.makeFolder("tmp/folder"));

  EXPECT_FALSE(Properties().readError());
  EXPECT_FALSE(readable.readError());
  EXPECT_TRUE(readable.hasPropertyForKey("a"));
  EXPECT_FALSE(readable.hasPropertyForKey("b"));
  ASSERT_TRUE(missing.readError());
  EXPECT_EQ(missing.readError()->code, FileError::kMissing);
  EXPECT_FALSE(missing.hasPropertyForKey("a"));
  ASSERT_TRUE(damaged.readError());
  EXPECT_EQ(damaged.readError()->code, FileError::kOther);
  EXPECT_EQ(damaged.readError()->description,
            "\"" + _sandbox.path("tmp/damaged") +
                "\" cannot be read: No property list with a dictionary");
  ASSERT_TRUE(folder.readError());
  EXPECT_EQ(folder.readError()->description,
            "\"" + _sandbox.path("tmp/folder") + "\" cannot be read: Is a directory");
  EXPECT_THAT(_sandbox.log(), IsEmpty());
}

// --- "~" -----------------------------------------------------------------------------------------

TEST_F(PropertiesTest, TildeIsTheHomeFolderWhenReadAndWhenSaved) {
  proves("STORE-7");
  _sandbox.users().userList.front().home = _sandbox.path("tmp");
  _sandbox.writePlist("tmp/a.plist", {{"a", "1"}});

  Properties properties("~/a.plist");
  EXPECT_EQ(properties.getPropertyForKey("a"), "1");
  EXPECT_TRUE(properties.setProperty("2", "a"));
  EXPECT_TRUE(properties.savePropertiesToFile(std::nullopt));
  EXPECT_TRUE(properties.savePropertiesToFile("~/b.plist"));

  EXPECT_EQ(_sandbox.readPlist("tmp/a.plist"), (Dictionary{{"a", "2"}}));
  EXPECT_EQ(_sandbox.readPlist("tmp/b.plist"), (Dictionary{{"a", "2"}}));
}

// --- A file that is no dictionary list -----------------------------------------------------------

class UnreadableProperties : public PropertiesTest {
 protected:
  void expectKept(const std::string& name, const std::string& file) {
    Properties properties(file);

    EXPECT_THAT(_sandbox.log(), IsEmpty()) << name;
    EXPECT_EQ(properties.getPropertyForKey("a"), std::nullopt) << name;
    EXPECT_FALSE(properties.setProperty("1", "a")) << name;
    EXPECT_FALSE(properties.savePropertiesToFile(std::nullopt)) << name;
    EXPECT_THAT(_sandbox.files().operations(), IsEmpty()) << name;
  }
};

TEST_F(UnreadableProperties, KeepTheFileSilently) {
  proves("STORE-6");
  expectKept("array", _sandbox.write("tmp/array.plist", xmlList("<array/>")));
  expectKept("broken", _sandbox.write("tmp/broken.plist", "<plist><dict>"));
  expectKept("empty", _sandbox.write("tmp/empty.plist", ""));
  expectKept("folder", _sandbox.makeFolder("tmp/folder.plist"));
  expectKept("pipe", _sandbox.makePipe("tmp/pipe.plist"));
}

}  // namespace
}  // namespace installer
