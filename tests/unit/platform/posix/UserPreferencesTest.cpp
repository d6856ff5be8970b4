#include "platform/posix/UserPreferences.h"

#include <gmock/gmock.h>
#include <unistd.h>

#include "platform/files/PosixFileManager.h"
#include "platform/posix/PosixUserContext.h"
#include "support/FakeUserContext.h"
#include "support/Proves.h"
#include "support/Sandbox.h"
#include "support/TemporaryFolder.h"

namespace installer::test {
namespace {

using PropertyList::Dictionary;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Optional;

constexpr const char* kDomain = "com.example.tool";

// Remembers what was read and as whom.
class WatchedFileManager : public PosixFileManager {
 public:
  explicit WatchedFileManager(UserContext& users) : PosixFileManager(users), _users(users) {}

  std::optional<std::string> read(const std::string& path, FileError* error) override {
    reads.push_back(path);
    readers.push_back(_users.effectiveUserId());
    return PosixFileManager::read(path, error);
  }

  std::vector<std::string> reads;
  std::vector<uid_t> readers;

 private:
  UserContext& _users;
};

class UserPreferencesTest : public ::testing::Test {
 protected:
  UserPreferencesTest() {
    _users.effectiveUser = 0;
    _users.userList = {{.name = "root", .uid = 0, .gid = 0, .home = _sandbox.path("root")},
                       {.name = "ada", .uid = 501, .gid = 20, .home = _sandbox.path("Users/ada")}};
    _users.variables = {{"USER", "ada"}, {"HOME", _sandbox.path("home")}};
    for (const char* home : {"root", "Users/ada", "home"})
      _sandbox.writePlist(file(home), {{"Home", PropertyList::Value(home)}});
  }

  static std::string file(const std::string& home) {
    return home + "/Library/Preferences/com.example.tool.plist";
  }

  // The home folder whose preferences are answered.
  std::optional<std::string> homeRead() {
    const std::optional<Dictionary> values = _preferences.domain(kDomain);
    return values ? PropertyList::textForKey(*values, "Home") : std::nullopt;
  }

