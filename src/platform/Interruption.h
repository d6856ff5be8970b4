#pragma once

#include <optional>
#include <string>

namespace installer {

// Thrown where the work can be left: a signal has asked the process to end. What was under way is
// left as a kill would leave it, but without its temporary files. No std::exception, so that only
// those catch it who mean it.
struct Interrupted {
  std::string cause;  // "signal 15 (Terminated)"
};

// From now on SIGHUP, SIGINT and SIGTERM do not end this process: they are noted, and passed on to
// the child that runs. One that is ignored stays so.
void noteInterruptions();

// Throws Interrupted when such a signal has been noted. To be called between steps, in waits, and
// in walks for each entry.
void checkInterruption();

// The cause, as Interrupted has it, of the first such signal; nullopt while there was none.
[[nodiscard]] std::optional<std::string> notedInterruption();

// While one lives checkInterruption() lets everybody go on: for what is put in order at the end,
// whatever has been asked for. Scopes nest.
class [[nodiscard]] HeldInterruptions {
 public:
  HeldInterruptions();
  HeldInterruptions(const HeldInterruptions&) = delete;
  HeldInterruptions& operator=(const HeldInterruptions&) = delete;
  ~HeldInterruptions();
};

}  // namespace installer
