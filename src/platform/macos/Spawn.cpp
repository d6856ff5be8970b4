#include "platform/posix/Spawn.h"

#include <crt_externs.h>
#include <fcntl.h>
#include <spawn.h>
#include <unistd.h>

#include <csignal>

#include "platform/posix/ArgumentVector.h"
#include "platform/posix/Memory.h"

namespace installer {
namespace {

class FileActions {
 public:
  FileActions() { checkMemory(posix_spawn_file_actions_init(&_actions)); }
  FileActions(const FileActions&) = delete;
  FileActions& operator=(const FileActions&) = delete;
  ~FileActions() { (void)posix_spawn_file_actions_destroy(&_actions); }  // cannot fail

  posix_spawn_file_actions_t* get() { return &_actions; }

 private:
  posix_spawn_file_actions_t _actions;
};

class Attributes {
 public:
  Attributes() { checkMemory(posix_spawnattr_init(&_attributes)); }
  Attributes(const Attributes&) = delete;
  Attributes& operator=(const Attributes&) = delete;
  ~Attributes() { (void)posix_spawnattr_destroy(&_attributes); }  // cannot fail

  posix_spawnattr_t* get() { return &_attributes; }

 private:
  posix_spawnattr_t _attributes;
};

// Setting it up can fail for want of memory only, and a child that is set up by halves must not be
// started.
class Spawn {
 public:
  explicit Spawn(const std::vector<int>& stillIgnored) {
    sigset_t signals;
    sigfillset(&signals);
    for (const int signal : stillIgnored) sigdelset(&signals, signal);
    (void)posix_spawnattr_setsigdefault(_attributes.get(), &signals);  // cannot fail once set up
    sigemptyset(&signals);
    (void)posix_spawnattr_setsigmask(_attributes.get(), &signals);  // nor can this
    // With the last flag every descriptor is closed that no file action names.
    constexpr int kFlags =
        POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_CLOEXEC_DEFAULT;
    (void)posix_spawnattr_setflags(_attributes.get(), static_cast<short>(kFlags));  // all are known
    connect(STDIN_FILENO, kInherited);
  }

  void connect(int descriptor, int to) {
    if (to == kNullDevice)
      checkMemory(
          posix_spawn_file_actions_addopen(_actions.get(), descriptor, "/dev/null", O_WRONLY, 0));
    else if (to != kInherited)
      checkMemory(posix_spawn_file_actions_adddup2(_actions.get(), to, descriptor));
    checkMemory(posix_spawn_file_actions_addinherit_np(_actions.get(), descriptor));
  }

  // A shared library cannot name `environ` itself.
  int run(const Command& command, pid_t& child) {
    return posix_spawn(&child, command.executable.c_str(), _actions.get(), _attributes.get(),
                       argumentVector(command).data(), *_NSGetEnviron());
  }

 private:
  FileActions _actions;
  Attributes _attributes;
};

}  // namespace

int spawn(const Command& command, const ChildOutputs& outputs, pid_t& child,
          const std::vector<int>& stillIgnored) {
  Spawn start(stillIgnored);
  start.connect(STDOUT_FILENO, outputs.output);
  start.connect(STDERR_FILENO, outputs.error);
  return start.run(command, child);
}

}  // namespace installer
