#include "platform/WatchedChild.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/wait.h>

#include <cerrno>
#include <csignal>
#include <system_error>
#include <vector>

#include "platform/files/Opening.h"
#include "platform/posix/ChildEnd.h"
#include "platform/posix/ChildOfSignals.h"
#include "platform/posix/Descriptor.h"
#include "platform/posix/SignalText.h"
#include "platform/posix/Spawn.h"
#include "platform/posix/Uninterrupted.h"

namespace installer {

namespace {

constexpr mode_t kPrivate = 0600;

class PosixWatchedChild : public WatchedChild {
 public:
  explicit PosixWatchedChild(pid_t child) : _child(child) { _told.emplace(child); }
  ~PosixWatchedChild() override {
    if (!_end) (void)hasEnded(_child, 0);  // how it ended does not count any more
    if (!_end) reap();
  }

  long process() const override { return _child; }
  std::optional<WatchedEnd> end() override {
    if (!_end && hasEnded(_child, WNOHANG)) reap();
    return _end;
  }
  void ask() override { send(SIGTERM); }
  void kill() override { send(SIGKILL); }

 private:
  void reap() {
    _told.reset();
    const std::optional<int> status = reaped(_child);
    _end.emplace();
    if (!status) return;
    if (WIFSIGNALED(*status))
      _end->signal = signalText(WTERMSIG(*status));
    else
      _end->status = WEXITSTATUS(*status);
  }
  void send(int signal) const {
    if (!_end) (void)::kill(_child, signal);  // its number is its own
  }

  const pid_t _child;
  std::optional<ChildOfSignals> _told;
  std::optional<WatchedEnd> _end;
};

bool lock(const Descriptor& file) {
  return uninterrupted([&] { return ::flock(file.get(), LOCK_EX | LOCK_NB); }) == 0;
}

// The lock belongs to the open file, and so to everybody who inherits it.
Descriptor makeOutput(const std::string& path) {
  constexpr int kNew = O_CREAT | O_EXCL | O_WRONLY | O_APPEND | O_NOFOLLOW;
  Descriptor file = openEntry(AT_FDCWD, path, kNew, kPrivate);
  if (!file.valid() || lock(file)) return file;
  return {};
}

// Whoever started this process so wants the work to outlive his terminal.
std::vector<int> ignoredHere() {
  std::vector<int> ignored;
  for (const int signal : {SIGHUP, SIGINT, SIGTERM}) {
    struct sigaction action {};
    if (sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN)
      ignored.push_back(signal);
  }
  return ignored;
}

StartLack lackOf(bool isOutput, int error) {
  return {isOutput, std::generic_category().message(error)};
}

}  // namespace

std::unique_ptr<WatchedChild> startWatched(const Command& command, const std::string& output,
                                           StartLack& lack) {
  (void)std::signal(SIGCHLD, SIG_DFL);  // children of who ignores it leave no status
  const Descriptor file = makeOutput(output);
  if (!file.valid()) {
    lack = lackOf(true, errno);
    return nullptr;
  }
  pid_t child = -1;
  const int error = spawn(command, {file.get(), file.get()}, child, ignoredHere());
  if (error == 0) return std::make_unique<PosixWatchedChild>(child);
  lack = lackOf(false, error);
  return nullptr;
}

bool isOutputHeld(const std::string& output) {
  const RegularFile file = openRegularFile(AT_FDCWD, output);
  return file.valid() && !lock(file.file) && errno == EWOULDBLOCK;
}

}  // namespace installer
