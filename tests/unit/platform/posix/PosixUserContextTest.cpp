#include "platform/posix/PosixUserContext.h"

#include <gmock/gmock.h>
#include <grp.h>
#include <pwd.h>
#include <sys/wait.h>
#include <unistd.h>

#include <optional>
#include <string>
#include <utility>

#include "platform/UserName.h"
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

// A user of this system who is not root and has another group's number; nullopt when there is none.
std::optional<User> someUser() {
  std::optional<User> found;
  setpwent();
  while (const passwd* const entry = found ? nullptr : getpwent())
    if (entry->pw_uid != 0 && entry->pw_uid != entry->pw_gid)
      found = User{entry->pw_name, entry->pw_uid, entry->pw_gid, entry->pw_dir};
  endpwent();
  return found;
}

// The system's last group, with its number.
std::pair<std::string, gid_t> lastGroup() {
  std::pair<std::string, gid_t> last;
  setgrent();
  while (const group* const entry = getgrent()) last = {entry->gr_name, entry->gr_gid};
  endgrent();
  return last;
}

// --- The system's own database and rights --------------------------------------------------------

class PosixUserContextTest : public ::testing::Test {
 protected:
  PosixUserContext _users;
};

TEST_F(PosixUserContextTest, FindsUserWithIdsAndHomeOfTheirOwn) {
  proves("USER-2");
  const std::optional<User> listed = someUser();
  ASSERT_TRUE(listed.has_value());

  const std::optional<User> user = _users.findUser(listed->name);

  ASSERT_TRUE(user.has_value());
  EXPECT_EQ(user->name, listed->name);
  EXPECT_EQ(user->uid, listed->uid);
  EXPECT_EQ(user->gid, listed->gid);
  EXPECT_EQ(user->home, listed->home);
}

TEST_F(PosixUserContextTest, FindsGroups) {
  proves("USER-2");
  const auto [name, number] = lastGroup();

  EXPECT_NE(number, 0U);
  EXPECT_EQ(_users.findGroup(name), number);
}

TEST_F(PosixUserContextTest, TellsTheEffectiveUser) {
  EXPECT_EQ(_users.effectiveUserId(), geteuid());
}

TEST_F(PosixUserContextTest, TellsTheNameOfANumber) {
  const std::optional<User> user = someUser();
  ASSERT_TRUE(user.has_value());

  const std::optional<std::string> name = nameOfUser(user->uid);
  ASSERT_TRUE(name.has_value());
  EXPECT_EQ(_users.findUser(*name)->uid, user->uid) << "several names can have one number";
  EXPECT_EQ(nameOfUser(54321), std::nullopt);
}

TEST_F(PosixUserContextTest, ChangesTheEffectiveUserAndNoOther) {
  proves("USER-5");
  if (geteuid() != 0) GTEST_SKIP() << "only root may change its user";

  const std::optional<User> user = someUser();
  ASSERT_TRUE(user.has_value());

  EXPECT_EQ(inOwnProcess([&] {
              const uid_t id = user->uid;
              if (!_users.setEffectiveUserId(id) || geteuid() != id || getuid() != 0) return 1;
              if (_users.effectiveUserId() != id || _users.currentUserName() != user->name)
                return 2;
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
