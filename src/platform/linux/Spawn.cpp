#include "platform/posix/Spawn.h"

#include <fcntl.h>
#include <sched.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>

#include "platform/posix/ArgumentVector.h"
#include "platform/posix/Descriptor.h"
#include "platform/posix/Uninterrupted.h"

namespace installer {
namespace {

constexpr std::size_t kStack = std::size_t{64} << 10;  // bytes, of which the child needs few
constexpr std::uint64_t kAllSignals = ~std::uint64_t{0};
constexpr int kNotStarted = 127;

// Signals as the kernel writes them down: the lowest bit is signal 1.
using SignalBits = std::uint64_t;

// The bits behind the word in what the kernel tells of this process; all where it does not tell.
SignalBits bitsBehind(std::string_view word, std::string_view status) {
  const std::size_t begin = std::min(status.find(word), status.size());
  status.remove_prefix(std::min(begin + word.size(), status.size()));
  SignalBits bits = 0;
  const auto end = std::from_chars(status.data(), status.data() + status.size(), bits, 16);
  return end.ec == std::errc() ? bits : kAllSignals;
}

// The signals that are ignored or handled here. The C library would ask for each of the sixty.
SignalBits changedSignals() {
  std::array<char, 4096> bytes;
  const Descriptor file(open("/proc/self/status", O_RDONLY | O_CLOEXEC));
  const ssize_t count = uninterrupted([&] { return read(file.get(), bytes.data(), bytes.size()); });
  const std::string_view status(bytes.data(), count > 0 ? static_cast<std::size_t>(count) : 0);
  return bitsBehind("\nSigIgn:\t", status) | bitsBehind("\nSigCgt:\t", status);
}

SignalBits without(const std::vector<int>& signals, SignalBits bits) {
  for (const int signal : signals) bits &= ~(SignalBits{1} << static_cast<unsigned>(signal - 1));
  return bits;
}

// All that the child needs, made before: until it is another program it has this process's memory,
// whose owner stands still so long, and may neither allocate nor lock.
struct Start {
  const char* executable;
  char* const* arguments;
  ChildOutputs outputs;
  SignalBits changed;
  int error = 0;  // why the child did not become another program
};

void restoreSignals(SignalBits changed) {
  struct sigaction standard {};
  standard.sa_handler = SIG_DFL;
  for (int signal = 1; changed != 0; ++signal, changed >>= 1U)
    if ((changed & 1U) != 0) (void)sigaction(signal, &standard, nullptr);  // some can not be had
}

bool discard(int descriptor) {
  (void)close(descriptor);  // so that there is one to be had
  const int device = open("/dev/null", O_WRONLY);
  if (device == -1 || device == descriptor) return device != -1;
  const bool isConnected = dup2(device, descriptor) != -1;
  (void)close(device);  // it can be a standard one that was closed here
  return isConnected;
}

bool connect(int descriptor, int to) {
  if (to == kInherited) return true;
  if (to == kNullDevice) return discard(descriptor);
  return dup2(to, descriptor) != -1;
}

// On a stack that the address sanitizer does not know.
[[gnu::no_sanitize_address]] int becomeProgram(void* argument) {
  Start& start = *static_cast<Start*>(argument);
  restoreSignals(start.changed);
  if (connect(STDOUT_FILENO, start.outputs.output) && connect(STDERR_FILENO, start.outputs.error)) {
    closefrom(STDERR_FILENO + 1);
    sigset_t none;
    sigemptyset(&none);
    (void)sigprocmask(SIG_SETMASK, &none, nullptr);  // cannot fail
    (void)execve(start.executable, start.arguments, environ);
  }
  start.error = errno;
  _exit(kNotStarted);
}

// While it lives no signal is delivered: a handler must not run in the child, with our memory.
class BlockedSignals {
 public:
  BlockedSignals() {
    sigset_t all;
    sigfillset(&all);
    (void)sigprocmask(SIG_SETMASK, &all, &_previous);  // cannot fail
  }
  BlockedSignals(const BlockedSignals&) = delete;
  BlockedSignals& operator=(const BlockedSignals&) = delete;
  ~BlockedSignals() { (void)sigprocmask(SIG_SETMASK, &_previous, nullptr); }  // nor can this

 private:
  sigset_t _previous;
};

}  // namespace

int spawn(const Command& command, const ChildOutputs& outputs, pid_t& child,
          const std::vector<int>& stillIgnored) {
  const std::vector<char*> arguments = argumentVector(command);
  const auto stack = std::make_unique_for_overwrite<std::byte[]>(kStack);
  Start start{command.executable.c_str(), arguments.data(), outputs,
              without(stillIgnored, changedSignals())};
  const BlockedSignals blocked;
  child = clone(becomeProgram, stack.get() + kStack, CLONE_VM | CLONE_VFORK | SIGCHLD, &start);
  if (child == -1) return errno;
  if (start.error == 0) return 0;
  (void)uninterrupted([&] { return waitpid(child, nullptr, 0); });  // it is gone, whatever it says
  return start.error;
}

}  // namespace installer
