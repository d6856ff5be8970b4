#include "platform/posix/PosixUserContext.h"

#include <gmock/gmock.h>
#include <sys/wait.h>
#include <unistd.h>

#include <optional>

#include "support/Proves.h"

namespace installer::test {
namespace {

// Exit status of `work` done in a process of its own, as any change of user is.
template <class Work>
int inOwnProcess(Work work) {
  const pid_t child = fork();
  if (child == 0) _exit(work());
  int status = -1;
  waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

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
              if (geteuid() == 0 && setuid(5) != 0) return 1;
              const uid_t before = geteuid();
              return !_users.setEffectiveUserId(0) && geteuid() == before ? 0 : 2;
            }),
            0);
}

}  // namespace
}  // namespace installer::test
