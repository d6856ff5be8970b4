#include "platform/posix/EffectiveUser.h"

#include <gmock/gmock.h>

#include "support/FakeUserContext.h"
#include "support/Proves.h"

namespace installer::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class EffectiveUserTest : public ::testing::Test {
 protected:
  EffectiveUserTest() { _users.effectiveUser = 10; }

  FakeUserContext _users;
};

TEST_F(EffectiveUserTest, IsTheOtherUserForTheScope) {
  {
    const EffectiveUser scope(_users, 20);

    EXPECT_EQ(_users.effectiveUser, 20U);
  }

  EXPECT_EQ(_users.effectiveUser, 10U);
  EXPECT_THAT(_users.switches, ElementsAre(20, 10));
}

TEST_F(EffectiveUserTest, StaysWithoutAnotherUser) {
  { const EffectiveUser scope(_users, std::nullopt); }

  EXPECT_THAT(_users.switches, IsEmpty());
}

TEST_F(EffectiveUserTest, StaysWhenTheSystemRefuses) {
  proves("USER-6");
  _users.refusedUsers = {20};
  {
    const EffectiveUser scope(_users, 20);

    EXPECT_EQ(_users.effectiveUser, 10U);
  }

  EXPECT_THAT(_users.switches, ElementsAre(20));
}

TEST_F(EffectiveUserTest, EndsTheProcessWhenThereIsNoWayBack) {
  proves("USER-6");
  _users.refusedUsers = {10};

  EXPECT_EXIT({ const EffectiveUser scope(_users, 20); }, ::testing::ExitedWithCode(1), "");
}

}  // namespace
}  // namespace installer::test
