#include "hotfix/formats/Configuration.h"

#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <optional>

#include "hotfix/platform/ToldOnce.h"
#include "support/Proves.h"
#include "support/Sandbox.h"
#include "support/XmlList.h"

namespace installer {
namespace {

using PropertyList::Dictionary;
using test::Says;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr const char* kFile = "tmp/com.kiv.rcp.platform.internal.configuration";
constexpr uid_t kStranger = 4242;

// The sandbox's file manager, but for the owner that it reports.
class ForeignFiles : public test::FailingFileManager {
 public:
  ForeignFiles(UserContext& users, uid_t owner) : FailingFileManager(users), _owner(owner) {}

  std::optional<std::string> readUnlinked(const std::string& path, FileOrigin* origin,
                                          FileError* error) override {
    std::optional<std::string> bytes = FailingFileManager::readUnlinked(path, origin, error);
    origin->owner = _owner;
    return bytes;
  }

 private:
  uid_t _owner;
};

class ConfigurationTest : public ::testing::Test {
 protected:
  auto refusal() const {
    return Says(LogLevel::warning, "The file " + _sandbox.path(kFile) +
                                       " is not a plain file of a trusted user, ignore it.");
  }

  // What a configuration finds under "a" when the file belongs to the owner.
  std::optional<std::string> valueFrom(uid_t owner) {
    ForeignFiles files(_sandbox.users(), owner);
    FileManager* const before = std::exchange(_sandbox.platform().files, &files);
    const Configuration configuration;
    _sandbox.platform().files = before;
    return configuration.getPropertyValueForKey("a");
  }