  Sandbox _sandbox;
  FakeUserContext& _users = _sandbox.users();
  WatchedFileManager _files{_users};
  UserPreferences _preferences{_files, _users};
};

TEST_F(UserPreferencesTest, ComeFromTheHomeThatTheUserDatabaseTells) {
  proves("USER-4");
  EXPECT_EQ(homeRead(), "Users/ada");
  EXPECT_THAT(_files.reads, ElementsAre(_sandbox.path(file("Users/ada"))));
}

TEST_F(UserPreferencesTest, OfTheGlobalDomainHaveTheirOwnFile) {
  _sandbox.writePlist("Users/ada/Library/Preferences/.GlobalPreferences.plist",
                      {{"AppleLocale", PropertyList::Value("de_DE")}});

  EXPECT_THAT(_preferences.domain(Preferences::kGlobalDomain),
              Optional(Dictionary{{"AppleLocale", PropertyList::Value("de_DE")}}));
}

TEST_F(UserPreferencesTest, AreReadAsTheConsoleUser) {
  proves("USER-5");
  EXPECT_EQ(homeRead(), "Users/ada");

  EXPECT_THAT(_files.readers, ElementsAre(501));
  EXPECT_THAT(_users.switches, ElementsAre(501, 0));
}

TEST_F(UserPreferencesTest, AreReadAsTheCurrentUserWhenTheSwitchIsRefused) {
  proves("USER-6");
  _users.refusedUsers = {501};

  EXPECT_EQ(homeRead(), "Users/ada");

  EXPECT_THAT(_files.readers, ElementsAre(0));
  EXPECT_THAT(_users.switches, ElementsAre(501));
}

TEST_F(UserPreferencesTest, EndTheProcessWhenThereIsNoWayBack) {
  proves("USER-6");
  _users.refusedUsers = {0};
  ASSERT_EQ(_sandbox.platform().log->addFile(STDERR_FILENO), 0);

  EXPECT_EXIT((void)_preferences.domain(kDomain),  // ends before it answers
              ::testing::ExitedWithCode(1),
              "<Error>: The process could not become its own user again. It ends here.");
}

TEST_F(UserPreferencesTest, ASecondReadSwitchesAgain) {
  EXPECT_EQ(homeRead(), "Users/ada");
  EXPECT_EQ(homeRead(), "Users/ada");

  EXPECT_THAT(_users.switches, ElementsAre(501, 0, 501, 0));
}

TEST_F(UserPreferencesTest, OfRootAreRoots) {
  _users.variables["USER"] = "root";

  EXPECT_EQ(homeRead(), "root");
}

TEST_F(UserPreferencesTest, OfAnUnknownUserAreInHomeAndReadWithoutASwitch) {
  proves("USER-4");
  _users.variables["USER"] = "nobody-knows";

  EXPECT_EQ(homeRead(), "home");

  EXPECT_THAT(_users.switches, IsEmpty());
}

TEST_F(UserPreferencesTest, OfAnEmptyUserAreInHome) {
  _users.variables["USER"] = "";

  EXPECT_EQ(homeRead(), "home");
}

TEST_F(UserPreferencesTest, AreTheCurrentUsersWhenUserIsUnset) {
  _users.variables.erase("USER");

  EXPECT_EQ(homeRead(), "root");
}

TEST_F(UserPreferencesTest, AreInHomeWhenNobodyIsKnown) {
  _users.variables.erase("USER");
  _users.effectiveUser = 4711;

  EXPECT_EQ(homeRead(), "home");
  EXPECT_THAT(_users.switches, IsEmpty());
}

TEST_F(UserPreferencesTest, NeedNoHomeVariableForAKnownUser) {
  _users.variables.erase("HOME");

  EXPECT_EQ(homeRead(), "Users/ada");
}

TEST_F(UserPreferencesTest, AreAbsentWithoutAnyHome) {
  proves("USER-4");
  _users.variables = {{"USER", "nobody-knows"}};

  EXPECT_EQ(_preferences.domain(kDomain), std::nullopt);
  EXPECT_THAT(_files.reads, IsEmpty());
}

TEST_F(UserPreferencesTest, AreAbsentWhenTheHomeIsEmpty) {
  proves("USER-4");
  _users.variables = {{"USER", "nobody-knows"}, {"HOME", ""}};
  EXPECT_EQ(_preferences.domain(kDomain), std::nullopt);

  _users.variables = {{"USER", "ada"}, {"HOME", _sandbox.path("home")}};
  _users.userList.back().home = "";
  EXPECT_EQ(_preferences.domain(kDomain), std::nullopt);

  EXPECT_THAT(_files.reads, IsEmpty());
}

TEST_F(UserPreferencesTest, AreAbsentWithoutAFile) {
  proves("USER-8");
  EXPECT_EQ(_preferences.domain("com.example.other"), std::nullopt);
}

TEST_F(UserPreferencesTest, AreAbsentWhenTheFileIsDamaged) {
  proves("USER-8");
  _sandbox.write(file("Users/ada"), "<plist><dict>");

  EXPECT_EQ(_preferences.domain(kDomain), std::nullopt);
}

TEST_F(UserPreferencesTest, AreAbsentWhenTheFileHoldsNoDictionary) {
  proves("USER-8");
  _sandbox.write(file("Users/ada"),
                 "<plist version=\"1.0\"><array><string>x</string></array></plist>");

  EXPECT_EQ(_preferences.domain(kDomain), std::nullopt);
}

TEST_F(UserPreferencesTest, ArePassedOverWhenAPipeOrAFolderStandsThere) {
  proves("USER-8");
  _sandbox.remove(file("Users/ada"));
  _sandbox.makePipe(file("Users/ada"));
  EXPECT_EQ(_preferences.domain(kDomain), std::nullopt);

  _sandbox.remove(file("Users/ada"));
  _sandbox.makeFolder(file("Users/ada"));
  EXPECT_EQ(_preferences.domain(kDomain), std::nullopt);
}

TEST_F(UserPreferencesTest, FollowLinks) {
  proves("USER-8");
  _sandbox.remove(file("Users/ada"));
  _sandbox.makeLink(file("Users/ada"), _sandbox.path(file("home")));

  EXPECT_EQ(homeRead(), "home");
}

// --- With the system's own rights ----------------------------------------------------------------

class HomeInFolder : public PosixUserContext {
 public:
  explicit HomeInFolder(std::string home) : _home(std::move(home)) {}

  std::optional<std::string> environment(const std::string&) override { return "somebody"; }
  std::optional<User> findUser(const std::string& name) override {
    return User{name, 54321, 54321, _home};
  }

 private:
  const std::string _home;
};

class RealRightsTest : public ::testing::Test {
 protected:
  void SetUp() override {
    if (geteuid() != 0) GTEST_SKIP() << "only root may change its user";
    _file = _folder.makeFile("Library/Preferences/com.example.tool.plist",
                             PropertyList::serialize(Dictionary{{"a", "b"}}).value(), 0600);
  }

  TemporaryFolder _folder;
  std::string _file;
  HomeInFolder _users{_folder.path()};
  PosixFileManager _files{_users};
  UserPreferences _preferences{_files, _users};
};

TEST_F(RealRightsTest, TheUsersOwnFileIsRead) {
  proves("USER-5");
  ASSERT_EQ(chown(_file.c_str(), 54321, 54321), 0);

  EXPECT_THAT(_preferences.domain(kDomain), Optional(Dictionary{{"a", "b"}}));

  EXPECT_EQ(geteuid(), 0U);
}

TEST_F(RealRightsTest, AFileThatTheUserMayNotReadIsNotRead) {
  proves("USER-5");
  EXPECT_EQ(_preferences.domain(kDomain), std::nullopt);

  EXPECT_EQ(geteuid(), 0U);
}

}  // namespace
}  // namespace installer::test
