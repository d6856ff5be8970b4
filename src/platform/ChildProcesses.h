#pragma once

#include <optional>
#include <string>
#include <vector>

namespace installer {

struct Command {
  std::string executable;  // a path, not looked up; relative to the working folder unless absolute
  std::vector<std::string> arguments;  // without the executable, passed on as they are, no shell

  friend bool operator==(const Command&, const Command&) = default;
};

// Children of this process. They inherit standard input, environment, working folder and creation
// mask, have default signal handling, and hold no descriptor beyond 0 to 2.
class ChildProcesses {
 public:
  ChildProcesses() = default;
  ChildProcesses(const ChildProcesses&) = delete;
  ChildProcesses& operator=(const ChildProcesses&) = delete;
  virtual ~ChildProcesses() = default;

  // Starts the command with standard output and standard error on the null device. The answer is a
  // handle for wait(), which must follow; nullopt when it cannot be started, `reason` then says
  // why.
  [[nodiscard]] virtual std::optional<int> start(const Command& command, std::string* reason) = 0;

  // Returns when the child has ended: nullopt when it ended by itself, whatever its exit status,
  // else the signal that ended it, with the system's words: "signal 9 (Killed)".
  [[nodiscard]] virtual std::optional<std::string> wait(int child) = 0;

  // Runs the command with a pipe as its standard output (standard error on the null device), reads
  // its first line of at most 1022 bytes, waits for its end and answers the line without the line
  // feed. nullopt when it cannot be started or writes nothing.
  [[nodiscard]] virtual std::optional<std::string> firstLine(const Command& command) = 0;

  // Hands the text to the system's shell, waits, and answers the wait status, -1 when no shell can
  // be started. The shell inherits standard output and error.
  [[nodiscard]] virtual int shell(const std::string& commandLine) = 0;
};

}  // namespace installer
