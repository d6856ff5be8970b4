#pragma once

#include <optional>
#include <string>

#include "platform/ChildProcesses.h"

namespace installer {

// Starts the command, output discarded, unless a signal has asked this process to end: then it
// throws Interrupted. The handle goes to ChildProcesses::wait(); nullopt, after an error line with
// path and reason, when it cannot be started.
[[nodiscard]] std::optional<int> startChild(const Command& command);

// Waits for the end of a started child when the object goes, whatever has happened meanwhile. How
// the child ends does not count.
class ChildEnd {
 public:
  explicit ChildEnd(int child) : _child(child) {}
  ChildEnd(const ChildEnd&) = delete;
  ChildEnd& operator=(const ChildEnd&) = delete;
  ~ChildEnd();

 private:
  const int _child;
};

// The same as startChild(), and waits for its end. Its exit status tells us nothing and is not
// asked for; the answer is the signal that ended it, as ChildProcesses::wait() tells it.
[[nodiscard]] std::optional<std::string> runChild(const Command& command);

}  // namespace installer
