#pragma once

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

}  // namespace installer
