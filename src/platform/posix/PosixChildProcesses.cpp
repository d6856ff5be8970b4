#include "platform/posix/PosixChildProcesses.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <system_error>

#include "platform/posix/ChildOfSignals.h"
#include "platform/posix/Descriptor.h"
#include "platform/posix/Memory.h"
#include "platform/posix/SignalText.h"
#include "platform/posix/SpawnSupport.h"
#include "platform/posix/Uninterrupted.h"

namespace installer {
namespace {

constexpr std::size_t kLongestLine = 1022;  // bytes
constexpr const char* kNullDevice = "/dev/null";

// One start of a child with default signal handling and nothing blocked. Setting it up can fail for
// want of memory only, and a child that is set up by halves must not be started.
class Spawn {
 public:
  Spawn() {
    checkMemory(posix_spawn_file_actions_init(&_actions));
    checkMemory(posix_spawnattr_init(&_attributes));
    sigset_t signals;
    sigfillset(&signals);
    (void)posix_spawnattr_setsigdefault(&_attributes, &signals);  // cannot fail once set up
    sigemptyset(&signals);
    (void)posix_spawnattr_setsigmask(&_attributes, &signals);  // nor can this
  }
  Spawn(const Spawn&) = delete;
  Spawn& operator=(const Spawn&) = delete;
  ~Spawn() {
    (void)posix_spawnattr_destroy(&_attributes);        // cannot fail once set up
    (void)posix_spawn_file_actions_destroy(&_actions);  // nor can this
  }

  void discard(int descriptor) {
    checkMemory(posix_spawn_file_actions_addopen(&_actions, descriptor, kNullDevice, O_WRONLY, 0));
  }
  void connect(int descriptor, int to) {
    checkMemory(posix_spawn_file_actions_adddup2(&_actions, to, descriptor));
  }

  // 0 and the child's number, or the system's error number.
  int run(const Command& command, pid_t* child) {
    const int flags =
        POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK | keepStandardDescriptorsOnly(&_actions);
    (void)posix_spawnattr_setflags(&_attributes, static_cast<short>(flags));  // all flags are known
    return posix_spawn(child, command.executable.c_str(), &_actions, &_attributes,
                       argumentVector(command).data(), ownEnvironment());
  }

 private:
  // Ends with a null pointer; the texts stay the command's, which posix_spawn does not change.
  static std::vector<char*> argumentVector(const Command& command) {
    std::vector<char*> vector{const_cast<char*>(command.executable.c_str())};
    for (const std::string& argument : command.arguments)
      vector.push_back(const_cast<char*>(argument.c_str()));
    vector.push_back(nullptr);
    return vector;
  }

  posix_spawn_file_actions_t _actions;
  posix_spawnattr_t _attributes;
};

// The wait status of the ended child; -1 when there is no such child. A signal that asks this
// process to end is passed on to the child, whose end is waited for all the same: what it works on
// must not be left to it alone. Only when it has ended, and before its number is free again, does
// the passing on end.
int waitFor(pid_t child) {
  {
    const ChildOfSignals told(child);
    siginfo_t ended{};
    const auto waitUnreaped = [&] {
      return waitid(P_PID, static_cast<id_t>(child), &ended, WEXITED | WNOWAIT);
    };
    (void)uninterrupted(waitUnreaped);  // without such a child there is nobody to tell
  }
  int status = -1;
  const auto wait = [&] { return waitpid(child, &status, 0); };
  (void)uninterrupted(wait);  // without such a child the status stays -1
  return status;
}

// A child that runs; it is told of signals, and its end is waited for, whatever happens meanwhile.
class RunningChild {
 public:
  explicit RunningChild(pid_t child) : _child(child) {}
  RunningChild(const RunningChild&) = delete;
  RunningChild& operator=(const RunningChild&) = delete;
  ~RunningChild() { (void)waitFor(_child); }  // how it ended does not count

 private:
  const pid_t _child;
  const ChildOfSignals _told{_child};
};

// nullopt when nothing at all comes. What follows the line stays unread or is dropped.
std::optional<std::string> readLine(int descriptor) {
  std::array<char, kLongestLine> bytes;
  std::string line;
  for (;;) {
    const ssize_t count =
        uninterrupted([&] { return read(descriptor, bytes.data(), kLongestLine - line.size()); });
    if (count <= 0) break;  // the end, or as many bytes as may be
    line.append(bytes.data(), static_cast<std::size_t>(count));
    const std::size_t end = line.find('\n');
    if (end != std::string::npos) return line.substr(0, end);
  }
  return line.empty() ? std::nullopt : std::optional(line);
}

}  // namespace

std::optional<int> PosixChildProcesses::start(const Command& command, std::string* reason) {
  Spawn spawn;
  spawn.discard(STDOUT_FILENO);
  spawn.discard(STDERR_FILENO);
  pid_t child = -1;
  const int error = spawn.run(command, &child);
  if (error == 0) return child;
  if (reason != nullptr) *reason = std::generic_category().message(error);
  return std::nullopt;
}

std::optional<std::string> PosixChildProcesses::wait(int child) {
  const int status = waitFor(child);
  if (!WIFSIGNALED(status)) return std::nullopt;
  return signalText(WTERMSIG(status));
}

std::optional<std::string> PosixChildProcesses::firstLine(const Command& command) {
  std::array<int, 2> ends;
  if (pipe(ends.data()) != 0) return std::nullopt;
  std::optional<RunningChild> running;  // outlives the pipe: who goes on writing finds no reader
  const Descriptor readEnd(ends[0]);
  Descriptor writeEnd(ends[1]);

  Spawn spawn;
  spawn.connect(STDOUT_FILENO, writeEnd.get());
  spawn.discard(STDERR_FILENO);
  pid_t child = -1;
  if (spawn.run(command, &child) != 0) return std::nullopt;
  running.emplace(child);
  writeEnd = Descriptor();
  return readLine(readEnd.get());
}

// "--" keeps a text that begins with a hyphen from being taken for the shell's own options.
int PosixChildProcesses::shell(const std::string& commandLine) {
  Spawn spawn;
  pid_t child = -1;
  if (spawn.run({"/bin/sh", {"-c", "--", commandLine}}, &child) != 0) return -1;
  return waitFor(child);
}

}  // namespace installer
