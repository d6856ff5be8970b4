#include "faults/Attacker.h"

#include <fcntl.h>
#include <grp.h>
#include <signal.h>
#include <stdio.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <new>
#include <utility>

#include "faults/Paths.h"
#include "support/linux/PrivateRoot.h"

namespace installer::faults {

// In memory that the attacker and the sweep share.
struct Attacker::Shared {
  std::atomic<std::uint64_t> turns{0};
  std::atomic<std::uint64_t> exchanges{0};
};

namespace {

using Identity = std::pair<dev_t, ino_t>;

// Zeros for nothing.
Identity identityAt(const std::string& path) {
  struct stat status {};
  return lstat(path.c_str(), &status) == 0 ? Identity(status.st_dev, status.st_ino) : Identity();
}

bool moveTo(const std::string& from, const std::string& to, unsigned flags) {
  return renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), flags) == 0;
}

// Where nothing lies at the place, what lies aside goes there, and back the next time.
bool exchange(const std::string& aside, const std::string& place) {
  return moveTo(aside, place, RENAME_EXCHANGE) ||
         (errno == ENOENT && (moveTo(aside, place, RENAME_NOREPLACE) ||
                              (errno == ENOENT && moveTo(place, aside, RENAME_NOREPLACE))));
}

// Nothing that the user may not do. Groups first: they are root's to give up.
void becomeUser(const std::string& root) {
  const bool done = chroot(root.c_str()) == 0 && chdir("/") == 0 && setgroups(0, nullptr) == 0 &&
                    setresgid(test::kAlice, test::kAlice, test::kAlice) == 0 &&
                    setresuid(test::kAlice, test::kAlice, test::kAlice) == 0;
  if (!done) test::giveUp("become an attacker");
}

// The two things at a name and beside it.
class Pair {
 public:
  explicit Pair(const Assault& assault) : _assault(assault) {}

  // How many of the turns moved something. The program replaces what it finds: a bait that is gone
  // is made again.
  std::uint64_t exchangeAt(const std::string& place) {
    constexpr int kTurns = 16;
    const std::string aside = folderOf(place) + "/aside";
    if (_bait == Identity() || (identityAt(aside) != _bait && identityAt(place) != _bait)) {
      (void)moveTo(aside, aside + std::to_string(++_count), RENAME_NOREPLACE);  // mostly nothing
      _assault.makeBait(aside);
      _bait = identityAt(aside);
    }
    std::uint64_t moved = 0;
    for (int turn = 0; turn < kTurns; ++turn) moved += exchange(aside, place) ? 1 : 0;
    return moved;
  }

 private:
  const Assault& _assault;
  Identity _bait;
  int _count = 0;
};

}  // namespace

Attacker::Attacker(const World& world, const Assault& assault) {
  void* const memory =
      mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  if (memory == MAP_FAILED) test::giveUp("share memory with an attacker");
  _shared = new (memory) Shared;
  _process = fork();
  if (_process == 0) attack(world.root(), assault);
  while (_shared->turns == 0 && waitpid(_process, nullptr, WNOHANG) == 0) usleep(100);
  if (_shared->turns == 0) test::giveUp("start an attacker");
}

void Attacker::attack(const std::string& root, const Assault& assault) {
  becomeUser(root);
  for (Pair pair(assault);; ++_shared->turns)
    for (const std::string& place : assault.places()) _shared->exchanges += pair.exchangeAt(place);
}

Attacker::~Attacker() {
  (void)stop();  // whoever wants to know has asked before
  munmap(_shared, sizeof(Shared));
}

std::uint64_t Attacker::exchanges() const {
  return _shared->exchanges;
}

bool Attacker::stop() {
  if (_process < 0) return false;
  kill(_process, SIGKILL);
  int status = 0;
  while (waitpid(_process, &status, 0) < 0 && errno == EINTR) continue;
  _process = -1;
  return WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL;
}

}  // namespace installer::faults
