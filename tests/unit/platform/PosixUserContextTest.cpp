#include "platform/posix/PosixUserContext.h"

#include <gmock/gmock.h>
#include <sys/wait.h>
#include <unistd.h>

#include "support/FakeUserContext.h"
#include "support/ScopedVariable.h"

namespace installer::test {
namespace {

constexpr const char* kVariable = "HOTFIX_TEST_VARIABLE";

// Exit status of `work` done in a process of its own, as any change of user is.
template <class Work>
int inOwnProcess(Work work) {
  const pid_t child = fork();
  if (child == 0) _exit(work());
  int status = -1;
  waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

class PosixUserContextTest : public ::testing::Test {
 protected:
  PosixUserContext _users;
};

TEST_F(PosixUserContextTest, TellsVariables) {
  const ScopedVariable variable(kVariable, "a value");

  EXPECT_EQ(_users.environment(kVariable), "a value");
}

TEST_F(PosixUserContextTest, AnEmptyVariableIsNotUnset) {
  const ScopedVariable variable(kVariable, "");

  EXPECT_EQ(_users.environment(kVariable), "");
}

TEST_F(PosixUserContextTest, AnUnsetVariableIsAbsent) {
  const ScopedVariable variable(kVariable, std::nullopt);

  EXPECT_EQ(_users.environment(kVariable), std::nullopt);
}

TEST_F(PosixUserContextTest, FindsRoot) {
  const std::optional<User> root = _users.findUser("root");

  ASSERT_TRUE(root.has_value());
  EXPECT_EQ(root->name, "root");
  EXPECT_EQ(root->uid, 0U);
  EXPECT_EQ(root->gid, 0U);
  EXPECT_EQ(root->home, "/root");
}

TEST_F(PosixUserContextTest, FindsUserWithIdsAndHomeOfTheirOwn) {
  const std::optional<User> user = _users.findUser("games");

  ASSERT_TRUE(user.has_value());
  EXPECT_EQ(user->name, "games");
  EXPECT_EQ(user->uid, 5U);
  EXPECT_EQ(user->gid, 60U);
  EXPECT_EQ(user->home, "/usr/games");
}

TEST_F(PosixUserContextTest, UnknownNamesAreAbsent) {
  EXPECT_EQ(_users.findGroup("no-such-group"), std::nullopt);
  EXPECT_FALSE(_users.findUser("no-such-user").has_value());
  EXPECT_FALSE(_users.findUser("").has_value());
  EXPECT_FALSE(_users.findUser("0").has_value());
}

TEST_F(PosixUserContextTest, FindsGroups) {
  EXPECT_EQ(_users.findGroup("root"), 0U);
  EXPECT_EQ(_users.findGroup("games"), 60U);
}

TEST_F(PosixUserContextTest, TellsTheEffectiveUser) {
  EXPECT_EQ(_users.effectiveUserId(), geteuid());
}

TEST_F(PosixUserContextTest, NamesTheEffectiveUser) {
  const std::optional<std::string> name = _users.currentUserName();

  ASSERT_TRUE(name.has_value());
  EXPECT_EQ(_users.findUser(*name)->uid, geteuid());
}

TEST_F(PosixUserContextTest, ChangesTheEffectiveUserAndNoOther) {
  if (geteuid() != 0) GTEST_SKIP() << "only root may change its user";

  EXPECT_EQ(inOwnProcess([&] {
              if (!_users.setEffectiveUserId(5) || geteuid() != 5 || getuid() != 0) return 1;
              if (_users.effectiveUserId() != 5 || _users.currentUserName() != "games") return 2;
              return _users.setEffectiveUserId(0) && geteuid() == 0 ? 0 : 3;
            }),
            0);
}

TEST_F(PosixUserContextTest, AnEffectiveUserOutsideTheDatabaseHasNoName) {
  if (geteuid() != 0) GTEST_SKIP() << "only root may change its user";

  EXPECT_EQ(inOwnProcess([&] {
              return _users.setEffectiveUserId(54321) && !_users.currentUserName() ? 0 : 1;
            }),
            0);
}

TEST_F(PosixUserContextTest, ARefusedChangeChangesNothing) {
  EXPECT_EQ(inOwnProcess([&] {
              if (geteuid() == 0 && setresuid(5, 5, 5) != 0) return 1;
              const uid_t before = geteuid();
              return !_users.setEffectiveUserId(0) && geteuid() == before ? 0 : 2;
            }),
            0);
}

// --- The console user, on a fake database --------------------------------------------------------

class ConsoleUserTest : public ::testing::Test {
 protected:
  ConsoleUserTest() {
    _users.userList = {{.name = "worker", .uid = 7, .gid = 7, .home = "/"}};
    _users.effectiveUser = 7;
  }

  FakeUserContext _users;
};

TEST_F(ConsoleUserTest, IsTheValueOfUser) {
  _users.variables["USER"] = "somebody";

  EXPECT_EQ(_users.consoleUserName(), "somebody");
}

TEST_F(ConsoleUserTest, IsEmptyWhenUserIsEmpty) {
  _users.variables["USER"] = "";

  EXPECT_EQ(_users.consoleUserName(), "");
}

TEST_F(ConsoleUserTest, IsTheEffectiveUserWhenUserIsUnset) {
  EXPECT_EQ(_users.consoleUserName(), "worker");
}

TEST_F(ConsoleUserTest, IsAbsentWhenNobodyIsKnown) {
  _users.effectiveUser = 8;

  EXPECT_EQ(_users.consoleUserName(), std::nullopt);
}

}  // namespace
}  // namespace installer::test
