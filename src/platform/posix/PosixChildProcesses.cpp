#include "platform/posix/PosixChildProcesses.h"

#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <system_error>

#include "platform/posix/ChildEnd.h"
#include "platform/posix/ChildOfSignals.h"
#include "platform/posix/Descriptor.h"
#include "platform/posix/SignalText.h"
#include "platform/posix/Spawn.h"
#include "platform/posix/Uninterrupted.h"

namespace installer {
namespace {

constexpr std::size_t kLongestLine = 1022;  // bytes

// The wait status of the ended child; -1 when there is no such child. A signal that asks this
// process to end is passed on to the child, whose end is waited for all the same: what it works on
// must not be left to it alone. Only when it has ended, and before its number is free again, does
// the passing on end.
int waitFor(pid_t child) {
  {
    const ChildOfSignals told(child);
    (void)hasEnded(child, 0);  // without such a child there is nobody to tell
  }
  return reaped(child).value_or(-1);
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
  pid_t child = -1;
  const int error = spawn(command, {kNullDevice, kNullDevice}, child);
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

  pid_t child = -1;
  if (spawn(command, {writeEnd.get(), kNullDevice}, child) != 0) return std::nullopt;
  running.emplace(child);
  writeEnd = Descriptor();
  return readLine(readEnd.get());
}

// "--" keeps a text that begins with a hyphen from being taken for the shell's own options.
int PosixChildProcesses::shell(const std::string& commandLine) {
  pid_t child = -1;
  if (spawn({"/bin/sh", {"-c", "--", commandLine}}, {}, child) != 0) return -1;
  return waitFor(child);
}

}  // namespace installer