  test::Sandbox _sandbox;
};

TEST_F(ConfigurationTest, MissingFileGivesAnEmptyStoreThatTakesValues) {
  proves("CONFIG-1");
  Configuration configuration;

  EXPECT_EQ(configuration.getPropertyValueForKey("a"), std::nullopt);
  EXPECT_TRUE(configuration.setProperty("1", "a"));
  EXPECT_EQ(configuration.getPropertyValueForKey("a"), "1");
  EXPECT_TRUE(configuration.setProperty(std::nullopt, "a"));
  EXPECT_EQ(configuration.getPropertyValueForKey("a"), std::nullopt);
  EXPECT_FALSE(configuration.setProperty("1", std::nullopt));
  EXPECT_THAT(_sandbox.log(), IsEmpty());
}

TEST_F(ConfigurationTest, SavedValuesAreFoundByTheNextOne) {
  proves("CONFIG-1");
  Configuration first;
  EXPECT_TRUE(first.setProperty("/data", "P_RCPDATA"));

  EXPECT_TRUE(first.saveConfiguration());

  EXPECT_EQ(Configuration().getPropertyValueForKey("P_RCPDATA"), "/data");
  EXPECT_EQ(_sandbox.read(kFile),
            test::xmlList("<dict>\n\t<key>P_RCPDATA</key>\n\t<string>/data</string>\n</dict>"));
}

TEST_F(ConfigurationTest, UnsavedValuesStayInMemory) {
  proves("CONFIG-1");
  EXPECT_TRUE(Configuration().setProperty("1", "a"));

  EXPECT_FALSE(_sandbox.exists(kFile));
}

TEST_F(ConfigurationTest, ValuesOfOtherProgramsSurvive) {
  proves("CONFIG-1");
  _sandbox.writePlist(kFile, {{"theirs", 5}, {"productName", "Q"}});
  Configuration configuration;

  EXPECT_TRUE(configuration.setProperty("1", "a"));
  EXPECT_TRUE(configuration.saveConfiguration());

  EXPECT_EQ(configuration.getPropertyValueForKey("productName"), "Q");
  EXPECT_EQ(_sandbox.readPlist(kFile),
            (Dictionary{{"theirs", 5}, {"productName", "Q"}, {"a", "1"}}));
}

TEST_F(ConfigurationTest, SavedFileIsReadableForAllWhateverItWas) {
  proves("CONFIG-3");
  _sandbox.writePlist(kFile, {{"a", "1"}});
  ASSERT_EQ(chmod(_sandbox.path(kFile).c_str(), 0600), 0);
  const mode_t mask = umask(077);

  EXPECT_TRUE(Configuration().saveConfiguration());

  umask(mask);
  EXPECT_EQ(_sandbox.mode(kFile), 0644U);
}

TEST_F(ConfigurationTest, SavedFileBelongsToTheProcess) {
  proves("CONFIG-3");
  if (geteuid() != 0) GTEST_SKIP() << "needs root to give a file away";
  _sandbox.writePlist(kFile, {{"a", "1"}});
  ASSERT_EQ(chown(_sandbox.path(kFile).c_str(), kStranger, kStranger), 0);

  EXPECT_TRUE(Configuration().saveConfiguration());

  struct stat status {};
  ASSERT_EQ(stat(_sandbox.path(kFile).c_str(), &status), 0);
  EXPECT_EQ(status.st_uid, geteuid());
}

TEST_F(ConfigurationTest, RefusingDiskChangesNoAnswerAndIsTold) {
  proves("CONFIG-4");
  Configuration configuration;
  _sandbox.files().failAt(1, ENOSPC);

  EXPECT_TRUE(configuration.saveConfiguration());

  EXPECT_FALSE(_sandbox.exists(kFile));
  EXPECT_THAT(
      _sandbox.log(),
      ElementsAre(Says(LogLevel::error, "\"" + _sandbox.path(kFile) +
                                            "\" cannot be written: No space left on device")));
}

TEST_F(ConfigurationTest, FileThatCannotBeReadTakesNothingAndStays) {
  proves("CONFIG-4");
  _sandbox.writePlist(kFile, {{"theirs", 5}});
  _sandbox.files().failReading(_sandbox.path(kFile), EIO);
  Configuration configuration;

  EXPECT_FALSE(configuration.setProperty("1", "a"));
  EXPECT_FALSE(configuration.saveConfiguration());

  EXPECT_THAT(_sandbox.log(),
              ElementsAre(Says(LogLevel::error, "\"" + _sandbox.path(kFile) +
                                                    "\" cannot be read: Input/output error")));
  _sandbox.files().stopFailing();
  EXPECT_EQ(_sandbox.readPlist(kFile), (Dictionary{{"theirs", 5}}));
}

TEST_F(ConfigurationTest, AnotherUsersFileThatCannotBeReadIsIgnoredAndReplaced) {
  if (geteuid() != 0) GTEST_SKIP() << "needs root to give a file away";
  _sandbox.writePlist(kFile, {{"theirs", 5}});
  ASSERT_EQ(chown(_sandbox.path(kFile).c_str(), kStranger, kStranger), 0);
  _sandbox.files().failReading(_sandbox.path(kFile), EIO);
  Configuration configuration;

  EXPECT_TRUE(configuration.setProperty("1", "a"));
  EXPECT_TRUE(configuration.saveConfiguration());

  EXPECT_THAT(_sandbox.log(), ElementsAre(refusal()));
  EXPECT_EQ(_sandbox.readPlist(kFile), (Dictionary{{"a", "1"}}));
}

TEST_F(ConfigurationTest, WhatCannotBeToldIsNotWritten) {
  proves("CONFIG-4");
  _sandbox.writePlist(kFile, {{"a", "1"}});
  Configuration configuration;
  EXPECT_TRUE(configuration.setProperty("2", "\x01"));

  EXPECT_TRUE(configuration.saveConfiguration());

  EXPECT_EQ(_sandbox.readPlist(kFile), (Dictionary{{"a", "1"}}));
}

TEST_F(ConfigurationTest, PathOfOtherBytesIsStoredAsTheTextThatCanBeTold) {
  proves("TEXT-4");
  Configuration configuration;

  EXPECT_TRUE(configuration.setProperty("/\xFF\x01", "a"));
  EXPECT_TRUE(configuration.saveConfiguration());

  EXPECT_EQ(_sandbox.readPlist(kFile), (Dictionary{{"a", "/\xC3\xBF\xEF\xBF\xBD"}}));
}

TEST_F(ConfigurationTest, UnreadableFileTakesNothingAndStaysAsItIs) {
  proves("CONFIG-4");
  _sandbox.write(kFile, "<plist>");
  Configuration configuration;

  EXPECT_THAT(_sandbox.log(), IsEmpty());
  EXPECT_EQ(configuration.getPropertyValueForKey("a"), std::nullopt);
  EXPECT_FALSE(configuration.setProperty("1", "a"));
  EXPECT_FALSE(configuration.saveConfiguration());
  EXPECT_EQ(_sandbox.read(kFile), "<plist>");
}

// --- Cleaning up ---------------------------------------------------------------------------------

TEST_F(ConfigurationTest, CleanupRemovesFileAndValues) {
  proves("CONFIG-2");
  _sandbox.writePlist(kFile, {{"a", "1"}});
  Configuration configuration;

  configuration.cleanupConfiguration();

  EXPECT_FALSE(_sandbox.exists(kFile));
  EXPECT_EQ(configuration.getPropertyValueForKey("a"), std::nullopt);
  EXPECT_EQ(Configuration().getPropertyValueForKey("a"), std::nullopt);
}

TEST_F(ConfigurationTest, CleanupWithoutFileEmptiesTheStore) {
  proves("CONFIG-2");
  Configuration configuration;
  EXPECT_TRUE(configuration.setProperty("1", "a"));

  configuration.cleanupConfiguration();

  EXPECT_EQ(configuration.getPropertyValueForKey("a"), std::nullopt);
  EXPECT_THAT(_sandbox.files().operations(), IsEmpty());
}

TEST_F(ConfigurationTest, StoreCanBeFilledAgainAfterCleanup) {
  proves("CONFIG-2");
  Configuration configuration;
  configuration.cleanupConfiguration();

  EXPECT_TRUE(configuration.setProperty("2", "b"));
  EXPECT_TRUE(configuration.saveConfiguration());

  EXPECT_EQ(_sandbox.readPlist(kFile), (Dictionary{{"b", "2"}}));
}

TEST_F(ConfigurationTest, CleanupRemovesAnUnreadableFileToo) {
  proves("CONFIG-2");
  _sandbox.write(kFile, "<plist>");
  Configuration configuration;

  configuration.cleanupConfiguration();

  EXPECT_FALSE(_sandbox.exists(kFile));
  EXPECT_TRUE(Configuration().setProperty("1", "a"));
}

TEST_F(ConfigurationTest, CleanupThatFailsIsToldAndEmptiesTheStore) {
  _sandbox.writePlist(kFile, {{"a", "1"}});
  Configuration configuration;
  _sandbox.files().failNext(FileOperation::kUnlink, EPERM);

  configuration.cleanupConfiguration();

  EXPECT_EQ(configuration.getPropertyValueForKey("a"), std::nullopt);
  EXPECT_THAT(
      _sandbox.log(),
      ElementsAre(Says(LogLevel::error, "\"" + _sandbox.path(kFile) +
                                            "\" cannot be removed: Operation not permitted")));
}

TEST_F(ConfigurationTest, CleanupRemovesALinkAndNotItsTarget) {
  proves("TMP-5");
  _sandbox.writePlist("tmp/target", {{"a", "1"}});
  _sandbox.makeLink(kFile, "target");

  Configuration().cleanupConfiguration();

  EXPECT_FALSE(_sandbox.exists(kFile));
  EXPECT_TRUE(_sandbox.exists("tmp/target"));
}

// --- Whose file counts ---------------------------------------------------------------------------

TEST_F(ConfigurationTest, FilesOfRootEffectiveAndConsoleUserCount) {
  proves("TMP-4");
  _sandbox.writePlist(kFile, {{"a", "1"}});
  _sandbox.users().effectiveUser = 501;
  _sandbox.users().userList.push_back({"console", 502, 20, "/Users/console"});
  _sandbox.users().variables["USER"] = "console";

  EXPECT_EQ(valueFrom(0), "1");
  EXPECT_EQ(valueFrom(501), "1");
  EXPECT_EQ(valueFrom(502), "1");
  EXPECT_THAT(_sandbox.log(), IsEmpty());
}

TEST_F(ConfigurationTest, FileOfAnotherUserReadsAsAbsent) {
  proves("TMP-4");
  _sandbox.writePlist(kFile, {{"a", "1"}});
  _sandbox.users().effectiveUser = 501;

  EXPECT_EQ(valueFrom(kStranger), std::nullopt);

  EXPECT_THAT(_sandbox.log(), ElementsAre(refusal()));
}

TEST_F(ConfigurationTest, FileWithAnotherNameReadsAsAbsentAndIsReplaced) {
  proves("TMP-4");
  _sandbox.writePlist("tmp/target", {{"a", "1"}});
  std::filesystem::create_hard_link(_sandbox.path("tmp/target"), _sandbox.path(kFile));
  Configuration configuration;

  EXPECT_EQ(configuration.getPropertyValueForKey("a"), std::nullopt);
  EXPECT_TRUE(configuration.setProperty("2", "b"));
  EXPECT_TRUE(configuration.saveConfiguration());

  EXPECT_THAT(_sandbox.log(), ElementsAre(refusal()));
  EXPECT_EQ(_sandbox.readPlist("tmp/target"), (Dictionary{{"a", "1"}}));
  EXPECT_EQ(_sandbox.readPlist(kFile), (Dictionary{{"b", "2"}}));
}

TEST_F(ConfigurationTest, UnknownConsoleUserOwnsNothing) {
  proves("TMP-4");
  _sandbox.writePlist(kFile, {{"a", "1"}});
  _sandbox.users().variables["USER"] = "nobody there";
  EXPECT_EQ(valueFrom(kStranger), std::nullopt);

  _sandbox.users().variables.erase("USER");
  _sandbox.users().userList.clear();
  EXPECT_EQ(valueFrom(kStranger), std::nullopt);
}

TEST_F(ConfigurationTest, LinkReadsAsAbsent) {
  proves("TMP-4");
  _sandbox.writePlist("tmp/target", {{"a", "1"}});
  _sandbox.makeLink(kFile, "target");
  Configuration configuration;

  EXPECT_EQ(configuration.getPropertyValueForKey("a"), std::nullopt);
  EXPECT_TRUE(configuration.setProperty("2", "a"));
  EXPECT_THAT(_sandbox.log(), ElementsAre(refusal()));
}

TEST_F(ConfigurationTest, SaveReplacesALinkAndNotItsTarget) {
  proves("TMP-5");
  _sandbox.writePlist("tmp/target", {{"a", "1"}});
  _sandbox.makeLink(kFile, "target");
  Configuration configuration;
  EXPECT_TRUE(configuration.setProperty("2", "b"));

  EXPECT_TRUE(configuration.saveConfiguration());

  EXPECT_EQ(_sandbox.readPlist("tmp/target"), (Dictionary{{"a", "1"}}));
  EXPECT_EQ(_sandbox.readPlist(kFile), (Dictionary{{"b", "2"}}));
  EXPECT_EQ(Configuration().getPropertyValueForKey("b"), "2");
}

TEST_F(ConfigurationTest, DanglingLinkFolderAndPipeReadAsAbsent) {
  proves("TMP-4");
  const ToldOnce lines;
  _sandbox.makeLink(kFile, "nowhere");
  EXPECT_TRUE(Configuration().setProperty("1", "a"));
  _sandbox.remove(kFile);
  _sandbox.makeFolder(kFile);
  EXPECT_TRUE(Configuration().setProperty("1", "a"));
  _sandbox.remove(kFile);
  _sandbox.makePipe(kFile);
  EXPECT_TRUE(Configuration().setProperty("1", "a"));

  EXPECT_THAT(_sandbox.log(), ElementsAre(refusal()));
}

TEST_F(ConfigurationTest, RefusalIsToldOncePerRun) {
  proves("TMP-4");
  _sandbox.makeLink(kFile, "nowhere");

  auto run = std::make_optional<ToldOnce>();
  Configuration();
  Configuration();
  EXPECT_THAT(_sandbox.log(), ElementsAre(refusal()));

  run.reset();
  run.emplace();
  Configuration();
  EXPECT_THAT(_sandbox.log(), ElementsAre(refusal(), refusal()));
}

}  // namespace
}  // namespace installer
