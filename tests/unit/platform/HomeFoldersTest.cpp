#include "hotfix/platform/HomeFolders.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "platform/Platform.h"
#include "support/FakeUserContext.h"
#include "support/Proves.h"
#include "support/RandomText.h"
#include "support/models/PathModel.h"

namespace installer::test {
namespace {

class ExpandingTildeTest : public ::testing::Test {
 protected:
  static constexpr uid_t kAda = 1;
  static constexpr uid_t kHomeless = 2;
  static constexpr uid_t kNobody = 3;

  ExpandingTildeTest() {
    _users.userList = {{"ada", kAda, 1, "/database/ada/"}, {"homeless", kHomeless, 1, ""}};
    _users.variables = {{"HOME", "/Users/me"}};
    _users.effectiveUser = kAda;
    _platform.users = &_users;
  }

  FakeUserContext _users;
  Platform _platform;
  ScopedPlatform _scope{_platform};
};

TEST_F(ExpandingTildeTest, ATildeIsTheFolderThatTheDatabaseKnows) {
  proves("PATH-2");
  EXPECT_EQ(path::expandingTilde("~"), "/database/ada");
  EXPECT_EQ(path::expandingTilde("~/"), "/database/ada");
  EXPECT_EQ(path::expandingTilde("~/a//b/"), "/database/ada/a/b");
}

TEST_F(ExpandingTildeTest, HomeStandsInForWhomTheDatabaseDoesNotKnow) {
  proves("PATH-2");
  _users.effectiveUser = kNobody;
  EXPECT_EQ(path::expandingTilde("~"), "/Users/me");
  EXPECT_EQ(path::expandingTilde("~/a"), "/Users/me/a");

  _users.effectiveUser = kHomeless;
  EXPECT_EQ(path::expandingTilde("~/a//b/"), "/Users/me/a/b");
}

TEST_F(ExpandingTildeTest, WithoutAnyHomeThePathStays) {
  proves("PATH-2");
  _users.variables.erase("HOME");
  _users.effectiveUser = kNobody;
  EXPECT_EQ(path::expandingTilde("~"), "~");
  EXPECT_EQ(path::expandingTilde("~/a/"), "~/a/");

  _users.effectiveUser = kHomeless;
  EXPECT_EQ(path::expandingTilde("~/a"), "~/a");

  _users.variables["HOME"] = "";
  EXPECT_EQ(path::expandingTilde("~"), "~");
}

TEST_F(ExpandingTildeTest, ANamedUsersHomeComesFromTheDatabase) {
  proves("PATH-2");
  EXPECT_EQ(path::expandingTilde("~ada"), "/database/ada");
  EXPECT_EQ(path::expandingTilde("~ada/x"), "/database/ada/x");
}

TEST_F(ExpandingTildeTest, AnUnknownUserStays) {
  proves("PATH-2");
  EXPECT_EQ(path::expandingTilde("~stranger/x"), "~stranger/x");
  EXPECT_EQ(path::expandingTilde("~homeless/x"), "~homeless/x");
}

TEST_F(ExpandingTildeTest, OnlyALeadingTildeCounts) {
  proves("PATH-2");
  EXPECT_EQ(path::expandingTilde(""), "");
  EXPECT_EQ(path::expandingTilde("/a//~/b/"), "/a//~/b/");
  EXPECT_EQ(path::expandingTilde("a~"), "a~");
}

TEST(HomeFoldersModelTest, RandomTildesAreExpandedAsTheModelSays) {
  const std::vector<std::string> begins = {"~", "~", "~ada", "~homeless", "~nobody", "", "/~"};
  const std::vector<std::string> pieces = {"/", "//", "a", "~", "~ada", "..", "\u00e9"};
  const std::vector<std::optional<std::string>> variables = {std::nullopt, "", "/", "/h//me/",
                                                             "relative"};
  const model::Homes homes = {{"ada", "/Users/ada/"}, {"homeless", ""}, {"eve", "/"}};
  FakeUserContext users;
  for (const auto& [name, home] : homes)
    users.userList.push_back({name, static_cast<uid_t>(users.userList.size()), 0, home});
  Platform platform;
  platform.users = &users;
  const ScopedPlatform scope(platform);
  forRandomCases([&](RandomSource& random) {
    const std::string path = random.oneOf(begins) + random.textOf(pieces, 5);
    const std::optional<std::string> home = random.oneOf(variables);
    users.variables.clear();
    if (home) users.variables["HOME"] = *home;
    users.effectiveUser = static_cast<uid_t>(random.below(homes.size() + 1));
    const std::string user = users.currentUserName().value_or("nobody");

    EXPECT_EQ(path::expandingTilde(path), model::expandingTilde(path, home, user, homes)) << path;
  });
}

}  // namespace
}  // namespace installer::test
