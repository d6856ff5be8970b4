#include "platform/posix/PosixUserContext.h"

#include <gmock/gmock.h>
#include <sys/wait.h>
#include <unistd.h>

#include <functional>
#include <memory>
#include <optional>

#include "support/FakeUserContext.h"
#include "support/Proves.h"
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

// --- Contract ------------------------------------------------------------------------------------

// One implementation with the means to set a variable and to say which user is known to run it.
class Subject {
 public:
  virtual ~Subject() = default;
  virtual UserContext& users() = 0;
  virtual void setVariable(const std::optional<std::string>& value) = 0;
};

class RealSubject : public Subject {
 public:
  UserContext& users() override { return _users; }
  void setVariable(const std::optional<std::string>& value) override {
    _variable.emplace(kVariable, value);
  }

 private:
  std::optional<ScopedVariable> _variable;
  PosixUserContext _users;
};

class FakeSubject : public Subject {
 public:
  FakeSubject() {
    _users.userList = {{.name = "root", .uid = 0, .gid = 0, .home = "/root"}};
    _users.groups = {{"root", 0}};
    _users.effectiveUser = 0;
  }
  UserContext& users() override { return _users; }
  void setVariable(const std::optional<std::string>& value) override {
    if (value)
      _users.variables[kVariable] = *value;
    else
      _users.variables.erase(kVariable);
  }

 private:
  FakeUserContext _users;
};

struct Kind {
  std::string name;
  std::function<std::unique_ptr<Subject>()> make;
};

class UserContextContractTest : public ::testing::TestWithParam<Kind> {
 protected:
  std::unique_ptr<Subject> _subject = GetParam().make();
  UserContext& _users = _subject->users();
};

TEST_P(UserContextContractTest, TellsVariables) {
  proves("USER-2");
  _subject->setVariable("a value");

  EXPECT_EQ(_users.environment(kVariable), "a value");
}

TEST_P(UserContextContractTest, AnEmptyVariableIsNotUnset) {
  proves("USER-2");
  _subject->setVariable("");

  EXPECT_EQ(_users.environment(kVariable), "");
}

TEST_P(UserContextContractTest, AnUnsetVariableIsAbsent) {
  proves("USER-2");
  _subject->setVariable(std::nullopt);

  EXPECT_EQ(_users.environment(kVariable), std::nullopt);
}

TEST_P(UserContextContractTest, FindsRoot) {
  const std::optional<User> root = _users.findUser("root");

  ASSERT_TRUE(root.has_value());
  EXPECT_EQ(root->name, "root");
  EXPECT_EQ(root->uid, 0U);
  EXPECT_EQ(root->gid, 0U);
  EXPECT_EQ(root->home, "/root");
  EXPECT_EQ(_users.findGroup("root"), 0U);
}

TEST_P(UserContextContractTest, UnknownNamesAreAbsent) {
  proves("USER-2");
  EXPECT_EQ(_users.findGroup("no-such-group"), std::nullopt);
  EXPECT_FALSE(_users.findUser("no-such-user").has_value());
  EXPECT_FALSE(_users.findUser("").has_value());
  EXPECT_FALSE(_users.findUser("0").has_value());
}

TEST_P(UserContextContractTest, NamesTheEffectiveUser) {
  proves("USER-2");
  const std::optional<std::string> name = _users.currentUserName();

  ASSERT_TRUE(name.has_value());
  EXPECT_EQ(_users.findUser(*name)->uid, _users.effectiveUserId());
}

TEST_P(UserContextContractTest, BecomingOneselfIsGranted) {
  const uid_t self = _users.effectiveUserId();

  EXPECT_TRUE(_users.setEffectiveUserId(self));
  EXPECT_EQ(_users.effectiveUserId(), self);
}

INSTANTIATE_TEST_SUITE_P(
    Kinds, UserContextContractTest,
    ::testing::Values(Kind{"Real", [] { return std::make_unique<RealSubject>(); }},
                      Kind{"Fake", [] { return std::make_unique<FakeSubject>(); }}),
    [](const auto& test) { return test.param.name; });

// --- The system's own database and rights --------------------------------------------------------

class PosixUserContextTest : public ::testing::Test {
 protected:
  PosixUserContext _users;
};

TEST_F(PosixUserContextTest, FindsUserWithIdsAndHomeOfTheirOwn) {
  proves("USER-2");
  const std::optional<User> user = _users.findUser("games");

  ASSERT_TRUE(user.has_value());
  EXPECT_EQ(user->name, "games");
  EXPECT_EQ(user->uid, 5U);
  EXPECT_EQ(user->gid, 60U);
  EXPECT_EQ(user->home, "/usr/games");
}

TEST_F(PosixUserContextTest, FindsGroups) {
  proves("USER-2");
  EXPECT_EQ(_users.findGroup("games"), 60U);
}

TEST_F(PosixUserContextTest, TellsTheEffectiveUser) {
  EXPECT_EQ(_users.effectiveUserId(), geteuid());
}

TEST_F(PosixUserContextTest, ChangesTheEffectiveUserAndNoOther) {
  proves("USER-5");
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
  proves("USER-6");
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
  proves("USER-1");
  _users.variables["USER"] = "somebody";

  EXPECT_EQ(_users.consoleUserName(), "somebody");
}

TEST_F(ConsoleUserTest, IsEmptyWhenUserIsEmpty) {
  proves("USER-1");
  _users.variables["USER"] = "";

  EXPECT_EQ(_users.consoleUserName(), "");
}

TEST_F(ConsoleUserTest, IsTheEffectiveUserWhenUserIsUnset) {
  proves("USER-1");
  EXPECT_EQ(_users.consoleUserName(), "worker");
}

TEST_F(ConsoleUserTest, IsAbsentWhenNobodyIsKnown) {
  proves("USER-1");
  _users.effectiveUser = 8;

  EXPECT_EQ(_users.consoleUserName(), std::nullopt);
}

TEST_F(ConsoleUserTest, IsLookedUpInTheDatabase) {
  EXPECT_EQ(_users.consoleUser()->uid, 7U);

  _users.variables["USER"] = "worker";
  _users.effectiveUser = 8;
  EXPECT_EQ(_users.consoleUser()->uid, 7U);
}

TEST_F(ConsoleUserTest, IsUnknownWhenTheDatabaseHasNoSuchUser) {
  proves("USER-1");
  _users.variables["USER"] = "somebody";
  EXPECT_FALSE(_users.consoleUser().has_value());

  _users.variables.erase("USER");
  _users.effectiveUser = 8;
  EXPECT_FALSE(_users.consoleUser().has_value());
}

}  // namespace
}  // namespace installer::test
