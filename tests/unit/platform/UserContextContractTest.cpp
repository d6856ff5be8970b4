#include "unit/platform/UserContextContract.h"

#include "support/FakeUserContext.h"
#include "support/Proves.h"

namespace installer::test {
namespace {

TEST_P(UserContextContractTest, TellsVariables) {
  proves("USER-2");
  _subject->setVariable("a value");

  EXPECT_EQ(_users.environment(kContractVariable), "a value");
}

TEST_P(UserContextContractTest, AnEmptyVariableIsNotUnset) {
  proves("USER-2");
  _subject->setVariable("");

  EXPECT_EQ(_users.environment(kContractVariable), "");
}

TEST_P(UserContextContractTest, AnUnsetVariableIsAbsent) {
  proves("USER-2");
  _subject->setVariable(std::nullopt);

  EXPECT_EQ(_users.environment(kContractVariable), std::nullopt);
}

TEST_P(UserContextContractTest, FindsRoot) {
  const std::optional<User> root = _users.findUser("root");

  ASSERT_TRUE(root.has_value());
  EXPECT_EQ(root->name, "root");
  EXPECT_EQ(root->uid, 0U);
  EXPECT_EQ(root->gid, 0U);
  EXPECT_EQ(root->home, _subject->homeOfRoot());
  EXPECT_EQ(_users.findGroup(_subject->groupOfRoot()), 0U);
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

class FakeSubject : public UserContextSubject {
 public:
  FakeSubject() {
    _users.userList = {{.name = "root", .uid = 0, .gid = 0, .home = "/root"}};
    _users.groups = {{"wheel", 0}};
    _users.effectiveUser = 0;
  }
  UserContext& users() override { return _users; }
  std::string homeOfRoot() override { return "/root"; }
  std::string groupOfRoot() override { return "wheel"; }
  void setVariable(const std::optional<std::string>& value) override {
    if (value)
      _users.variables[kContractVariable] = *value;
    else
      _users.variables.erase(kContractVariable);
  }

 private:
  FakeUserContext _users;
};

INSTANTIATE_TEST_SUITE_P(MadeUp, UserContextContractTest,
                         ::testing::Values(UserContextKind{
                             "Fake", [] { return std::make_unique<FakeSubject>(); }}),
                         [](const auto& given) { return given.param.name; });

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
